#include "tarvex/nats/Wishes.h"

#include <algorithm>

namespace tarvex {

SubscriptionOwner AskFor(Connection& connection, const std::string& subject, const Wishes::Taker& taker) {
    natsSubscription* made = nullptr;
    if (natsConnection_Subscribe(&made, connection.Get(), subject.c_str(), taker.handler, taker.closure) != NATS_OK)
        return nullptr;
    // The client's own limit would drop messages without a word.
    natsSubscription_SetPendingLimits(made, -1, -1);
    return SubscriptionOwner(made);
}

void EndSubscription(Connection* connection, std::vector<SubscriptionOwner> ended) {
    bool any = false;
    for (const SubscriptionOwner& each : ended)
        if (each) any = natsSubscription_Unsubscribe(each.get()) == NATS_OK || any;
    if (any && connection) connection->RoundTrip();
}

std::list<Wishes::Wish>::iterator Wishes::Find(const std::string& subject) {
    return std::find_if(wishes_.begin(), wishes_.end(), [&](const Wish& each) { return each.subject == subject; });
}

bool Wishes::Ask(Connection& connection, Wish& wish) {
    wish.subscription = AskFor(connection, wish.subject, wish.taker);
    return wish.subscription != nullptr;
}

bool Wishes::Add(Connection& connection, const std::string& subject, const Taker& taker) {
    const std::lock_guard lock(mutex_);
    if (Find(subject) != wishes_.end()) return true;
    Wish& added = wishes_.emplace_back(Wish{subject, taker, nullptr});
    if (Ask(connection, added)) return true;
    wishes_.pop_back();
    return false;
}

void Wishes::AddForLater(const std::string& subject, const Taker& taker) {
    const std::lock_guard lock(mutex_);
    wishes_.push_back({subject, taker, nullptr});
}

void Wishes::Remove(Connection* connection, const std::vector<std::string>& subjects) {
    std::vector<SubscriptionOwner> ended;
    {
        const std::lock_guard lock(mutex_);
        for (const std::string& subject : subjects) {
            const auto wish = Find(subject);
            if (wish == wishes_.end()) continue;
            ended.push_back(std::move(wish->subscription));
            wishes_.erase(wish);
        }
    }
    EndSubscription(connection, std::move(ended));
}

bool Wishes::Renew(Connection& connection) {
    const std::lock_guard lock(mutex_);
    return std::all_of(wishes_.begin(), wishes_.end(), [&](Wish& wish) { return Ask(connection, wish); });
}

}  // namespace tarvex
