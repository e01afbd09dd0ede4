// A message's stream: each class's share is its schema byte and its fields, derived class first. The
// base share ends it:
//
//     byte    schema, 1
//     double  MsgTime
//     long    number of nested messages
//     then for each: string MsgKey, and the nested message's whole stream

#include <surveymsg/core/Msg.h>
#include <surveymsg/core/detail/Clock.h>
#include <surveymsg/core/detail/Nesting.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/platform/detail/BodyReserve.h>
#include <surveymsg/platform/detail/Memory.h>

using surveymsg::detail::kMostLevels;
using surveymsg::detail::Nesting;
using surveymsg::detail::OwnedMsg;
using surveymsg::detail::RaiseBadSchema;
using surveymsg::detail::RaisingMemoryException;
using surveymsg::detail::Reader;
using surveymsg::detail::SerializeShare;
using surveymsg::detail::Writer;

namespace surveymsg::detail {

void RaiseBadSchema(const char* className) { throw CArchiveException(CArchiveException::badSchema, className); }

}  // namespace surveymsg::detail

namespace {

constexpr int kEncodedCapacity = 0x1E000;
constexpr int kArchiveBuffer = 4096;
constexpr surveymsg::detail::Schema kSchema{"CMsg", 1};
constexpr std::size_t kLeastNestedBytes = 33;  // a position list without a name, its key and its base share

unsigned char* BytesOf(const CString& body) {
    // A file has one type of memory for both directions; an archive that loads only reads it.
    return reinterpret_cast<unsigned char*>(const_cast<char*>(static_cast<const char*>(body)));
}

}  // namespace

int CMsg::Encode() {
    RaisingMemoryException([this] {
        surveymsg::detail::BodyReserve reserve(Body, kEncodedCapacity);
        CMemFile file(reinterpret_cast<unsigned char*>(reserve.Storage()), kEncodedCapacity);
        CArchive archive(&file, CArchive::store, kArchiveBuffer);
        Serialize(archive);
        archive.Close();
        file.Flush();
        if (file.GetPosition() > 0)
            reserve.Keep(static_cast<int>(file.GetPosition()));
        else
            reserve.Restore();  // a class that writes nothing keeps the record that it was received with
        file.Close();
    });
    return 1;
}

int CMsg::Decode(CMsg* other) {
    if (BodyIsKeyText) return 0;
    const CString& source = other ? other->Body : Body;
    if (source.IsEmpty()) return 0;
    RaisingMemoryException([&] {
        // Loading releases the nested messages first; bytes that belong to one of them must outlive it.
        CString kept;
        if (other && !MsgDependencies.IsEmpty() && Owns(*other)) kept = source;
        const CString& bytes = kept.IsEmpty() ? source : kept;
        const surveymsg::detail::LoadScope loading;
        CMemFile file(BytesOf(bytes), static_cast<unsigned>(bytes.GetLength()));
        CArchive archive(&file, CArchive::load, kArchiveBuffer);
        Serialize(archive);
    });
    return 1;
}

void CMsg::Serialize(CArchive& ar) {
    std::int32_t count = MsgDependencies.GetCount();
    SerializeShare(ar, kSchema, [&](auto& wire, int) {
        wire.Doubles(MsgTime);
        if constexpr (surveymsg::detail::Loads<decltype(wire)>) RemoveAllMsgDependencies();
        wire.Longs(count);
        if constexpr (surveymsg::detail::Loads<decltype(wire)>) {
            // Only once for the same bytes: every level may claim all that is left.
            if (count > 0 && !Nesting::Of(ar)) MsgDependencies.Reserve(wire.AtMost(count, kLeastNestedBytes));
        }
    });
    if (ar.IsStoring())
        StoreNested(ar);
    else
        LoadNested(ar, count);
}

void CMsg::StoreNested(CArchive& ar) {
    if (MsgDependencies.IsEmpty()) return;
    if (Nesting* outer = Nesting::Of(ar)) return outer->Open(this, 0);
    Nesting nesting(ar, this, 0);
    for (;;) {
        Nesting::Level& level = nesting.Innermost();
        if (level.at == level.message->MsgDependencies.GetCount()) {
            if (nesting.Depth() == 1) return;
            nesting.Close();
            continue;
        }
        auto* nested = static_cast<CMsg*>(level.message->MsgDependencies.GetAt(level.at++));
        Writer(ar).String(nested->MsgKey);
        nested->Serialize(ar);
    }
}

void CMsg::LoadNested(CArchive& ar, std::int32_t count) {
    if (count <= 0) {
        SetInstanceIdentifier();
        return;
    }
    if (Nesting* outer = Nesting::Of(ar)) return outer->Open(this, count);
    Nesting nesting(ar, this, count);
    for (;;) {
        Nesting::Level& level = nesting.Innermost();
        if (level.at == 0) {
            level.message->SetInstanceIdentifier();
            if (nesting.Depth() == 1) return;
            OwnedMsg complete = nesting.Close();
            nesting.Innermost().message->AdoptLoaded(complete.get());
            static_cast<void>(complete.release());
            continue;
        }
        --level.at;
        CMsg* parent = level.message;
        const std::size_t depth = nesting.Depth();
        if (depth == kMostLevels) RaiseBadSchema(kSchema.className);
        CString key;
        Reader(ar).String(key);
        CMsg* nested = nullptr;
        if (!AllocMsg(key, nullptr, &nested)) RaiseBadSchema(kSchema.className);
        OwnedMsg owned(nested);
        nested->Serialize(ar);
        if (nesting.Depth() > depth) {
            nesting.Innermost().owned = std::move(owned);  // it has nested messages of its own still to come
        } else {
            parent->AdoptLoaded(nested);
            static_cast<void>(owned.release());
        }
    }
}
