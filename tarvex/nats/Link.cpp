#include "tarvex/nats/Link.h"

#include <openssl/crypto.h>
#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <exception>
#include <utility>

namespace tarvex {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenTries(100);
constexpr milliseconds kBetweenTending(200);
constexpr milliseconds kAwait(2000);
constexpr milliseconds kOthersReturn(400);  // so that they have subscribed again when we send

// Threads that start meanwhile take no signal: the program's handlers run on its own threads only. Those of a fault
// in the thread itself are left to them.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&all, fault);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_;
};

// What memory or the system refuses now is done at the next try.
template <class Work>
bool Try(Work&& work) {
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

Link::Link(const EngineSettings& settings, std::string name, std::string inbox, Journal& journal, User& user)
    : settings_(settings), name_(std::move(name)), inbox_(std::move(inbox)), journal_(journal), user_(user) {}

bool Link::Start() {
    if (!started_) {
        const std::lock_guard lock(starting_);
        if (!started_) FirstStart();
    }
    return wasUp_;
}

void Link::FirstStart() {
    const SignalsBlocked blocked;
    hasThreads_ = true;
    loop_ = std::make_shared<EventLoop>([this] { return user_.IsBehind(); });
    // The cryptographic library would clean up while the process ends and this connection still lives.
    if (settings_.secure) OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    Open(true);
    try {
        keeper_ = std::thread([this] { Keep(); });
    } catch (...) {
        up_ = false;
        wasUp_ = false;
        connection_.reset();
        loop_.reset();
        throw;
    }
    started_ = true;
}

bool Link::Open(bool isFirst) {
    std::string why;
    Current fresh = Connection::Open(loop_, settings_, name_, inbox_, {OnClosed, OnFailed, this}, why);
    if (fresh && !(user_.Renew(*fresh, isFirst) && fresh->RoundTrip())) {
        why = "the server did not take the subscriptions";
        fresh.reset();
    }
    if (!fresh) {
        if (why != why_) journal_.Tell("no connection: %s", why.c_str());
        why_ = why;
        return false;
    }
    why_.clear();
    journal_.Tell("connected to %s", fresh->Server().c_str());
    std::unique_lock lock(mutex_);
    if (!isFirst) {
        journal_.Add(Count::Reconnected);
        changed_.wait_for(lock, kOthersReturn, [&] { return ends_ || fresh->IsClosed(); });
    }
    if (ends_) return false;
    connection_ = fresh;
    up_ = true;
    wasUp_ = true;
    lock.unlock();
    user_.OnUp(fresh);
    lock.lock();
    if (fresh->IsClosed()) up_ = false;
    changed_.notify_all();
    return true;
}

void Link::Keep() {
    pthread_setname_np(pthread_self(), "tarvex-keeper");
    std::unique_lock lock(mutex_);
    while (!ends_) {
        if (up_) {
            changed_.wait_for(lock, kBetweenTending, [this] { return ends_ || !up_ || hurry_; });
            hurry_ = false;
            if (ends_ || !up_) continue;
            const Current connection = connection_;
            lock.unlock();
            Try([&] {
                user_.Tend(*connection);
                return true;
            });
            lock.lock();
            continue;
        }
        Current old = std::move(connection_);
        connection_ = nullptr;
        lock.unlock();
        user_.OnDown(old ? old->Get() : nullptr);
        old.reset();
        const bool opened = Try([this] { return Open(!wasUp_); });
        lock.lock();
        if (!opened) changed_.wait_for(lock, kBetweenTries, [this] { return ends_; });
    }
}

Link::Current Link::Await() {
    if (!Start()) return nullptr;
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kAwait, [this] { return up_ || ends_; });
    return up_ ? connection_ : nullptr;
}

void Link::Hurry() {
    {
        const std::lock_guard lock(mutex_);
        hurry_ = true;
    }
    changed_.notify_all();
}

void Link::OnClosed(natsConnection* connection, void* closure) {
    auto* self = static_cast<Link*>(closure);
    {
        const std::lock_guard lock(self->mutex_);
        self->changed_.notify_all();
        if (!self->up_ || !self->connection_ || self->connection_->Get() != connection) return;
        self->up_ = false;
        if (self->ends_) return;
    }
    self->user_.OnDown(connection);
    self->journal_.Tell("connection lost");
}

void Link::OnFailed(natsConnection* connection, natsSubscription*, natsStatus status, void* closure) {
    if (status != NATS_NOT_PERMITTED) return;
    // This thread's own copy, if the client made one: the connection's may be that of the next error by now.
    natsStatus last = NATS_OK;
    const char* text = nats_GetLastError(&last);
    if (last != status) natsConnection_GetLastError(connection, &text);
    Try([&] {
        static_cast<Link*>(closure)->user_.OnDenied(text ? text : "");
        return true;
    });
}

void Link::End() {
    const auto takeConnection = [this] {
        const std::lock_guard lock(mutex_);
        ends_ = true;
        up_ = false;
        return std::exchange(connection_, nullptr);
    };
    // The keeper may be waiting for an answer, or about to have a new one.
    if (const Current connection = takeConnection()) connection->Close();
    changed_.notify_all();
    keeper_.join();
    takeConnection();
    loop_.reset();
}

}  // namespace tarvex
