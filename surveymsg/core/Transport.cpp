#include <algorithm>
#include <memory>

#include <surveymsg/core/Msg.h>
#include <surveymsg/core/detail/Module.h>
#include <surveymsg/outside/Tarvex.h>
#include <surveymsg/platform/detail/BodyReserve.h>
#include <surveymsg/platform/detail/Memory.h>

#if defined(_WIN32)
#include <windows.h>
#endif

using surveymsg::detail::module;
using surveymsg::detail::PublishedKey;
using surveymsg::detail::RaisingMemoryException;

namespace {

constexpr std::uint32_t kLargestKeySize = 2048;

// What a read offers the bus. The sizes double when a message needs more and stay so for the process,
// which pays for a large message once.
std::uint32_t ReceiveBodySize = 0xA000;
std::uint32_t ReceiveKeySize = 64;

CString PairOf(const CString& msgKey, const CString& identifier) {
    CString pair;
    pair.GetBuffer(msgKey.GetLength() + 1 + identifier.GetLength());
    pair += msgKey;
    pair += "/";
    pair += identifier;
    return pair;
}

std::uint32_t LengthOf(const CString& text) { return static_cast<std::uint32_t>(text.GetLength()); }

}  // namespace

int CMsg::Published(const CString& identifier) {
    CObject* found = nullptr;
    return module.PublishedMap.Lookup(PairOf(MsgKey, identifier), found);
}

int CMsg::Publish(const msgfmt* format) {
    const CString pair = PairOf(MsgKey, InstanceIdentifier);
    CObject* found = nullptr;
    if (module.PublishedMap.Lookup(pair, found)) return 1;
    // The record is made first: what the bus knows must not go unrecorded for want of memory.
    auto published = RaisingMemoryException([this] { return std::make_unique<PublishedKey>(MsgKey); });
    CObject*& place = module.PublishedMap[pair];
    place = published.release();
    if (TvxPublish(MsgKey, InstanceIdentifier, format, format ? format->Length : std::uint16_t{0})) return 1;
    delete place;
    module.PublishedMap.RemoveKey(pair);
    return 0;
}

void CMsg::Unpublish() {
    if (InstanceIdentifier.IsEmpty()) SetInstanceIdentifier();
    Unpublish(InstanceIdentifier);
}

void CMsg::Unpublish(const CString& identifier) {
    const CString pair = PairOf(MsgKey, identifier);
    CObject* published = nullptr;
    if (!module.PublishedMap.Lookup(pair, published)) return;
    TvxUnpublish(MsgKey, identifier);
    module.PublishedMap.RemoveKey(pair);
    delete published;
}

int CMsg::Send() {
    MsgTime = TimeGetSeconds();
    SetInstanceIdentifier();
    Encode();
    Publish();
    if (!OldInstanceIdentifier.IsEmpty() && Published(OldInstanceIdentifier)) {
        // Whoever listens under the old name gets this message as the last one there.
        TvxSend(MsgKey, OldInstanceIdentifier, Body, LengthOf(Body));
        Unpublish(OldInstanceIdentifier);
    }
    const char* identifier = InstanceIdentifier.IsEmpty() ? nullptr : static_cast<const char*>(InstanceIdentifier);
    return TvxSend(MsgKey, identifier, Body, LengthOf(Body));
}

int CMsg::Receive(std::uint32_t wait) { return TvxWait(wait) ? OnReceive() : 0; }

int CMsg::OnReceive() {
    CString* const keys[] = {&SourceNode, &SourceTask, &MsgKey, &InstanceIdentifier};
    while (ReceiveKeySize <= kLargestKeySize) {
        // The storage of a text always has one byte more than was asked for.
        const auto reserve = [](CString& text, std::uint32_t size) { return text.GetBuffer(static_cast<int>(size)); };
        char* node = reserve(SourceNode, ReceiveKeySize);
        char* task = reserve(SourceTask, ReceiveKeySize);
        char* msgKey = reserve(MsgKey, ReceiveKeySize);
        char* identifier = reserve(InstanceIdentifier, ReceiveKeySize);
        surveymsg::detail::BodyReserve body(Body, static_cast<int>(ReceiveBodySize));
        std::uint32_t number = 0;
        std::uint32_t further = 0;
        std::uint32_t bodyLength = 0;
        const int result = TvxRead(node, ReceiveKeySize, task, ReceiveKeySize, &number, msgKey, ReceiveKeySize,
                                   identifier, ReceiveKeySize, &further, body.Storage(), ReceiveBodySize, &bodyLength);
        const std::uint32_t reason = result ? 0 : GetLastError();
        for (CString* key : keys) key->ReleaseBuffer(result ? -1 : 0);
        body.Keep(result ? static_cast<int>(std::min(bodyLength, ReceiveBodySize)) : 0);
        if (result) {
            SourceNumber = number;
            return result;
        }
        if ((reason & TvxErrorTooSmall) != TvxErrorTooSmall) return 0;
        ReceiveKeySize *= 2;
        ReceiveBodySize *= 2;
    }
    return 0;
}

int CMsg::Subscribe(std::uint16_t value) {
    return TvxSubscribe("*", "*", 0, MsgKey, InstanceIdentifier, 0, value) ? 1 : 0;
}

int CMsg::Unsubscribe() { return TvxUnsubscribe("*", "*", 0, MsgKey, InstanceIdentifier); }
