#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvex/nats/Connection.h"

namespace tarvex {

/// What one connection was asked for.
class Subscription {
public:
    struct Taker {
        natsMsgHandler handler;
        void* closure;
    };

    /// Asks for a subject, and takes all that comes. What was asked for before has to have ended, or its connection
    /// to be closed. False if the client refuses; there is then no subscription.
    bool Ask(Connection& connection, const std::string& subject, const Taker& taker);
    /// Asks no longer, with a round trip: the client crashes on a message that comes while it is forgotten.
    void End();

    natsSubscription* Get() const { return subscription_.get(); }

private:
    SubscriptionOwner subscription_;
    std::weak_ptr<Connection> connection_;
};

/// What waits to be delivered.
class Backlog {
public:
    void Add(const Subscription& subscription);
    /// Whether it is more than should be held in memory that no limit of the queue counts.
    bool IsLarge() const { return messages_ > kMostMessages || bytes_ > kMostBytes; }

private:
    static constexpr std::int64_t kMostMessages = 65536;
    static constexpr std::int64_t kMostBytes = 64 << 20;

    std::int64_t messages_ = 0;
    std::int64_t bytes_ = 0;
};

}  // namespace tarvex
