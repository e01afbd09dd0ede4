#pragma once

#include <nats/nats.h>

#include <atomic>

#include "tarvex/ReaderSide.h"

namespace tarvex {

/// Wakes a reader that waits once for a run of messages that are there already: waking it for each would cost more
/// than the messages.
class Waker {
public:
    explicit Waker(ReaderSide& reader) : reader_(reader) {}

    /// Behind each message of this subscription.
    void After(natsSubscription* subscription);
    /// What was to come may have gone with its subscription or connection. Any thread may call.
    void EndRun();

private:
    static constexpr int kLongestRun = 64;

    ReaderSide& reader_;
    std::atomic<int> toCome_ = 0;  // in this run
};

}  // namespace tarvex
