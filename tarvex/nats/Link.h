#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "tarvex/nats/Connection.h"
#include "tarvex/nats/Journal.h"

namespace tarvex {

/// Keeps the process connected. Nothing is started before `Start`; then one thread reads and writes and one
/// opens a new connection when the old one ends. Neither is the program's, and no signal reaches them.
class Link {
public:
    using Current = std::shared_ptr<Connection>;

    /// What hangs on the link. Called on its threads, one call at a time but for `OnDown`, `OnDenied` and `IsBehind`.
    class User {
    public:
        virtual ~User() = default;
        /// Asks the new connection for all that the process wants. `isFirst` if there was none before. False if it
        /// failed.
        virtual bool Renew(Connection& connection, bool isFirst) = 0;
        /// Sends what waited.
        virtual void OnUp(const Current& connection) = 0;
        /// This connection has ended; null if there was none.
        virtual void OnDown(const natsConnection* connection) = 0;
        /// Several times a second while connected, and soon after `Hurry`.
        virtual void Tend(Connection& connection) = 0;
        /// The server does not permit what its text says.
        virtual void OnDenied(const std::string& text) = 0;
        /// Whether so much waits to be delivered that nothing more should be read.
        virtual bool IsBehind() = 0;
    };

    /// `inbox`: the first words of where the server answers.
    Link(const EngineSettings& settings, std::string name, std::string inbox, Journal& journal, User& user);

    /// True if there is or was a connection. The first call tries to make one; if that fails, later ones
    /// fail at once until it was made behind them. Raises `std::system_error` if a thread cannot be had.
    bool Start();
    bool IsStarted() const { return started_; }
    /// Whether there are threads, or soon will be.
    bool HasThreads() const { return hasThreads_; }
    /// The connection, after a short wait for the next one if there is none. Null if that was not enough.
    Current Await();
    void Hurry();
    /// Closes the connection and ends the threads.
    void End();

private:
    void FirstStart();
    bool Open(bool isFirst);
    void Keep();
    static void OnClosed(natsConnection* connection, void* closure);
    static void OnFailed(natsConnection* connection, natsSubscription*, natsStatus status, void* closure);

    const EngineSettings& settings_;
    const std::string name_;
    const std::string inbox_;
    Journal& journal_;
    User& user_;

    std::mutex starting_;
    std::atomic<bool> started_ = false;
    std::atomic<bool> hasThreads_ = false;
    std::atomic<bool> wasUp_ = false;
    std::shared_ptr<EventLoop> loop_;
    std::thread keeper_;
    std::string why_;  // the last connection could not be made; the opening thread's own

    std::mutex mutex_;
    std::condition_variable changed_;
    Current connection_;
    bool up_ = false;
    bool hurry_ = false;
    bool ends_ = false;
};

}  // namespace tarvex
