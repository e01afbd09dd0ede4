#include "demo/Receiver.h"

#include <surveymsg/outside/Tarvex.h>

#include <memory>
#include <utility>

#include "demo/LibraryFailure.h"
#include "demo/Producer.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace demo {
namespace {

constexpr const char* kFixKey = "PRX~Position";
constexpr const char* kPositionKey = "PRX~ComputedPosition";
constexpr const char* kRecordKey = "PRX~PositionOffset";  // no class of the library has this key

struct Free {
    void operator()(CMsg* message) const { FreeMsg(message); }
};

std::string TextOf(const CString& text) { return std::string(text.View()); }

void SubscribeTo(const char* msgKey) {
    CMsg wanted;
    wanted.MsgKey = msgKey;
    wanted.InstanceIdentifier = "*";
    if (!wanted.Subscribe(0)) FailOnBus(std::string("the bus did not take the subscription to ") + msgKey);
}

}  // namespace

Receiver::Receiver(OnMessage onPosition, OnMessage onRecord)
    : onPosition_(std::move(onPosition)), onRecord_(std::move(onRecord)) {
    for (const char* msgKey : {kFixKey, kPositionKey, kRecordKey, kEndKey}) SubscribeTo(msgKey);
}

bool Receiver::ReceiveOne(std::uint32_t wait) {
    if (!received_.Receive(wait)) {
        if (GetLastError() != TvxErrorNothing) FailOnBus("the bus gave no message");
        return false;
    }
    if (received_.MsgKey.View() == kEndKey) {
        isAtEnd_ = true;
        return true;
    }
    CString formatKey;  // used where the key has no class
    received_.CombineKeys(&formatKey);
    CMsg* made = nullptr;
    if (!AllocMsg(received_.MsgKey, formatKey, &made))
        throw LibraryFailure("no message can be made for the key " + TextOf(received_.MsgKey));
    const std::unique_ptr<CMsg, Free> message(made);
    if (received_.MsgKey.View() == kRecordKey) {
        *message << received_;  // the record stays as it is, to be read in place
        ++recordCount_;
        onRecord_(*message);
        return true;
    }
    if (!message->Decode(&received_))
        throw LibraryFailure("a message with the key " + TextOf(received_.MsgKey) + " cannot be decoded");

    const auto bytes = static_cast<std::uint64_t>(received_.Body.GetLength());
    if (received_.MsgKey.View() == kFixKey) {
        ++fixCount_;
        fixBytes_ += bytes;
        return true;
    }
    positions_.push_back({TextOf(received_.SourceNode) + "/" + TextOf(received_.SourceTask) + "/" +
                              std::to_string(received_.SourceNumber),
                          TextOf(received_.InstanceIdentifier), bytes,
                          static_cast<std::uint64_t>(message->MsgDependencies.GetCount())});
    onPosition_(*message);
    return true;
}

}  // namespace demo
