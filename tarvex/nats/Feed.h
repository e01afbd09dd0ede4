#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "tarvex/ReaderSide.h"
#include "tarvex/nats/EngineSettings.h"
#include "tarvex/nats/Journal.h"
#include "tarvex/nats/Link.h"
#include "tarvex/nats/Senders.h"
#include "tarvex/nats/Subjects.h"
#include "tarvex/nats/Subscription.h"
#include "tarvex/nats/Waker.h"

namespace tarvex {

/// What a process reads from the stream: every message from a place on, in the stream's order, each once. A
/// delivery that breaks off, for a cut, a gap or a full queue, is asked for again from the first message that
/// is still wanted. Any thread may call.
class Feed {
public:
    Feed(const EngineSettings& settings, const Subjects& subjects, Senders& senders, ReaderSide& reader, Waker& waker,
         Journal& journal);

    /// Makes the stream if there is none. False if it cannot be used; the journal says why.
    bool FindStream(Connection& connection);
    /// Starts a subscription: 0 for what comes from now on, else the seconds of history that come first,
    /// 0xFFFF for all that the stream keeps. False, with the last error value set, if that failed.
    bool Add(Connection& connection, const Address& pattern, std::uint16_t history);
    /// After a subscription ended.
    void Narrow();
    /// Asks a new connection to go on. False if it failed.
    bool Renew(Connection& connection);
    /// Mends a delivery that broke off.
    void Tend(Connection& connection);
    void AddTo(Backlog& backlog);

private:
    struct Stream {
        std::uint64_t first = 1;  // kept, or to come
        std::uint64_t last = 0;
        std::int64_t created = 0;
    };

    bool GetStream(Connection& connection, Stream& stream);
    bool PlaceOfTime(Connection& connection, std::uint16_t seconds, std::uint64_t& place);
    bool Restart(Connection& connection);
    void EndDelivery();
    bool GoOn(Connection& connection);
    std::string Filter() const;
    void Take(natsSubscription* subscription, natsConnection* connection, natsMsg* message);
    void TakeStatus(natsConnection* connection, natsMsg* message);
    void BreakOff(const char* why);
    static void OnMessage(natsConnection* connection, natsSubscription* subscription, natsMsg* message, void* closure);

    const EngineSettings& settings_;
    const Subjects& subjects_;
    Senders& senders_;  // the delivery thread's own
    const std::string deliverHead_;
    ReaderSide& reader_;
    Waker& waker_;
    Journal& journal_;

    std::mutex asking_;          // one request to the engine at a time; never taken by the delivery
    Subscription subscription_;  // changed under both mutexes
    std::string filter_;
    std::uint64_t serial_ = 0;
    std::int64_t created_ = 0;  // the stream that the places are those of

    std::mutex mutex_;
    natsSubscription* current_ = nullptr;  // null while there is no delivery, or it broke off
    std::uint64_t expected_ = 1;           // the next number in this delivery
    std::uint64_t position_ = 0;           // in the stream, of the last message taken or passed over
    std::int64_t heard_ = 0;               // when the delivery last said something
    bool isFull_ = false;                  // it broke off because the queue is full
};

}  // namespace tarvex
