#pragma once

#include <nats/nats.h>

#include <condition_variable>
#include <memory>
#include <mutex>

#include "bus/Channel.h"
#include "tarvex/nats/EventLoop.h"

namespace busbench {

inline constexpr const char* kSubject = "raw.m.vessel.nav.1234.PRX~Position.POS/Vessel%201";

/// Raises `std::runtime_error` unless the client is content.
void Check(natsStatus status, const char* what);

/// A connection to the server that `TARVEX_URL` names, and what its callbacks hand over.
class RawClient {
public:
    /// Driven by an event loop that sends at once, or by the client's own threads as it comes.
    explicit RawClient(bool isDriven);
    ~RawClient();

    natsConnection* Get() const { return connection_; }
    /// Holds a sender back as the client itself does not when it is driven.
    void AwaitRoom();

    static void OnMessage(natsConnection*, natsSubscription*, natsMsg* message, void* client);
    /// Gives the messages to `taker` until it has had enough.
    void Receive(const Channel::Taker& taker);

private:
    std::unique_ptr<tarvex::EventLoop> loop_;
    natsConnection* connection_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    const Channel::Taker* taker_ = nullptr;
    bool isDone_ = false;
};

}  // namespace busbench
