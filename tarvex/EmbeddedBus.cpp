#include "tarvex/EmbeddedBus.h"

#include <algorithm>
#include <cstring>

#include "tarvex/LastError.h"

namespace tarvex {

bool EmbeddedBus::IsWanted(const Address& address) const {
    return std::any_of(subscriptions_.begin(), subscriptions_.end(),
                       [&](const OwnedAddress& pattern) { return Matches(pattern.View(), address); });
}

int EmbeddedBus::Subscribe(const Address& pattern, std::uint16_t /*value*/) {
    const std::lock_guard lock(mutex_);
    const bool known = std::any_of(subscriptions_.begin(), subscriptions_.end(),
                                   [&](const OwnedAddress& each) { return each.View() == pattern; });
    if (!known) subscriptions_.emplace_back(pattern);
    return 1;
}

int EmbeddedBus::Unsubscribe(const Address& pattern) {
    const std::lock_guard lock(mutex_);
    const auto ended = std::erase_if(subscriptions_, [&](const OwnedAddress& each) { return each.View() == pattern; });
    if (ended == 0) return Fail(TvxErrorNothing);
    inbox_.Keep([this](const Address& address) { return IsWanted(address); });
    return 1;
}

std::vector<EmbeddedBus::Publication>::iterator EmbeddedBus::FindPublication(std::string_view msgKey,
                                                                             std::string_view identifier) {
    return std::find_if(publications_.begin(), publications_.end(), [&](const Publication& each) {
        return each.msgKey == msgKey && each.identifier == identifier;
    });
}

int EmbeddedBus::Publish(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                         std::uint16_t formatSize) {
    const auto* bytes = reinterpret_cast<const char*>(format);
    std::vector<char> record(bytes, bytes + formatSize);
    const std::lock_guard lock(mutex_);
    const auto known = FindPublication(msgKey, identifier);
    if (known == publications_.end())
        publications_.push_back({std::string(msgKey), std::string(identifier), std::move(record)});
    else if (format)  // a send that announces the pair again has nothing to say about its format
        known->format = std::move(record);
    return 1;
}

int EmbeddedBus::Unpublish(std::string_view msgKey, std::string_view identifier) {
    const std::lock_guard lock(mutex_);
    const auto known = FindPublication(msgKey, identifier);
    if (known == publications_.end()) return Fail(TvxErrorNothing);
    publications_.erase(known);
    return 1;
}

int EmbeddedBus::Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count) {
    const Address address = Own(msgKey, identifier);
    const std::lock_guard lock(mutex_);
    if (!IsWanted(address)) return 1;
    return inbox_.Push(Message(address, bytes, count)) ? 1 : Fail(TvxErrorQueueFull);
}

int EmbeddedBus::Wait(std::uint32_t milliseconds) { return inbox_.Wait(milliseconds) ? 1 : Fail(TvxErrorNothing); }

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

int EmbeddedBus::Read(ReadBuffers& buffers) {
    bool delivered = false;
    if (!inbox_.Read([&](const Message& message) { return delivered = Deliver(message, buffers); }))
        return Fail(TvxErrorNothing);
    return delivered ? 1 : Fail(TvxErrorTooSmall);
}

int EmbeddedBus::QueryFormat(const Address& pattern, void* buffer, std::uint32_t bufferSize, std::uint32_t& needed) {
    const std::lock_guard lock(mutex_);
    for (const Publication& each : publications_) {
        if (each.format.empty() || !Matches(pattern, Own(each.msgKey, each.identifier))) continue;
        needed = static_cast<std::uint32_t>(each.format.size());
        if (needed > bufferSize) return Fail(TvxErrorTooSmall);
        std::memcpy(buffer, each.format.data(), needed);
        return 1;
    }
    needed = 0;
    return 1;
}

}  // namespace tarvex
