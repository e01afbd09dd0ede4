// The bus over the network in a program whose memory ends in every thread, and whose clock is set back: calls fail
// for a documented reason, nothing ends the program, and what comes afterwards is as if nothing had been.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "bus/OwnProcess.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

std::atomic<unsigned> refuseOneOf = 0;  // 0: none
std::atomic<unsigned> allocations = 0;
std::atomic<time_t> clockIsAhead = 0;  // seconds

void* Allocate(std::size_t size) {
    const unsigned each = refuseOneOf;
    if (each != 0 && ++allocations % each == 0) return nullptr;
    return std::malloc(size ? size : 1);
}

}  // namespace

#define VISIBLE __attribute__((visibility("default"), noinline))

VISIBLE void* operator new(std::size_t size) {
    if (void* const block = Allocate(size)) return block;
    throw std::bad_alloc();
}
VISIBLE void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
VISIBLE void* operator new[](std::size_t size) { return operator new(size); }
VISIBLE void operator delete(void* block) noexcept { std::free(block); }
VISIBLE void operator delete(void* block, std::size_t) noexcept { std::free(block); }
VISIBLE void operator delete[](void* block) noexcept { std::free(block); }
VISIBLE void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

// In front of the system's, for the engine's client as well.
extern "C" VISIBLE int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const int result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    if (clock == CLOCK_REALTIME) time->tv_sec += clockIsAhead;
    return result;
}

namespace {

using bus::InOwnProcess;
using server::EngineServer;
using std::chrono::milliseconds;

class System : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
    }
    std::unique_ptr<EngineServer> Serve() const {
        EngineServer::Options options;
        options.stores = true;
        auto server = std::make_unique<EngineServer>(options);
        setenv("TARVEX_URL", server->Url().c_str(), 1);
        setenv("TARVEX_STORE", std::string(GetParam()) == "stored" ? "TEST" : "", 1);
        return server;
    }
};

int Send(const char* key, const char* body, std::size_t length) {
    return TvxSend(key, "", body, static_cast<std::uint32_t>(length));
}

struct Got {
    int result = 0;
    char body[64];
    std::uint32_t length = 0;

    bool Is(const std::string& text) const { return result && std::string(body, length) == text; }
};

Got Read(std::uint32_t wait) {
    char node[1001], task[1001], key[1001], identifier[1001];
    std::uint32_t number = 0;
    Got got;
    got.result = TvxWait(wait) && TvxRead(node, 1001, task, 1001, &number, key, 1001, identifier, 1001, nullptr,
                                          got.body, sizeof got.body, &got.length);
    return got;
}

int Subscribe(const char* key) { return TvxSubscribe("*", "*", 0, key, "*", 0, 0); }

// Everything goes again, a message at a time and many at once.
void ExpectGoodTraffic() {
    for (int tries = 0; tries < 500 && !Subscribe("good"); ++tries) std::this_thread::sleep_for(milliseconds(10));
    ASSERT_EQ(Subscribe("good"), 1);
    // What was on its way may come first.
    bool isMarkRead = false;
    for (int tries = 0; tries < 50 && !isMarkRead; ++tries) {
        Send("good", "mark", 4);
        for (Got got = Read(200); got.result || GetLastError() == TvxErrorLost; got = Read(200))
            isMarkRead = isMarkRead || got.Is("mark");
    }
    for (int i = 0; i < 1000; ++i) {
        const std::string body = std::to_string(i);
        ASSERT_EQ(Send("good", body.data(), body.size()), 1);
    }
    for (int i = 0; i < 1000; ++i) {
        const Got got = Read(5000);
        ASSERT_TRUE(got.Is(std::to_string(i))) << i << " " << got.result << " " << GetLastError();
    }
}

TEST_P(System, MemoryThatEndsInAnyThreadCostsNoMoreThanTheCall) {
    EXPECT_TRUE(InOwnProcess([this] {
        const auto server = Serve();
        ASSERT_EQ(Subscribe("k"), 1);
        const std::set<std::uint32_t> documented = {TvxErrorNoMemory,     TvxErrorTimeout, TvxErrorNothing,
                                                    TvxErrorNotConnected, TvxErrorLost,    TvxErrorRefused};
        struct {
            msgfmt head;
            char rest[4];
        } format{};
        char record[64];
        std::uint32_t needed = 0;
        std::vector<std::uint32_t> others;
        others.reserve(10000);
        for (const unsigned each : {100u, 37u, 10u, 5u, 3u, 2u, 1u}) {
            const auto look = [&](int result) {
                if (!result && !documented.contains(GetLastError()) && others.size() < others.capacity())
                    others.push_back(GetLastError());
            };
            for (int round = 0; round < 40; ++round) {
                char key[] = "pair 00";
                key[5] = static_cast<char>('0' + round / 10);
                key[6] = static_cast<char>('0' + round % 10);
                static char large[100000];
                refuseOneOf = each;
                look(Send("k", "x", 1));
                look(Send(key, large, sizeof large));
                look(TvxSubscribe("*", "*", 0, key, "*", 0, 0));
                look(Send(key, "x", 1));
                look(TvxPublish(key, "", &format.head, sizeof format));
                look(TvxQueryFormat(4, "*.*.0.k.i", 10, record, sizeof record, &needed));
                look(Read(1).result);
                look(TvxUnpublish(key, ""));
                look(TvxUnsubscribe("*", "*", 0, key, "*"));
                refuseOneOf = 0;
            }
        }
        EXPECT_EQ(others, std::vector<std::uint32_t>());
        ExpectGoodTraffic();
    }));
}

TEST_P(System, AClockThatIsSetBackHoldsNothingUp) {
    EXPECT_TRUE(InOwnProcess([this] {
        const auto server = Serve();
        ASSERT_EQ(Subscribe("good"), 1);
        // Who waits until a time by this clock waits an hour longer, as if it were set back in every wait.
        clockIsAhead = 3600;
        ExpectGoodTraffic();
        server->Kill();
        EXPECT_EQ(Read(100).result, 0);
        server->Restart();
        ExpectGoodTraffic();
    }));
}

INSTANTIATE_TEST_SUITE_P(Bus, System, testing::Values("live", "stored"),
                         [](const auto& way) { return std::string(way.param); });

}  // namespace
