#pragma once

#include <memory>
#include <string>

#include "tarvex/nats/EngineSettings.h"
#include "tarvex/nats/EventLoop.h"
#include "tarvex/nats/Owners.h"

namespace tarvex {

/// One connection to one server. It never connects again by itself: the client would send what waits before
/// the other programs have subscribed again. Any thread may call.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    struct Handlers {
        natsConnectionHandler closed;
        natsErrHandler failed;
        void* closure;
    };

    /// Tries the servers in the order of the list, at most two seconds each. `inbox`: the first words of where the
    /// server answers the client's own requests. Null if none serves; `why` then says so.
    static std::shared_ptr<Connection> Open(const std::shared_ptr<EventLoop>& loop, const EngineSettings& settings,
                                            const std::string& name, const std::string& inbox, const Handlers& handlers,
                                            std::string& why);
    ~Connection();

    natsConnection* Get() const { return connection_.get(); }
    /// Ends what waits for an answer. Also done by the destructor.
    void Close() { loop_->Close(Get()); }
    /// True if the server has taken everything sent before. Ends when the connection does.
    bool RoundTrip();
    /// While one of these lives an answer is expected: the connection ends if the server says nothing at all.
    class Expectation {
    public:
        explicit Expectation(Connection& connection) : loop_(*connection.loop_) { loop_.Expect(); }
        ~Expectation() { loop_.ExpectNoMore(); }
        Expectation(const Expectation&) = delete;
        Expectation& operator=(const Expectation&) = delete;

    private:
        EventLoop& loop_;
    };
    /// Gives the connection up; its end is told as that of any other. Does not wait.
    void Cut() { loop_->Cut(Get()); }
    bool IsClosed() const { return natsConnection_IsClosed(Get()); }
    /// Waits until something was written, or a moment.
    void AwaitWrite() { loop_->AwaitWrite(); }
    /// Whether the client holds more than is good before it is written.
    bool IsCrowded() const { return IsCrowded(Get()); }
    static bool IsCrowded(natsConnection* connection) { return natsConnection_Buffered(connection) > kMostBuffered; }
    /// The server's limit for a body and its headers.
    std::int64_t LargestPayload() const { return largestPayload_; }
    std::string Server() const;
    /// The last error that the server told; empty if there was none.
    std::string LastError() const;

private:
    static constexpr int kMostBuffered = 1 << 20;

    explicit Connection(std::shared_ptr<EventLoop> loop) : loop_(std::move(loop)) {}

    const std::shared_ptr<EventLoop> loop_;
    ConnectionOwner connection_;
    std::int64_t largestPayload_ = 0;
};

}  // namespace tarvex
