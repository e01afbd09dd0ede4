#include "tarvex/Inbox.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace tarvex {

Message::Message(const Address& address, const void* body, std::uint32_t bodyLength)
    : number_(address.number),
      taskAt_(static_cast<std::uint16_t>(address.node.size() + 1)),
      msgKeyAt_(static_cast<std::uint16_t>(taskAt_ + address.task.size() + 1)),
      identifierAt_(static_cast<std::uint16_t>(msgKeyAt_ + address.msgKey.size() + 1)),
      bodyAt_(static_cast<std::uint16_t>(identifierAt_ + address.identifier.size() + 1)),
      bodyLength_(bodyLength) {
    block_.reset(new char[std::size_t{bodyAt_} + bodyLength]);
    const auto put = [this](std::size_t at, std::string_view text) {
        text.copy(block_.get() + at, text.size());
        block_[at + text.size()] = '\0';
    };
    put(0, address.node);
    put(taskAt_, address.task);
    put(msgKeyAt_, address.msgKey);
    put(identifierAt_, address.identifier);
    if (bodyLength > 0) std::memcpy(block_.get() + bodyAt_, body, bodyLength);
}

Address Message::Keys() const {
    const auto text = [this](std::size_t at, std::size_t next) {
        return std::string_view(block_.get() + at, next - at - 1);
    };
    return {text(0, taskAt_), text(taskAt_, msgKeyAt_), number_, text(msgKeyAt_, identifierAt_),
            text(identifierAt_, bodyAt_)};
}

bool Inbox::Push(Message message) {
    {
        const std::lock_guard lock(mutex_);
        if (bytes_ + message.Cost() > kMostBytes) return false;
        const std::size_t bytes = message.Cost();
        messages_.push_back(std::move(message));
        bytes_ += bytes;
        if (waiting_ == 0) return true;
    }
    arrived_.notify_one();
    return true;
}

bool Inbox::HasRoom() {
    const std::lock_guard lock(mutex_);
    return bytes_ <= kMostBytes / 2;
}

void Inbox::NoteLoss() {
    {
        const std::lock_guard lock(mutex_);
        const std::uint64_t place = taken_ + messages_.size();
        if (!losses_.empty() && losses_.back() == place) return;
        losses_.push_back(place);
    }
    arrived_.notify_one();
}

Inbox::Found Inbox::Wait(std::uint32_t milliseconds) {
    constexpr std::uint32_t kForEver = 0xFFFFFFFF;
    std::unique_lock lock(mutex_);
    const auto arrived = [this] { return !messages_.empty() || IsLossNext(); };
    if (milliseconds != 0 && !arrived()) {
        ++waiting_;
        if (milliseconds == kForEver)
            arrived_.wait(lock, arrived);
        else
            arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds), arrived);
        --waiting_;
    }
    if (IsLossNext()) {
        losses_.pop_front();
        return Found::Loss;
    }
    return messages_.empty() ? Found::Nothing : Found::Message;
}

Inbox::Found Inbox::Read(const std::function<bool(const Message&)>& take) {
    const std::lock_guard lock(mutex_);
    if (IsLossNext()) {
        losses_.pop_front();
        return Found::Loss;
    }
    if (messages_.empty()) return Found::Nothing;
    if (take(messages_.front())) {
        bytes_ -= messages_.front().Cost();
        messages_.pop_front();
        ++taken_;
    }
    return Found::Message;
}

void Inbox::Keep(const std::function<bool(const Address&)>& wanted) {
    const std::lock_guard lock(mutex_);
    std::deque<Message> kept;
    std::uint64_t place = taken_;
    std::uint64_t dropped = 0;
    auto loss = losses_.begin();
    bytes_ = 0;
    for (Message& message : messages_) {
        for (; loss != losses_.end() && *loss == place; ++loss) *loss -= dropped;
        ++place;
        if (!wanted(message.Keys())) {
            ++dropped;
            continue;
        }
        bytes_ += message.Cost();
        kept.push_back(std::move(message));
    }
    for (; loss != losses_.end(); ++loss) *loss -= dropped;
    messages_ = std::move(kept);
}

}  // namespace tarvex
