#include "tarvex/nats/Waker.h"

#include <algorithm>

namespace tarvex {

void Waker::After(natsSubscription* subscription) {
    if (toCome_ > 0) {
        --toCome_;
    } else {
        if (!reader_.IsAwaited()) return;
        int pending = 0;
        if (natsSubscription_GetPending(subscription, &pending, nullptr) == NATS_OK)
            toCome_ = std::min(pending, kLongestRun);
    }
    if (toCome_ == 0) reader_.Wake();
}

}  // namespace tarvex
