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
    const int before = Body.GetLength();
    Body.GetBuffer(kEncodedCapacity);
    try {
        RaisingMemoryException([&] {
            CMemFile file(BytesOf(Body), kEncodedCapacity);
            CArchive archive(&file, CArchive::store, kArchiveBuffer);
            Serialize(archive);
            archive.Close();
            file.Flush();
            const unsigned written = file.GetPosition();
            // A class that writes nothing keeps the record that it was received with.
            Body.ReleaseBuffer(written > 0 ? static_cast<int>(written) : before);
            file.Close();
        });
    } catch (...) {
        Body.ReleaseBuffer(0);
        throw;
    }
    return 1;
}

int CMsg::Decode(CMsg* other) {
    if (BodyIsKeyText) return 0;
    const CString& source = other ? other->Body : Body;
    if (source.IsEmpty()) return 0;
    RaisingMemoryException([&] {
        // Loading releases the nested messages first; bytes that belong to one of them must outlive it.
        const CString kept = other && Owns(*other) ? source : CString();
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
    if (Nesting* outer = Nesting::Of(ar)) {
        outer->levels.push_back({this, nullptr, 0});
        return;
    }
    Nesting nesting(ar);
    nesting.levels.push_back({this, nullptr, 0});
    while (!nesting.levels.empty()) {
        Nesting::Level& level = nesting.levels.back();
        if (level.at == level.message->MsgDependencies.GetCount()) {
            nesting.levels.pop_back();
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
    if (Nesting* outer = Nesting::Of(ar)) {
        outer->levels.push_back({this, nullptr, count});
        return;
    }
    Nesting nesting(ar);
    nesting.levels.push_back({this, nullptr, count});
    for (;;) {
        Nesting::Level& level = nesting.levels.back();
        if (level.at == 0) {
            CMsg* complete = level.message;
            complete->SetInstanceIdentifier();
            OwnedMsg owned = std::move(level.owned);
            nesting.levels.pop_back();
            if (nesting.levels.empty()) return;
            nesting.levels.back().message->AdoptLoaded(owned.get());
            static_cast<void>(owned.release());
            continue;
        }
        --level.at;
        CMsg* parent = level.message;
        if (nesting.levels.size() == kMostLevels) RaiseBadSchema(kSchema.className);
        CString key;
        Reader(ar).String(key);
        CMsg* nested = nullptr;
        if (!AllocMsg(key, nullptr, &nested)) RaiseBadSchema(kSchema.className);
        OwnedMsg owned(nested);
        const std::size_t depth = nesting.levels.size();
        nested->Serialize(ar);
        if (nesting.levels.size() > depth) {
            nesting.levels.back().owned = std::move(owned);  // it has nested messages of its own still to come
        } else {
            parent->AdoptLoaded(nested);
            static_cast<void>(owned.release());
        }
    }
}
