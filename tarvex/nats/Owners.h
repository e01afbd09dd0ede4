#pragma once

#include <nats/nats.h>

#include <memory>

namespace tarvex {

/// Owners of the engine client's objects.
template <auto kDestroy>
struct Destroy {
    template <class Object>
    void operator()(Object* object) const {
        kDestroy(object);
    }
};

using OptionsOwner = std::unique_ptr<natsOptions, Destroy<natsOptions_Destroy>>;
using ConnectionOwner = std::unique_ptr<natsConnection, Destroy<natsConnection_Destroy>>;
using MessageOwner = std::unique_ptr<natsMsg, Destroy<natsMsg_Destroy>>;
using SubscriptionOwner = std::unique_ptr<natsSubscription, Destroy<natsSubscription_Destroy>>;

}  // namespace tarvex
