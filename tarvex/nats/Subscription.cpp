#include "tarvex/nats/Subscription.h"

namespace tarvex {

bool Subscription::Ask(Connection& connection, const std::string& subject, const Taker& taker) {
    natsSubscription* made = nullptr;
    subscription_.reset();
    if (natsConnection_Subscribe(&made, connection.Get(), subject.c_str(), taker.handler, taker.closure) != NATS_OK)
        return false;
    // The client's own limit would drop messages; the loop stops reading instead.
    natsSubscription_SetPendingLimits(made, -1, -1);
    subscription_.reset(made);
    connection_ = connection.weak_from_this();
    return true;
}

void Subscription::End() {
    const std::shared_ptr<Connection> connection = connection_.lock();
    if (subscription_ && connection && natsSubscription_Unsubscribe(subscription_.get()) == NATS_OK)
        connection->RoundTrip();
    subscription_.reset();
}

void Backlog::Add(const Subscription& subscription) {
    int count = 0, size = 0;
    if (!subscription.Get() || natsSubscription_GetPending(subscription.Get(), &count, &size) != NATS_OK) return;
    messages_ += count;
    bytes_ += size;
}

}  // namespace tarvex
