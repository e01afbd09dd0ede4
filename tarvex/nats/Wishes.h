#pragma once

#include <list>
#include <mutex>
#include <string>

#include "tarvex/nats/Subscription.h"

namespace tarvex {

/// What the process has asked the engine for, so that each new connection can be asked again. Any thread may
/// call.
class Wishes {
public:
    /// Asks for a subject; nothing happens if it is asked for already. False if the client refuses.
    bool Add(Connection& connection, const std::string& subject, const Subscription::Taker& taker);
    /// The same for a connection to come.
    void AddForLater(const std::string& subject, const Subscription::Taker& taker);
    /// Asks no longer. Needs no memory.
    void Remove(const std::string& subject);
    /// Asks a new connection for all.
    bool Renew(Connection& connection);

    void AddTo(Backlog& backlog);

private:
    struct Wish {
        std::string subject;
        Subscription::Taker taker;
        Subscription subscription;
    };
    std::list<Wish>::iterator Find(const std::string& subject);

    std::mutex mutex_;
    std::list<Wish> wishes_;
};

}  // namespace tarvex
