#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include "tarvex/nats/Denials.h"
#include "tarvex/nats/Link.h"
#include "tarvex/nats/Outbox.h"
#include "tarvex/nats/Secrets.h"
#include "tarvex/nats/Subjects.h"

namespace tarvex {

/// The sending side. What a program sends is kept until the server has it: live until it has answered a round
/// trip and had a second to pass the message on, stored until the stream has acknowledged it. After a cut the
/// rest goes out again, in order and marked, so that a reader drops what it has. If the stream has not taken a
/// message, that one goes out again alone until it has; then those behind it follow. Any thread may call.
class Sender {
public:
    Sender(const EngineSettings& settings, const Subjects& subjects, const std::string& run, const Denials& denials,
           Journal& journal, Link& link);

    int Send(std::string_view msgKey, std::string_view identifier, const void* bytes, std::uint32_t count);

    /// Sends what waits, or the first part of much, whose rest goes with `Tend`; then all that is added.
    void Resume(const Link::Current& connection);
    /// Sends nothing more on this connection; null for any.
    void Suspend(const natsConnection* ended);
    /// Learns what the server has.
    void Tend(Connection& connection);
    /// Takes nothing more, and waits until the server has everything. False if it has not after this time; `left` is
    /// then how many.
    bool Drain(std::chrono::milliseconds limit, std::uint64_t& left);

    /// Lets go what the server has denied.
    void GiveUpDenied();

    /// Where the stream acknowledges, with a wildcard at its end.
    std::string AckSubject() const { return ackHead_ + "*"; }
    void TakeAck(natsMsg* message);

private:
    using Lock = std::unique_lock<std::mutex>;

    bool AwaitRoom(Lock& lock, std::size_t bytes);
    void AwaitWritten(Lock& lock);
    natsStatus Put(const Outbox::Entry& entry);
    natsStatus PutStored(const Outbox::Entry& entry);
    const Subjects::Subject& SubjectOf(std::string_view msgKey, std::string_view identifier);
    bool IsTooLong(std::size_t keys, std::size_t body) const;
    enum class Passed { Put, Lost, Waits };
    Passed PutWaiting(const Outbox::Entry& entry);
    void Pump(Lock& lock);
    void Lose(const Outbox::Entry& entry, const char* why);
    void Urge(std::int64_t now);
    void GoOn();

    const bool stores_;
    const Subjects& subjects_;
    const std::string run_;
    const std::string ackHead_;
    const Denials& denials_;
    Journal& journal_;
    Link& link_;

    struct Pair {
        std::string msgKey, identifier;
        Subjects::Subject subject;  // empty for no pair
    };

    std::mutex mutex_;            // also keeps the sends in order
    std::array<Pair, 64> pairs_;  // sent to of late
    Pair* latest_ = pairs_.data();
    std::condition_variable room_;
    Link::Current connection_;
    Outbox outbox_;
    Secrets tags_;
    std::int64_t largest_;  // body and headers, that the server last took
    bool ends_ = false;
    std::uint64_t next_ = 1;     // to be put on the connection
    std::uint64_t highest_ = 0;  // ever put on one
    std::size_t unlooked_ = 0;   // bytes put on the connection since its queue was looked at
    bool hurried_ = false;
    bool refuses_ = false;       // the stream takes nothing now
    bool probes_ = false;        // the first unconfirmed message goes alone
    std::int64_t probed_ = 0;    // when it last did
    std::uint64_t seen_ = 0;     // confirmed when last looked at
    std::int64_t progress_ = 0;  // when that last moved
};

}  // namespace tarvex
