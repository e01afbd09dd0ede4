#include "bus/Roles.h"

#include <surveymsg/outside/Tarvex.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "bus/Channel.h"

namespace busbench {
namespace {

struct Head {
    std::uint64_t number;  // from 1
    std::int64_t sent;     // nanoseconds
};

// The same clock in every process of the machine.
std::int64_t Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

void AwaitTime(std::int64_t when) {
    const timespec time{when / 1000000000, when % 1000000000};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

constexpr const char* kKey = "PRX~Position";
constexpr const char* kIdentifier = "POS/Vessel 1";

// What a program would do without a bus.
class PlainQueue {
public:
    void Send(const char* body, std::size_t size) {
        {
            const std::lock_guard lock(mutex_);
            bodies_.emplace_back(body, size);
        }
        arrived_.notify_one();
    }
    std::size_t Receive(char* body) {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [this] { return !bodies_.empty(); });
        const std::size_t size = bodies_.front().copy(body, bodies_.front().size());
        bodies_.pop_front();
        return size;
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::string> bodies_;
};

class InnerBus {
public:
    InnerBus() {
        if (!TvxSubscribe("*", "*", 0, kKey, kIdentifier, 0, 0)) throw std::runtime_error("subscribe");
    }
    void Send(const char* body, std::size_t size) {
        TvxSend(kKey, kIdentifier, body, static_cast<std::uint32_t>(size));
    }
    std::size_t Receive(char* body) {
        char node[256], task[256], key[256], identifier[256];
        std::uint32_t number = 0, size = 0;
        TvxWait(0xFFFFFFFF);
        TvxRead(node, sizeof node, task, sizeof task, &number, key, sizeof key, identifier, sizeof identifier, nullptr,
                body, 1310720, &size);
        return size;
    }
};

}  // namespace

// Told apart by name for a tool that counts instructions.
template <class Work>
__attribute__((noinline)) void MeasuredLoop(std::size_t count, Work&& work) {
    for (std::size_t i = 0; i < count; ++i) work();
}

namespace {

template <class Queue>
int RunInside(std::size_t size, std::size_t batch) {
    Queue queue;
    const std::vector<char> body(size, 'x');
    std::vector<char> buffer(1310720);
    const auto once = [&] {
        for (std::size_t i = 0; i < batch; ++i) queue.Send(body.data(), body.size());
        for (std::size_t i = 0; i < batch; ++i)
            if (queue.Receive(buffer.data()) != size) std::abort();
    };
    const std::size_t rounds = 200000 / batch;
    for (std::size_t i = 0; i < rounds / 10; ++i) once();
    const std::int64_t begin = Now();
    MeasuredLoop(rounds, once);
    std::printf("time=%.1f\n", static_cast<double>(Now() - begin) / static_cast<double>(rounds * batch));
    return EXIT_SUCCESS;
}

}  // namespace

std::unique_ptr<Channel> MakeChannel(const std::string& name) {
    if (name == "bus") return MakeBusChannel();
    if (name == "loop") return MakeRawChannel(true);
    if (name == "default") return MakeRawChannel(false);
    if (name == "js") return MakeStoreChannel();
    throw std::runtime_error("no channel " + name);
}

int Publish(const std::string& name, std::size_t size, std::size_t count, double rate) {
    const auto channel = MakeChannel(name);
    std::vector<char> body(std::max(size, sizeof(Head)), 'x');
    const std::int64_t begin = Now();
    for (std::size_t i = 0; i < count; ++i) {
        if (rate > 0) AwaitTime(begin + static_cast<std::int64_t>(static_cast<double>(i) * 1e9 / rate));
        const Head head{i + 1, Now()};
        std::memcpy(body.data(), &head, sizeof head);
        channel->Publish(body.data(), body.size());
    }
    channel->Finish();
    return EXIT_SUCCESS;
}

int Subscribe(const std::string& name, std::size_t count) {
    const auto channel = MakeChannel(name);
    channel->Subscribe();
    std::puts("ready");
    std::fflush(stdout);
    std::vector<float> delays;
    delays.reserve(count);
    std::int64_t first = 0, last = 0;
    channel->Receive([&](const char* body, std::size_t) {
        Head head;
        std::memcpy(&head, body, sizeof head);
        last = Now();
        if (delays.empty()) first = last;
        delays.push_back(static_cast<float>(last - head.sent) / 1000.0f);
        return head.number < count;
    });
    std::sort(delays.begin(), delays.end());
    const auto at = [&](double part) {
        return delays[static_cast<std::size_t>(part * static_cast<double>(delays.size() - 1))];
    };
    std::printf(
        "rate=%.0f lost=%zu p50=%.1f p99=%.1f\n",
        static_cast<double>(delays.size() - 1) * 1e9 / static_cast<double>(std::max<std::int64_t>(1, last - first)),
        count - delays.size(), static_cast<double>(at(0.5)), static_cast<double>(at(0.99)));
    return EXIT_SUCCESS;
}

int CountSends(const std::string& name, std::size_t size) {
    constexpr std::size_t kSends = 64;
    const auto channel = MakeChannel(name);
    const std::vector<char> body(size, 'x');
    for (std::size_t i = 0; i < 16 * kSends; ++i) channel->Publish(body.data(), size);
    std::this_thread::sleep_for(std::chrono::seconds(2));  // all is written, and every queue as large as it gets
    MeasuredLoop(kSends, [&] { channel->Publish(body.data(), size); });
    std::printf("sends=%zu\n", kSends);
    return EXIT_SUCCESS;
}

int RunInside(const std::string& name, std::size_t size, std::size_t batch) {
    return name == "queue" ? RunInside<PlainQueue>(size, batch) : RunInside<InnerBus>(size, batch);
}

}  // namespace busbench
