#include "tarvex/nats/Wishes.h"

#include <algorithm>

namespace tarvex {

std::list<Wishes::Wish>::iterator Wishes::Find(const std::string& subject) {
    return std::find_if(wishes_.begin(), wishes_.end(), [&](const Wish& each) { return each.subject == subject; });
}

bool Wishes::Add(Connection& connection, const std::string& subject, const Subscription::Taker& taker) {
    const std::lock_guard lock(mutex_);
    if (Find(subject) != wishes_.end()) return true;
    Wish& added = wishes_.emplace_back(Wish{subject, taker, {}});
    if (added.subscription.Ask(connection, subject, taker)) return true;
    wishes_.pop_back();
    return false;
}

void Wishes::AddForLater(const std::string& subject, const Subscription::Taker& taker) {
    const std::lock_guard lock(mutex_);
    wishes_.push_back({subject, taker, {}});
}

void Wishes::Remove(const std::string& subject) {
    std::list<Wish> ended;
    {
        const std::lock_guard lock(mutex_);
        const auto wish = Find(subject);
        if (wish != wishes_.end()) ended.splice(ended.begin(), wishes_, wish);
    }
    for (Wish& wish : ended) wish.subscription.End();
}

bool Wishes::Renew(Connection& connection) {
    const std::lock_guard lock(mutex_);
    return std::all_of(wishes_.begin(), wishes_.end(),
                       [&](Wish& wish) { return wish.subscription.Ask(connection, wish.subject, wish.taker); });
}

void Wishes::AddTo(Backlog& backlog) {
    const std::lock_guard lock(mutex_);
    for (const Wish& wish : wishes_) backlog.Add(wish.subscription);
}

}  // namespace tarvex
