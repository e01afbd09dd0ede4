// The bus over the network in programs that do what programs do: start before the server, fork, take signals,
// run out of descriptors, end.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bus/Calls.h"
#include "bus/OwnProcess.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::FailedWith;
using bus::InOwnProcess;
using bus::Read;
using bus::Send;
using bus::Subscribe;
using server::EngineServer;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define USES_ADDRESS_SANITIZER
#endif
#endif
#if defined(USES_ADDRESS_SANITIZER) || defined(__SANITIZE_ADDRESS__)
constexpr bool kUsesAddressSanitizer = true;
#else
constexpr bool kUsesAddressSanitizer = false;
#endif

bool isForkedChild = false;

class Program : public testing::Test {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
    }
    static void Use(const std::string& url) { setenv("TARVEX_URL", url.c_str(), 1); }
};

TEST_F(Program, AnUnusableSettingFailsEveryCall) {
    const std::pair<const char*, const char*> settings[] = {
        {"TARVEX_URL", "tcp://127.0.0.1:1"}, {"TARVEX_URL", "nats://"},      {"TARVEX_URL", "nats://a,,b"},
        {"TARVEX_URL", "nats://a,http://b"}, {"TARVEX_DOMAIN", "two.words"}, {"TARVEX_STORE", "a*"},
        {"TARVEX_CERT", "without-a-key"},    {"TARVEX_NUMBER", "0"}};
    for (const auto& setting : settings)
        EXPECT_TRUE(InOwnProcess([&] {
            Use("nats://127.0.0.1:1");
            setenv(setting.first, setting.second, 1);
            EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorInvalid));
            EXPECT_TRUE(FailedWith(TvxWait(0), TvxErrorInvalid));
        })) << setting.first
            << "=" << setting.second;
}

TEST_F(Program, WithoutAServerCallsFailAtOnceUntilThereIsOne) {
    int port;
    {
        const EngineServer server;  // takes a free port and leaves it
        port = server.Port();
    }
    EXPECT_TRUE(InOwnProcess([port] {
        Use("nats://127.0.0.1:" + std::to_string(port));
        EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected));
        EXPECT_TRUE(FailedWith(Subscribe("k"), TvxErrorNotConnected));
        EXPECT_TRUE(FailedWith(TvxPublish("k", "", nullptr, 0), TvxErrorNotConnected));
        EngineServer::Options options;
        options.port = port;
        const EngineServer server(options);
        for (int i = 0; i < 500 && !Subscribe("k"); ++i) std::this_thread::sleep_for(milliseconds(10));
        EXPECT_EQ(Send("k", "x"), 1);
        EXPECT_EQ(Read(), "x");
    }));
}

TEST_F(Program, AServerThatSaysNothingHoldsNobodyUp) {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 10), 0);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    EXPECT_TRUE(InOwnProcess([&] {
        Use("nats://127.0.0.1:" + std::to_string(ntohs(address.sin_port)));
        const auto begin = Clock::now();
        EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected));
        for (int i = 0; i < 1000; ++i) EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected));
        EXPECT_LT(Clock::now() - begin, std::chrono::seconds(20));  // not one wait for each call
    }));
    close(listener);
}

TEST_F(Program, AForkedChildHasNoBusAndItsParentKeepsIts) {
    const EngineServer server;
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        ASSERT_EQ(Subscribe("k"), 1);
        std::atomic<bool> ends = false;
        std::thread busy([&] {
            while (!ends) Send("other", "x");
        });
        for (int round = 0; round < 20; ++round) {
            EXPECT_TRUE(InOwnProcess([] {
                isForkedChild = true;
                EXPECT_TRUE(FailedWith(Send("k", "child"), TvxErrorNotConnected));
                EXPECT_TRUE(FailedWith(TvxWait(0), TvxErrorNotConnected));
                EXPECT_TRUE(FailedWith(TvxUnsubscribe("*", "*", 0, "k", "*"), TvxErrorNotConnected));
            }));
            EXPECT_EQ(Send("k", std::to_string(round)), 1);
            EXPECT_EQ(Read(), std::to_string(round));
        }
        ends = true;
        busy.join();
    }));
    EXPECT_TRUE(InOwnProcess([] {
        ASSERT_EQ(Subscribe("k"), 1);
        ASSERT_EQ(Send("k", "parent"), 1);
        EXPECT_TRUE(InOwnProcess([] {
            EXPECT_EQ(TvxWait(0), 0);  // the bus inside a process starts anew
            ASSERT_EQ(Subscribe("k"), 1);
            EXPECT_EQ(Send("k", "child"), 1);
            EXPECT_EQ(Read(), "child");
        }));
        EXPECT_EQ(Read(), "parent");
    }));
}

std::atomic<int> signalsHere = 0;
std::atomic<int> signalsElsewhere = 0;
pthread_t programsThread;

TEST_F(Program, WhatTheLastObjectsSendArrives) {
    EngineServer::Options options;
    options.stores = true;
    const EngineServer server(options);
    const auto use = [&] {
        Use(server.Url());
        setenv("TARVEX_STORE", "TEST", 1);
    };
    EXPECT_TRUE(InOwnProcess([&] {
        use();
        // Its thread's variables are gone when it runs.
        std::atexit([] { Send("the key of a pair that was sent to before", "last"); });
        ASSERT_EQ(Send("the key of a pair that was sent to before", "first"), 1);
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0xFFFF), 1);
        EXPECT_EQ(Read(), "first");
        EXPECT_EQ(Read(), "last");
    }));
}

TEST_F(Program, SignalsReachItsOwnThreadsOnly) {
    const EngineServer server;
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        programsThread = pthread_self();
        struct sigaction action {};
        action.sa_handler = [](int) {
            ++(pthread_equal(pthread_self(), programsThread) ? signalsHere : signalsElsewhere);
        };
        sigaction(SIGALRM, &action, nullptr);
        const itimerval often{{0, 200}, {0, 200}};
        setitimer(ITIMER_REAL, &often, nullptr);
        ASSERT_EQ(Subscribe("k"), 1);
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(Send("k", std::to_string(i)), 1);
            ASSERT_EQ(Read(), std::to_string(i));
        }
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        EXPECT_GT(signalsHere, 0);
        EXPECT_EQ(signalsElsewhere, 0);
    }));
}

TEST_F(Program, WithoutDescriptorsCallsFailAndWorkLater) {
    if (kUsesAddressSanitizer) GTEST_SKIP() << "the sanitizer needs descriptors of its own";
    const EngineServer server;
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        const rlimit few{64, 64};
        setrlimit(RLIMIT_NOFILE, &few);
        std::vector<int> taken;
        for (int descriptor; (descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) taken.push_back(descriptor);
        EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected));
        for (const int descriptor : taken) close(descriptor);
        for (int i = 0; i < 500 && !Subscribe("k"); ++i) std::this_thread::sleep_for(milliseconds(10));
        EXPECT_EQ(Send("k", "x"), 1);
        EXPECT_EQ(Read(), "x");
    }));
}

TEST_F(Program, ItEndsInTimeWhateverTheServerDoes) {
    for (const bool stores : {false, true})
        for (const bool isThere : {true, false}) {
            EngineServer::Options options;
            options.stores = stores;
            EngineServer server(options);
            EXPECT_TRUE(InOwnProcess([&] {
                alarm(20);
                Use(server.Url());
                if (stores) setenv("TARVEX_STORE", "TEST", 1);
                ASSERT_EQ(Subscribe("k"), 1);
                ASSERT_EQ(Send("k", "x"), 1);
                if (isThere)
                    server.Freeze();
                else
                    server.Kill();
                for (int i = 0; i < 10; ++i) EXPECT_EQ(Send("k", "x"), 1);
            })) << stores
                << isThere;
            server.Kill();
        }
}

TEST_F(Program, WhatAServerTakesNoMessageOfIsRefusedAlsoWhileItIsAway) {
    EngineServer::Options options;
    options.configuration = "max_payload: 1MB\n";
    EngineServer server(options);
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        const std::string large(1200000, 'x');
        ASSERT_EQ(Subscribe("k"), 1);
        EXPECT_TRUE(FailedWith(Send("k", large), TvxErrorTooLong));
        server.Kill();
        EXPECT_TRUE(FailedWith(Send("k", large), TvxErrorTooLong));
        EXPECT_EQ(Send("k", "x"), 1);
        server.Restart();
        TvxWait(5000);  // tells that something may be missing
        EXPECT_EQ(Read(), "x");
    }));
}

TEST_F(Program, AStreamGivesTheHistoryThatIsAskedFor) {
    EngineServer::Options options;
    options.stores = true;
    EngineServer server(options);
    EXPECT_TRUE(InOwnProcess([&] {  // makes the stream, and leaves a history
        Use(server.Url());
        setenv("TARVEX_STORE", "TEST", 1);
        for (int i = 0; i < 100; ++i) ASSERT_EQ(Send("k", std::to_string(i)), 1);
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        setenv("TARVEX_STORE", "TEST", 1);
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "k", "*", 0, 0xFFFF), 1);
        ASSERT_EQ(Send("k", "100"), 1);
        for (int i = 0; i <= 100; ++i) ASSERT_EQ(Read(), std::to_string(i));
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "other", "*", 0, 0), 1);
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "", 0, 60), 1);  // the last minute: all of them once more
        for (int i = 0; i <= 100; ++i) ASSERT_EQ(Read(), std::to_string(i));
        ASSERT_EQ(Send("other", "x"), 1);
        EXPECT_EQ(Read(), "x");
        EXPECT_EQ(TvxWait(100), 0);
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use(server.Url());
        setenv("TARVEX_STORE", "OTHER", 1);  // its subjects are taken by the first stream
        EXPECT_TRUE(FailedWith(Send("k", "x"), TvxErrorNotConnected));
    }));
}

}  // namespace

// What the threads that a fork leaves behind had is lost in the child, and no fault.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer asks under this name.
extern "C" int __lsan_is_turned_off() { return isForkedChild; }
