#include "tarvex/nats/EventLoop.h"

#include <linux/sockios.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace tarvex {
namespace {

constexpr int kGlance = 250;           // milliseconds between two looks at a silent server
constexpr std::int64_t kStall = 1500;  // milliseconds in which a link that works acknowledges something
constexpr int kPause = 2;              // milliseconds, while the process is behind
constexpr int kReads = 32;             // of 32 KiB at most, until the loop looks whether it is

std::int64_t Now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

int MakeWake() {
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category());
    return descriptor;
}

}  // namespace

EventLoop::EventLoop(std::function<bool()> isBehind) : isBehind_(std::move(isBehind)), wake_(MakeWake()) {
    try {
        thread_ = std::thread([this] { Run(); });
    } catch (...) {
        close(wake_);
        throw;
    }
}

EventLoop::~EventLoop() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    Wake();
    thread_.join();
    close(wake_);
}

natsStatus EventLoop::Serve(natsOptions* options) {
    return natsOptions_SetEventLoop(options, this, OnAttach, OnRead, OnWrite, OnDetach);
}

void EventLoop::Wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wake_, &one, sizeof one);  // a full counter wakes as well
}

natsStatus EventLoop::OnAttach(void** user, void* loop, natsConnection* connection, natsSock socket) {
    auto* self = static_cast<EventLoop*>(loop);
    // A cut in the network is noticed while bytes wait for their acknowledgement.
    const unsigned limit = kSilence;
    setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &limit, sizeof limit);
    {
        const std::lock_guard lock(self->mutex_);
        self->connection_ = connection;
        self->socket_ = socket;
        self->reads_ = true;
        self->writes_ = false;
        self->heard_ = Now();
    }
    *user = self;
    self->Wake();
    return NATS_OK;
}

natsStatus EventLoop::OnRead(void* user, bool add) {
    auto* self = static_cast<EventLoop*>(user);
    {
        const std::lock_guard lock(self->mutex_);
        self->reads_ = add;
    }
    self->Wake();
    return NATS_OK;
}

natsStatus EventLoop::OnWrite(void* user, bool add) {
    auto* self = static_cast<EventLoop*>(user);
    {
        const std::lock_guard lock(self->mutex_);
        if (self->writes_ == add) return NATS_OK;
        self->writes_ = add;
    }
    if (add) self->Wake();
    return NATS_OK;
}

natsStatus EventLoop::OnDetach(void* user) {
    auto* self = static_cast<EventLoop*>(user);
    const std::lock_guard lock(self->mutex_);
    self->connection_ = nullptr;
    self->socket_ = -1;
    return NATS_OK;
}

void EventLoop::Close(natsConnection* connection) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !toClose_; });
    toClose_ = connection;
    Wake();
    changed_.wait(lock, [&] { return toClose_ != connection; });
}

void EventLoop::Cut(natsConnection* connection) {
    const std::lock_guard lock(mutex_);
    if (connection_ == connection && socket_ >= 0) shutdown(socket_, SHUT_RDWR);
}

void EventLoop::AwaitWrite() {
    std::unique_lock lock(mutex_);
    written_.wait_for(lock, std::chrono::milliseconds(10));
}

void EventLoop::Expect() {
    const std::lock_guard lock(mutex_);
    if (expected_++ > 0) return;
    heard_ = Now();
    Wake();  // the loop may be in a wait without an end
}

void EventLoop::ExpectNoMore() {
    const std::lock_guard lock(mutex_);
    --expected_;
}

// A slow link with a long queue is not a silent server: there the other end's system takes more and more of what was
// written before. What was written since says nothing: the system takes that for a server that stands still.
void EventLoop::CutIfSilent(natsConnection* connection, int socket, std::int64_t heard, std::int64_t now) {
    int waiting = 0;
    tcp_info info{};
    socklen_t size = sizeof info;
    if (ioctl(socket, SIOCOUTQ, &waiting) != 0 || getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return;
    const std::uint64_t taken = info.tcpi_bytes_acked;
    if (silence_.since != heard) {
        const int unwritten = natsConnection_Buffered(connection);
        silence_ = {heard, taken + static_cast<std::uint64_t>(waiting + std::max(unwritten, 0)), taken, now};
    } else if (taken != silence_.taken && silence_.taken < silence_.owed) {
        silence_.taken = taken;
        silence_.takenAt = now;
    }
    if (now - heard > kSilence && now - silence_.takenAt > kStall) shutdown(socket, SHUT_RDWR);
}

void EventLoop::Run() {
    pthread_setname_np(pthread_self(), "tarvex-io");
    std::unique_lock lock(mutex_);
    std::int64_t looked = 0;
    int readsLeft = kReads;
    bool pauses = false;
    while (!ends_) {
        if (natsConnection* const closing = toClose_) {
            lock.unlock();
            natsConnection_Close(closing);
            lock.lock();
            toClose_ = nullptr;
            changed_.notify_all();
            continue;
        }
        natsConnection* const connection = connection_;
        const short events = static_cast<short>((reads_ && !pauses ? POLLIN : 0) | (writes_ ? POLLOUT : 0));
        pollfd watched[2] = {{wake_, POLLIN, 0}, {connection ? socket_ : -1, events, 0}};
        const bool expects = connection && expected_ > 0;
        const std::int64_t heard = heard_;
        lock.unlock();
        if (const std::int64_t now = expects ? Now() : 0; now - looked >= kGlance) {
            looked = now;
            CutIfSilent(connection, watched[1].fd, heard, now);
        }
        const int ready = poll(watched, 2, pauses ? kPause : expects ? kGlance : -1);
        if (ready > 0 && watched[0].revents) {
            std::uint64_t count;
            [[maybe_unused]] const auto taken = read(wake_, &count, sizeof count);
        }
        const bool canRead = ready > 0 && watched[1].revents & (POLLIN | POLLHUP | POLLERR);
        const bool canWrite = ready > 0 && watched[1].revents & POLLOUT;
        if (canRead) natsConnection_ProcessReadEvent(connection);
        if (canWrite) natsConnection_ProcessWriteEvent(connection);
        if (canRead) --readsLeft;
        if (pauses || readsLeft <= 0) {
            pauses = isBehind_();
            readsLeft = kReads;
        }
        lock.lock();
        if (canRead) heard_ = Now();
        if (canWrite) written_.notify_all();
    }
}

}  // namespace tarvex
