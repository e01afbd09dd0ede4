#pragma once

#include <list>
#include <mutex>
#include <string>
#include <vector>

#include "tarvex/nats/Connection.h"

namespace tarvex {

/// What the process has asked the engine for, so that each new connection can be asked again. Any thread may
/// call.
class Wishes {
public:
    struct Taker {
        natsMsgHandler handler;
        void* closure;
    };

    /// Asks for a subject; nothing happens if it is asked for already. False if the client refuses.
    bool Add(Connection& connection, const std::string& subject, const Taker& taker);
    /// The same for a connection to come.
    void AddForLater(const std::string& subject, const Taker& taker);
    /// Asks no longer, with a round trip. `connection` may be null.
    void Remove(Connection* connection, const std::vector<std::string>& subjects);
    /// Asks a new connection for all.
    bool Renew(Connection& connection);

private:
    struct Wish {
        std::string subject;
        Taker taker;
        SubscriptionOwner subscription;
    };
    std::list<Wish>::iterator Find(const std::string& subject);
    static bool Ask(Connection& connection, Wish& wish);

    std::mutex mutex_;
    std::list<Wish> wishes_;
};

/// Asks for one subject and takes all that comes, whatever the length of the queue. Null if refused.
SubscriptionOwner AskFor(Connection& connection, const std::string& subject, const Wishes::Taker& taker);

/// Ends a subscription without the client's crash on a message that comes in meanwhile.
void EndSubscription(Connection* connection, std::vector<SubscriptionOwner> ended);

}  // namespace tarvex
