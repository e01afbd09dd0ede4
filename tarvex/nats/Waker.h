#pragma once

#include <nats/nats.h>

#include "tarvex/ReaderSide.h"

namespace tarvex {

/// Wakes a reader that waits once for a run of messages that are there already: waking it for each would cost more
/// than the messages. A run may end early, with its subscription or connection; who ends these wakes the reader.
class Waker {
public:
    explicit Waker(ReaderSide& reader) : reader_(reader) {}

    /// Behind each message of this subscription.
    void After(natsSubscription* subscription);

private:
    static constexpr int kLongestRun = 64;

    ReaderSide& reader_;
    int toCome_ = 0;  // in this run
};

}  // namespace tarvex
