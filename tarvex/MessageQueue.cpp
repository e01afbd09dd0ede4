#include "tarvex/MessageQueue.h"

#include <cstring>
#include <new>
#include <utility>

namespace tarvex {
namespace {

Message& At(const Spool::Block& block, std::size_t at) {
    return *std::launder(reinterpret_cast<Message*>(block.bytes.get() + at));
}

}  // namespace

Message::Message(const Address& address, std::uint32_t bodyLength)
    : number_(address.number),
      bodyLength_(bodyLength),
      taskAt_(static_cast<std::uint16_t>(address.node.size() + 1)),
      msgKeyAt_(static_cast<std::uint16_t>(taskAt_ + address.task.size() + 1)),
      identifierAt_(static_cast<std::uint16_t>(msgKeyAt_ + address.msgKey.size() + 1)),
      bodyAt_(static_cast<std::uint16_t>(identifierAt_ + address.identifier.size() + 1)) {}

std::size_t Message::SizeOf(const Address& address, std::uint32_t bodyLength) {
    return Message(address, bodyLength).Size();
}

Message& Message::Write(char* place, const Address& address, const void* body, std::uint32_t bodyLength) {
    auto* const message = ::new (place) Message(address, bodyLength);
    char* at = place + sizeof(Message);
    for (const std::string_view text : {address.node, address.task, address.msgKey, address.identifier}) {
        at += text.copy(at, text.size());
        *at++ = '\0';
    }
    if (bodyLength > 0) std::memcpy(at, body, bodyLength);
    return *message;
}

Address Message::Keys() const {
    const auto text = [this](std::size_t at, std::size_t next) { return std::string_view(Text() + at, next - at - 1); };
    return {text(0, taskAt_), text(taskAt_, msgKeyAt_), number_, text(msgKeyAt_, identifierAt_),
            text(identifierAt_, bodyAt_)};
}

void MessageQueue::Push(const Address& address, const void* body, std::uint32_t bodyLength) {
    char* const place = spool_.Add(Message::SizeOf(address, bodyLength));
    Message::Write(place, address, body, bodyLength).isAfterLoss_ = std::exchange(endsInLoss_, false);
    ++count_;
}

Message& MessageQueue::First() const { return At(spool_.Blocks().front(), firstAt_); }

bool MessageQueue::TakeLoss() { return std::exchange(HasMessage() ? First().isAfterLoss_ : endsInLoss_, false); }

void MessageQueue::RemoveOldest() {
    PassFirst();
    --count_;
    PassDropped();
}

void MessageQueue::PassFirst() {
    firstAt_ += First().Size();
    if (firstAt_ < spool_.Blocks().front().used) return;
    firstAt_ = 0;
    if (spool_.Blocks().size() > 1) spool_.RemoveFirstBlock();
}

void MessageQueue::PassDropped() {
    while (HasMessage() && First().isDropped_) PassFirst();
    if (HasMessage()) return;
    spool_.Clear();
    firstAt_ = 0;
}

// What is dropped keeps its place until its turn comes.
void MessageQueue::Keep(const std::function<bool(const Address&)>& wanted) {
    bool isAfterLoss = false;
    std::size_t at = firstAt_;
    count_ = 0;
    for (const Spool::Block& block : spool_.Blocks()) {
        while (at < block.used) {
            Message& message = At(block, at);
            at += message.Size();
            if (message.isDropped_) continue;
            isAfterLoss = isAfterLoss || message.isAfterLoss_;
            message.isDropped_ = !wanted(message.Keys());
            if (message.isDropped_) continue;
            message.isAfterLoss_ = std::exchange(isAfterLoss, false);
            ++count_;
        }
        at = 0;
    }
    endsInLoss_ = endsInLoss_ || isAfterLoss;
    PassDropped();
}

}  // namespace tarvex
