// Formats between processes: they live with their publishers.

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "bus/OwnProcess.h"
#include "bus/Probe.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::InOwnProcess;
using bus::Probe;
using server::EngineServer;

// What a query says: the last letter of the format, "none", or why it failed.
std::string Ask(const char* pattern) {
    char text[100], buffer[100];
    std::uint32_t needed = 0;
    std::snprintf(text, sizeof text, "%s", pattern);
    if (TvxQueryFormat(4, text, sizeof text, buffer, sizeof buffer, &needed))
        return needed == 0 ? "none" : std::string(1, buffer[needed - 1]);
    return GetLastError() == TvxErrorTimeout ? "timeout" : "failed";
}

// Asks again for some seconds, while servers and publishers come and go.
std::string AskUntil(const char* pattern, const std::string& wanted) {
    std::string said;
    for (int i = 0; i < 100 && (said = Ask(pattern)) != wanted; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return said;
}

class Offers : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
        EngineServer::Options options;
        options.stores = true;
        server_ = std::make_unique<EngineServer>(options);
    }
    // A program n.t.NUMBER with a format of k/i that ends in this letter.
    std::unique_ptr<Probe> Offer(const std::string& number, const std::string& letter) const {
        auto probe = std::make_unique<Probe>(std::vector<std::string>{BUS_PROBE, "offer", "k", letter},
                                             Probe::Settings{{"TARVEX_URL", server_->Url()},
                                                             {"TARVEX_STORE", Store()},
                                                             {"TARVEX_NODE", "n"},
                                                             {"TARVEX_TASK", "t"},
                                                             {"TARVEX_NUMBER", number}});
        EXPECT_TRUE(probe->IsReady());
        return probe;
    }
    std::string Store() const { return GetParam() == "stored" ? "TEST" : ""; }

    std::unique_ptr<EngineServer> server_;
};

TEST_P(Offers, LiveAndEndWithTheirPublishers) {
    const auto first = Offer("1", "A");
    auto second = Offer("2", "B");
    EXPECT_TRUE(InOwnProcess([&] {
        setenv("TARVEX_URL", server_->Url().c_str(), 1);
        setenv("TARVEX_STORE", Store().c_str(), 1);
        EXPECT_EQ(Ask("n.t.1.k.i"), "A");
        EXPECT_EQ(Ask("n.t.2.k.i"), "B");
        EXPECT_NE(std::string("AB").find(Ask("*.*.0.k.i")), std::string::npos);
        EXPECT_NE(std::string("AB").find(Ask("*.*.0.*.i")), std::string::npos);
        EXPECT_EQ(Ask("*.*.2.k.i"), "B");  // the other one says that it is not meant
        EXPECT_EQ(Ask("n.t.3.k.i"), "none");
        EXPECT_EQ(Ask("*.*.0.k.other"), "none");

        kill(first->Id(), SIGSTOP);
        EXPECT_EQ(AskUntil("n.t.1.k.i", "timeout"), "timeout");
        EXPECT_EQ(Ask("n.t.2.k.i"), "B");
        EXPECT_EQ(Ask("*.*.0.k.i"), "B");
        kill(first->Id(), SIGCONT);
        EXPECT_EQ(AskUntil("n.t.1.k.i", "A"), "A");

        server_->Kill();
        server_->Restart();
        EXPECT_EQ(AskUntil("n.t.1.k.i", "A"), "A");
        EXPECT_EQ(AskUntil("n.t.2.k.i", "B"), "B");

        kill(first->Id(), SIGKILL);
        EXPECT_EQ(AskUntil("n.t.1.k.i", "none"), "none");
        EXPECT_EQ(Ask("*.*.0.k.i"), "B");
    }));
}

INSTANTIATE_TEST_SUITE_P(Bus, Offers, testing::Values(std::string("live"), std::string("stored")),
                         [](const auto& way) { return way.param; });

}  // namespace
