// What a bus over the network does when its server, its readers or the network fail, done for real. Each
// prints a row of the table in docs/bus.md; BUS_FAULT_SCALE makes the runs longer.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

#include "bus/Probe.h"
#include "server/EngineServer.h"

namespace {

using bus::Probe;
using server::EngineServer;
using std::chrono::milliseconds;

int Scale() {
    const char* const scale = std::getenv("BUS_FAULT_SCALE");
    return scale ? std::max(1, std::atoi(scale)) : 1;
}

void Sleep(int time) { std::this_thread::sleep_for(milliseconds(time)); }

// Live or stored, each on a server of its own.
class Faults : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
        EngineServer::Options options;
        options.stores = IsStored();
        server_ = std::make_unique<EngineServer>(options);
    }

    bool IsStored() const { return GetParam() == "stored"; }

    Probe::Settings Settings(int number) const {
        Probe::Settings settings = {{"TARVEX_URL", server_->Url()},
                                    {"TARVEX_NUMBER", std::to_string(number)},
                                    {"TARVEX_LOG", server_->Directory() + "/journal"}};
        if (IsStored()) settings["TARVEX_STORE"] = "TEST";
        return settings;
    }
    std::unique_ptr<Probe> Reader(int number, int senders = 1, int delay = 0) const {
        auto reader = std::make_unique<Probe>(Probe::Receive("k", senders, delay), Settings(number));
        EXPECT_TRUE(reader->IsReady());
        return reader;
    }
    std::unique_ptr<Probe> Sender(int number, int count, int rate, int size = 100) const {
        auto sender = std::make_unique<Probe>(Probe::Send("k", count, rate, size), Settings(number));
        EXPECT_TRUE(sender->IsReady());
        return sender;
    }
    std::string Journal() const {
        std::ifstream file(server_->Directory() + "/journal");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    // The row of the table, and what holds in any case: nothing behind, nothing twice, nothing silently lost.
    void Judge(const std::string& fault, Probe& sender, Probe& reader) {
        const auto sent = sender.Get("accepted");
        const auto received = reader.Get("received");
        lost_ = sent - received;
        told_ = reader.Get("told");
        std::printf("| %s | %s | %lld | %lld | %lld | %lld | %lld | %lld | %.1f s |\n", fault.c_str(),
                    GetParam().c_str(), static_cast<long long>(sent), static_cast<long long>(received),
                    static_cast<long long>(lost_), static_cast<long long>(reader.Get("behind")),
                    static_cast<long long>(reader.Get("repeated")), static_cast<long long>(told_),
                    static_cast<double>(reader.Get("silence")) / 1000.0);
        EXPECT_GT(received, 0);
        EXPECT_EQ(reader.Get("behind"), 0);
        EXPECT_EQ(reader.Get("repeated"), 0);
        EXPECT_TRUE(lost_ == 0 || (!IsStored() && told_ > 0));
        if (HasFailure()) std::puts(Journal().c_str());
    }

    std::unique_ptr<EngineServer> server_;
    std::int64_t lost_ = 0;
    std::int64_t told_ = 0;
};

TEST_P(Faults, AProgramThatEndsAtOnceHasSentAll) {
    constexpr int kRuns = 5, kEach = 5000;
    const auto reader = Reader(1, kRuns);
    std::int64_t accepted = 0;
    for (int run = 0; run < kRuns; ++run) accepted += Sender(10 + run, kEach, 0)->Get("accepted");
    EXPECT_EQ(accepted, kRuns * kEach);
    EXPECT_EQ(reader->Get("received"), accepted);
    EXPECT_EQ(reader->Get("lost") + reader->Get("behind") + reader->Get("repeated"), 0);
}

TEST_P(Faults, TheServerIsKilledAndReturns) {
    const int kills = 2 * Scale();
    const auto first = Reader(1), second = Reader(2);
    const auto sender = Sender(3, 3000 * kills, 1000);
    for (int kill = 0; kill < kills; ++kill) {
        Sleep(1500);
        server_->Kill();
        Sleep(300);
        server_->Restart();
    }
    Judge("server killed " + std::to_string(kills) + " times, away 0.3 s", *sender, *first);
    EXPECT_LE(lost_, 10 * kills);
    Judge("the same, second reader", *sender, *second);
    EXPECT_LE(lost_, 10 * kills);
}

TEST_P(Faults, TheServerIsKilledUnderFullLoad) {
    const int count = 100000 * Scale();
    const auto reader = Reader(1);
    const auto sender = Sender(2, count, 40000);
    Sleep(1000);
    server_->Kill();
    server_->Restart();
    Judge("server killed once, 40,000 messages a second", *sender, *reader);
    EXPECT_EQ(sender->Get("accepted"), count);
}

TEST_P(Faults, TheServerStandsStill) {
    const auto reader = Reader(1);
    const auto sender = Sender(2, 12000, 1000);
    Sleep(1000);
    server_->Freeze();
    Sleep(2000);
    server_->Thaw();
    Sleep(1000);
    server_->Freeze();  // longer than the bus waits for it
    Sleep(6000);
    server_->Thaw();
    Judge("server frozen for 2 s, then for 6 s", *sender, *reader);
}

TEST_P(Faults, AReaderStandsStill) {
    const auto reader = Reader(1);
    const auto sender = Sender(2, 3000 * Scale(), 300, 100000);  // 30 MB a second
    Sleep(1000);
    kill(reader->Id(), SIGSTOP);
    Sleep(7000);
    kill(reader->Id(), SIGCONT);
    Judge("reader frozen for 7 s at 30 MB/s", *sender, *reader);
}

TEST_P(Faults, AReaderIsSlowerThanItsSender) {
    const auto reader = Reader(1, 1, 200);
    const auto sender = Sender(2, 50000, 0, 10000);
    Judge("reader of some 4,000 a second, sender flat out with 500 MB", *sender, *reader);
    if (!IsStored()) {
        EXPECT_GT(lost_, 0);  // else nothing was tried
        EXPECT_NE(Journal().find("its queue full"), std::string::npos);
    }
}

TEST_P(Faults, TheServerStaysAwayUntilTheOutboxIsFull) {
    const auto reader = Reader(1);
    const auto sender = Sender(2, 1000, 0, 100000);  // 100 MB, of which 64 find room
    server_->Kill();
    Sleep(2000);
    server_->Restart();
    Judge("server away 2 s, sender flat out with 100 MB", *sender, *reader);
}

// A second network beside this machine's own, and a link between them that can be cut without a word to
// either side.
class OtherNetwork {
public:
    // The names are of this process, for tests that run beside it.
    OtherNetwork() {
        isThere_ = Run("ip netns add " + name_) &&
                   Run("ip link add " + name_ + "a type veth peer name " + name_ + "b netns " + name_) &&
                   Run("ip address add " + here_ + "/24 dev " + name_ + "a") && Run("ip link set " + name_ + "a up") &&
                   Run(inside_ + "ip address add " + there_ + "/24 dev " + name_ + "b") &&
                   Run(inside_ + "ip link set " + name_ + "b up");
    }
    ~OtherNetwork() {
        Run("ip netns delete " + name_);
        Run("ip link delete " + name_ + "a");
    }

    bool IsThere() const { return isThere_; }
    const std::string& Here() const { return here_; }
    bool Cut() const { return Turn("add"); }
    bool Mend() const { return Turn("delete"); }
    std::vector<std::string> Inside(std::vector<std::string> command) const {
        const std::vector<std::string> words = {"ip", "netns", "exec", name_};
        command.insert(command.begin(), words.begin(), words.end());
        return command;
    }

private:
    static bool Run(const std::string& command) { return std::system((command + " 2>/dev/null").c_str()) == 0; }
    bool Turn(const std::string& what) const {
        return Run("ip route " + what + " blackhole " + there_ + "/32") &&
               Run(inside_ + "ip route " + what + " blackhole " + here_ + "/32");
    }

    const std::string name_ = "tvx" + std::to_string(getpid());
    const std::string net_ = "10.213." + std::to_string(getpid() % 256);
    const std::string here_ = net_ + ".1", there_ = net_ + ".2";
    const std::string inside_ = "ip netns exec " + name_ + " ";
    bool isThere_ = false;
};

TEST_P(Faults, TheNetworkIsCut) {
    OtherNetwork network;
    if (!network.IsThere()) GTEST_SKIP() << "no network can be made here: that takes root and the ip command";
    EngineServer::Options options;
    options.stores = IsStored();
    options.address = network.Here();
    server_ = std::make_unique<EngineServer>(options);
    const auto start = [&](const std::vector<std::string>& command, int number) {
        auto probe = std::make_unique<Probe>(command, Settings(number));
        EXPECT_TRUE(probe->IsReady());
        return probe;
    };
    const auto readerHere = start(Probe::Receive("there"), 1);
    const auto readerThere = start(network.Inside(Probe::Receive("here")), 2);
    const auto senderHere = start(Probe::Send("here", 7500, 500), 3);
    const auto senderThere = start(network.Inside(Probe::Send("there", 7500, 500)), 4);
    Sleep(2000);
    ASSERT_TRUE(network.Cut());
    Sleep(7000);
    ASSERT_TRUE(network.Mend());
    Judge("network cut 7 s, sender beyond the cut", *senderThere, *readerHere);
    EXPECT_EQ(lost_, 0);
    Judge("network cut 7 s, reader beyond the cut", *senderHere, *readerThere);
}

INSTANTIATE_TEST_SUITE_P(Bus, Faults, testing::Values(std::string("live"), std::string("stored")),
                         [](const auto& way) { return way.param; });

}  // namespace
