// Several servers: a list of them, a cluster of two, and a vessel that is joined to the shore by a leaf node.
// The configurations are those of docs/bus.md.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "bus/OwnProcess.h"
#include "bus/Probe.h"
#include "bus/RawClient.h"
#include "server/EngineServer.h"

namespace {

using bus::InOwnProcess;
using bus::Probe;
using bus::RawClient;
using server::EngineServer;

void Sleep(int time) { std::this_thread::sleep_for(std::chrono::milliseconds(time)); }

// A port of the loopback that nobody has now.
std::string FreePort() {
    const int taken = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), size), 0);
    getsockname(taken, reinterpret_cast<sockaddr*>(&address), &size);
    close(taken);
    return std::to_string(ntohs(address.sin_port));
}

EngineServer::Options With(const std::string& configuration, bool stores = false) {
    EngineServer::Options options;
    options.configuration = configuration;
    options.stores = stores;
    return options;
}

std::unique_ptr<Probe> Start(const std::vector<std::string>& command, const std::string& url, const char* number,
                             const std::string& stream = "") {
    auto probe = std::make_unique<Probe>(
        command, Probe::Settings{{"TARVEX_URL", url}, {"TARVEX_NUMBER", number}, {"TARVEX_STORE", stream}});
    EXPECT_TRUE(probe->IsReady());
    return probe;
}

void Tell(const char* what, const char* way, Probe& sender, Probe& reader) {
    const auto get = [&reader](const char* name) { return static_cast<long long>(reader.Get(name)); };
    const auto sent = static_cast<long long>(sender.Get("accepted"));
    std::printf("| %s | %s | %lld | %lld | %lld | %lld | %lld | %lld | %.1f s |\n", what, way, sent, get("received"),
                sent - get("received"), get("behind"), get("repeated"), get("told"),
                static_cast<double>(get("silence")) / 1000.0);
    EXPECT_GT(get("received"), 0);
    EXPECT_EQ(get("behind") + get("repeated"), 0);
}

class Topology : public testing::Test {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
    }
};

TEST_F(Topology, AClusterOfTwoOutlivesOneOfThem) {
    const std::string first = FreePort(), second = FreePort();
    const EngineServer one(With("cluster { name: survey, listen: \"127.0.0.1:" + first + "\" }\n"));
    EngineServer two(With("cluster { name: survey, listen: \"127.0.0.1:" + second +
                          "\", routes: [\"nats-route://127.0.0.1:" + first + "\"] }\n"));
    Sleep(500);  // the two find each other
    const auto stays = Start(Probe::Receive("k"), one.Url(), "1");
    const auto moves = Start(Probe::Receive("k"), two.Url() + "," + one.Url(), "2");
    const auto sender = Start(Probe::Send("k", 4000, 1000), two.Url() + "," + one.Url(), "3");
    Sleep(1500);
    two.Kill();
    Tell("one server of a cluster killed; reader on the other", "live", *sender, *stays);
    Tell("the same; reader of both", "live", *sender, *moves);
    EXPECT_LE(stays->Get("lost"), 10);
    EXPECT_TRUE(moves->Get("lost") == 0 || moves->Get("told") > 0);
}

TEST_F(Topology, AVesselReachesTheShoreThroughALeafNode) {
    const std::string port = FreePort();
    EngineServer shore(With("jetstream { domain: shore }\nleafnodes { listen: \"127.0.0.1:" + port + "\" }\n", true));
    const EngineServer vessel(
        With("jetstream { domain: vessel }\nleafnodes { remotes: [ { url: \"nats-leaf://127.0.0.1:" + port +
                 "\" } ], reconnect: 1 }\n",
             true));
    // The shore's stream copies the vessel's, and goes on where it was when the link is back.
    EXPECT_TRUE(InOwnProcess([&] {
        RawClient client(shore.Url());
        jsCtx* store = nullptr;
        ASSERT_EQ(natsConnection_JetStream(&store, client.Get(), nullptr), NATS_OK);
        jsExternalStream place;
        jsExternalStream_Init(&place);
        place.APIPrefix = "$JS.vessel.API";
        place.DeliverPrefix = "";
        jsStreamSource source;
        jsStreamSource_Init(&source);
        source.Name = "VESSEL";
        source.External = &place;
        jsStreamSource* sources[] = {&source};
        jsStreamConfig config;
        jsStreamConfig_Init(&config);
        config.Name = "SHORE";
        config.Sources = sources;
        config.SourcesLen = 1;
        EXPECT_EQ(js_AddStream(nullptr, store, &config, nullptr, nullptr), NATS_OK);
        jsCtx_Destroy(store);
    }));
    {
        const auto arrives = Start(Probe::Receive("first"), shore.Url(), "4", "SHORE");
        const auto sender = Start(Probe::Send("first", 1, 0), vessel.Url(), "5", "VESSEL");
        ASSERT_EQ(arrives->Get("received"), 1);  // the copying has begun
    }
    const auto aboard = Start(Probe::Receive("k"), vessel.Url(), "1", "VESSEL");
    const auto ashore = Start(Probe::Receive("k"), shore.Url(), "2", "SHORE");
    const auto sender = Start(Probe::Send("k", 4000, 1000), vessel.Url(), "3", "VESSEL");
    Sleep(1000);
    shore.Kill();
    Sleep(1500);
    shore.Restart();
    Tell("the shore's server killed, away 1.5 s; reader aboard", "stored", *sender, *aboard);
    Tell("the same; reader ashore", "stored", *sender, *ashore);
    EXPECT_EQ(aboard->Get("received"), 4000);
    EXPECT_EQ(ashore->Get("received"), 4000);
}

}  // namespace
