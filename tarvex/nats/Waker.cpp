#include "tarvex/nats/Waker.h"

#include <algorithm>

namespace tarvex {

void Waker::After(natsSubscription* subscription) {
    int toCome = toCome_.load(std::memory_order_relaxed);
    if (toCome > 0) {
        --toCome;
    } else {
        if (!reader_.IsAwaited()) return;
        int pending = 0;
        if (natsSubscription_GetPending(subscription, &pending, nullptr) == NATS_OK)
            toCome = std::min(pending, kLongestRun);
    }
    toCome_.store(toCome, std::memory_order_relaxed);
    if (toCome == 0) reader_.Wake();
}

// A store that comes too late makes one run a little longer, which the link's tending ends.
void Waker::EndRun() {
    toCome_.store(0, std::memory_order_relaxed);
    reader_.Wake();
}

}  // namespace tarvex
