#include "tarvex/ReaderSide.h"

#include <algorithm>
#include <cstring>

#include "tarvex/LastError.h"

namespace tarvex {
namespace {

bool Fits(const ReadBuffers::Text& text, std::string_view key) { return key.size() < text.size; }

void Put(const ReadBuffers::Text& text, std::string_view key) {
    key.copy(text.storage, key.size());
    text.storage[key.size()] = '\0';
}

// All of the message or nothing of it.
bool Deliver(const Message& message, ReadBuffers& buffers) {
    const Address keys = message.Keys();
    if (!Fits(buffers.node, keys.node) || !Fits(buffers.task, keys.task) || !Fits(buffers.msgKey, keys.msgKey) ||
        !Fits(buffers.identifier, keys.identifier) || message.BodyLength() > buffers.bodySize)
        return false;
    Put(buffers.node, keys.node);
    Put(buffers.task, keys.task);
    Put(buffers.msgKey, keys.msgKey);
    Put(buffers.identifier, keys.identifier);
    *buffers.number = keys.number;
    *buffers.bodyLength = message.BodyLength();
    if (message.BodyLength() > 0) std::memcpy(buffers.body, message.Body(), message.BodyLength());
    return true;
}

}  // namespace

bool ReaderSide::IsWanted(const Address& address, std::uint64_t place) const {
    return std::any_of(subscriptions_.begin(), subscriptions_.end(), [&](const Subscription& each) {
        return each.from <= place && Matches(each.pattern.View(), address);
    });
}

std::vector<ReaderSide::Subscription>::const_iterator ReaderSide::Find(const Address& pattern) const {
    return std::find_if(subscriptions_.begin(), subscriptions_.end(),
                        [&](const Subscription& each) { return each.pattern.View() == pattern; });
}

bool ReaderSide::Add(const Address& pattern, std::uint64_t from) {
    const std::lock_guard lock(mutex_);
    if (Find(pattern) != subscriptions_.end()) return false;
    subscriptions_.push_back({OwnedAddress(pattern), from});
    return true;
}

bool ReaderSide::Remove(const Address& pattern) {
    const std::lock_guard lock(mutex_);
    const auto ended = Find(pattern);
    if (ended == subscriptions_.end()) return false;
    subscriptions_.erase(ended);
    // What is queued was wanted when it came: its place no longer matters.
    inbox_.Keep([this](const Address& address) { return IsWanted(address, UINT64_MAX); });
    return true;
}

bool ReaderSide::Names(std::string_view msgKey, std::string_view identifier) const {
    const std::lock_guard lock(mutex_);
    return std::any_of(subscriptions_.begin(), subscriptions_.end(), [&](const Subscription& each) {
        return each.pattern.View().msgKey == msgKey && each.pattern.View().identifier == identifier;
    });
}

std::optional<OwnedAddress> ReaderSide::CommonPair() const {
    const std::lock_guard lock(mutex_);
    if (subscriptions_.empty()) return std::nullopt;
    const Address first = subscriptions_.front().pattern.View();
    for (const Subscription& each : subscriptions_) {
        const Address other = each.pattern.View();
        if (other.msgKey != first.msgKey || other.identifier != first.identifier) return std::nullopt;
    }
    return OwnedAddress({"*", "*", 0, first.msgKey, first.identifier});
}

std::optional<std::uint64_t> ReaderSide::FirstWanted() const {
    const std::lock_guard lock(mutex_);
    std::optional<std::uint64_t> first;
    for (const Subscription& each : subscriptions_) first = std::min(first.value_or(each.from), each.from);
    return first;
}

void ReaderSide::MoveOn(std::uint64_t place) {
    const std::lock_guard lock(mutex_);
    for (Subscription& each : subscriptions_) each.from = std::max(each.from, place);
}

void ReaderSide::MoveBack(std::uint64_t place) {
    const std::lock_guard lock(mutex_);
    for (Subscription& each : subscriptions_) each.from = place;
}

ReaderSide::Taken ReaderSide::Take(const Address& address, const void* body, std::uint32_t bodyLength,
                                   std::uint64_t place) {
    const std::lock_guard lock(mutex_);
    if (!IsWanted(address, place)) return Taken::Unwanted;
    return inbox_.Push(address, body, bodyLength) ? Taken::Queued : Taken::Full;
}

void ReaderSide::NoteLoss() {
    const std::lock_guard lock(mutex_);
    if (!subscriptions_.empty()) inbox_.NoteLoss();
}

int ReaderSide::Wait(std::uint32_t milliseconds) {
    switch (inbox_.Wait(milliseconds)) {
        case Inbox::Found::Message:
            return 1;
        case Inbox::Found::Loss:
            return Fail(TvxErrorLost);
        case Inbox::Found::Nothing:
            break;
    }
    return Fail(TvxErrorNothing);
}

int ReaderSide::Read(ReadBuffers& buffers) {
    bool delivered = false;
    switch (inbox_.Read([&](const Message& message) { return delivered = Deliver(message, buffers); })) {
        case Inbox::Found::Message:
            return delivered ? 1 : Fail(TvxErrorTooSmall);
        case Inbox::Found::Loss:
            return Fail(TvxErrorLost);
        case Inbox::Found::Nothing:
            break;
    }
    return Fail(TvxErrorNothing);
}

}  // namespace tarvex
