#pragma once

#include <nats/nats.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace tarvex {

/// The one thread that reads and writes the connection. The engine's client has threads of its own for
/// this, whose writer sleeps a millisecond before each write; driven from here it sends at once, and
/// several times as much.
class EventLoop {
public:
    /// While `isBehind`, which is asked on the loop's thread, nothing is read: what comes waits at the server, not
    /// in this process. Raises `std::system_error` if the system has no descriptor or thread left.
    explicit EventLoop(std::function<bool()> isBehind);
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// The connection made with these options will be driven. One at a time.
    natsStatus Serve(natsOptions* options);
    /// Closes on the loop's thread, the only one where the client does that safely, and waits for it.
    void Close(natsConnection* connection);
    /// Ends the connection as if the network had.
    void Cut(natsConnection* connection);
    /// Waits until something was written, or a moment.
    void AwaitWrite();

    /// While an answer is expected from a server that says nothing for `kSilence`, the connection is cut, unless what
    /// waits before the question is still being taken; the client then reports it as lost. Nests.
    void Expect();
    void ExpectNoMore();
    static constexpr std::int64_t kSilence = 4000;  // milliseconds

private:
    static natsStatus OnAttach(void** user, void* loop, natsConnection* connection, natsSock socket);
    static natsStatus OnRead(void* user, bool add);
    static natsStatus OnWrite(void* user, bool add);
    static natsStatus OnDetach(void* user);

    void Run();
    void Wake();
    void CutIfSilent(natsConnection* connection, int socket, std::int64_t heard, std::int64_t now);

    const std::function<bool()> isBehind_;
    const int wake_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable written_;
    natsConnection* connection_ = nullptr;
    int socket_ = -1;
    bool reads_ = false;
    bool writes_ = false;
    natsConnection* toClose_ = nullptr;
    bool ends_ = false;
    int expected_ = 0;
    std::int64_t heard_ = 0;  // when the server last said something, or was first expected to
    struct Silence {
        std::int64_t since = 0;    // that value of `heard_`
        std::uint64_t owed = 0;    // all bytes that the server's system was to take then
        std::uint64_t taken = 0;   // of all
        std::int64_t takenAt = 0;  // when that last grew
    };
    Silence silence_;  // the loop's own
    std::thread thread_;
};

}  // namespace tarvex
