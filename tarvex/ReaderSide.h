#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "tarvex/Bus.h"
#include "tarvex/Inbox.h"

namespace tarvex {

/// What a process asks for and has not read yet. The same for every way to run the bus: only how a
/// message comes here differs. Any thread may call.
class ReaderSide {
public:
    enum class Taken { Queued, Unwanted, Full };

    /// False if there was such a subscription. Where messages have places in a stream, `from` is the first
    /// that it wants.
    bool Add(const Address& pattern, std::uint64_t from = 0);
    /// Drops the unread messages that nothing else asks for. False if there was no such subscription.
    bool Remove(const Address& pattern);
    /// Whether a subscription names this pair, whatever its sender keys.
    bool Names(std::string_view msgKey, std::string_view identifier) const;
    /// The pair of all subscriptions, from any sender, if it is the same; nothing if they differ or there are
    /// none.
    std::optional<OwnedAddress> CommonPair() const;

    /// The lowest place that a subscription wants next; nothing if there are none.
    std::optional<std::uint64_t> FirstWanted() const;
    /// No subscription wants what is before this place.
    void MoveOn(std::uint64_t place);
    /// All subscriptions want what is from this place on.
    void MoveBack(std::uint64_t place);

    /// Queues the message if a subscription wants it. One caller's messages keep its order. Call `Wake` behind it,
    /// or behind the last of several.
    Taken Take(const Address& address, const void* body, std::uint32_t bodyLength, std::uint64_t place = 0);
    /// Whether half of the queue is free.
    bool HasRoom() { return inbox_.HasRoom(); }
    /// Whether a thread waits for a message.
    bool IsAwaited() const { return inbox_.IsAwaited(); }
    void Wake() { inbox_.Wake(); }
    /// Messages were lost behind what is queued now: once that is read, one call tells.
    void NoteLoss();

    int Wait(std::uint32_t milliseconds);
    int Read(ReadBuffers& buffers);

private:
    struct Subscription {
        OwnedAddress pattern;
        std::uint64_t from;
    };
    bool IsWanted(const Address& address, std::uint64_t place) const;
    std::vector<Subscription>::const_iterator Find(const Address& pattern) const;

    mutable std::mutex mutex_;  // the list; also keeps a sender's messages in order
    std::vector<Subscription> subscriptions_;
    Inbox inbox_;
};

}  // namespace tarvex
