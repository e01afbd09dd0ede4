// Other clients of the same server: what they send that is no message of the bus is dropped and counted, and
// spoils nothing; what is one arrives.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bus/OwnProcess.h"
#include "bus/RawClient.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::InOwnProcess;
using bus::RawClient;
using server::EngineServer;

struct Got {
    std::string keys = "nothing";
    std::string body;
};

Got Read(std::uint32_t wait = 5000) {
    char node[1001], task[1001], msgKey[1001], identifier[1001];
    static char body[1310720];
    std::uint32_t number = 0, length = 0;
    for (int tries = 0; tries < 2 && !TvxWait(wait); ++tries) {
    }
    if (!TvxRead(node, sizeof node, task, sizeof task, &number, msgKey, sizeof msgKey, identifier, sizeof identifier,
                 nullptr, body, sizeof body, &length))
        return {};
    return {std::string(node) + "|" + task + "|" + std::to_string(number) + "|" + msgKey + "|" + identifier,
            std::string(body, length)};
}

int Send(const char* key, const std::string& body) {
    return TvxSend(key, "", body.data(), static_cast<std::uint32_t>(body.size()));
}

class Hostile : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        if (!EngineServer::IsInstalled()) GTEST_SKIP() << "nats-server is not installed";
        EngineServer::Options options;
        options.stores = IsStored();
        server_ = std::make_unique<EngineServer>(options);
    }
    bool IsStored() const { return GetParam() == "stored"; }
    void Use() const {
        setenv("TARVEX_URL", server_->Url().c_str(), 1);
        setenv("TARVEX_LOG", (server_->Directory() + "/journal").c_str(), 1);
        setenv("TARVEX_NODE", "good", 1);
        setenv("TARVEX_TASK", "test", 1);
        setenv("TARVEX_NUMBER", "7", 1);
        if (IsStored()) setenv("TARVEX_STORE", "TEST", 1);
    }
    std::int64_t Counted(const std::string& name) const {
        std::ifstream file(server_->Directory() + "/journal");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t at = text.rfind(" " + name + "=");
        return at == std::string::npos ? -1 : std::atoll(text.c_str() + at + name.size() + 2);
    }

    std::unique_ptr<EngineServer> server_;
};

TEST_P(Hostile, FramesAreDroppedAndCountedAndSpoilNothing) {
    const std::string large(1310721, 'x');
    const std::string digest(32, 'A');
    const std::vector<std::string> subjects = {"tvx.m.n",
                                               "tvx.m.n.t.1.k",
                                               "tvx.m.n.t.1.k.i.j",
                                               "tvx.m.n.t.x.k.i",
                                               "tvx.m.n.t.0.k.i",
                                               "tvx.m.n.t.-1.k.i",
                                               "tvx.m.n.t.4294967296.k.i",
                                               "tvx.m.*.t.1.k.i",
                                               "tvx.m.n.t.1.*.i",
                                               "tvx.m.%.t.1.k.i",
                                               "tvx.m.n.%.1.k.i",
                                               "tvx.m.n.t.1.%0.i",
                                               "tvx.m.n.t.1.%00.i",
                                               "tvx.m.n.t.1.%ZZ.i",
                                               "tvx.m.n.t.1.k.%1",
                                               "tvx.m.n.t.1.k." + std::string(1001, 'i'),
                                               "tvx.m." + std::string(1001, 'n') + ".t.1.k.i",
                                               "tvx.m.n.t.1.%~" + digest + ".i"};
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0), 1);
        RawClient raw(server_->Url());
        ASSERT_TRUE(raw.IsConnected());
        std::size_t good = 0;
        const auto goOn = [&] {
            raw.Flush();
            ASSERT_EQ(Send("k", std::to_string(good)), 1);
            const Got got = Read();
            ASSERT_EQ(got.keys, "good|test|7|k|");
            ASSERT_EQ(got.body, std::to_string(good++));
        };
        for (const std::string& subject : subjects) {
            raw.Publish(subject, "body");
            goOn();
        }
        // A header that names another sender than the subject does, whose words the server has checked.
        raw.Publish("tvx.m.n.t.1.%~" + digest + ".i", "body", "", "Tvx-Keys", "n.t.1." + std::string(900, '%') + ".i");
        raw.Publish("tvx.m.n.t.1.%~" + digest + ".i", "body", "", "Tvx-Keys", "good.test.7.k.i");
        raw.Publish("tvx.m.n.t.1.k.i", large);
        goOn();
        // A sender's number that is not its own: only what is marked as sent again can be taken for a repeat.
        for (const char* reply : {"~RUNRUNRUzzzzzzzzzzzz", "~RUNRUNRU1~", "~RUNRUNRU", "~~~~~~~~~~~~", "x"})
            raw.Publish("tvx.m.n.t.1.k.i", "a message", reply);
        raw.Flush();
        for (int i = 0; i < (IsStored() ? 5 : 4); ++i) EXPECT_EQ(Read().keys, "n|t|1|k|i");
        goOn();
        // Random subjects and bodies; what happens to be a message comes before the next good one.
        std::mt19937 random(1);
        for (int i = 0; i < 2000; ++i) {
            std::string subject = "tvx.m";
            for (unsigned word = random() % 8; word > 0; --word) {
                subject += '.';
                for (unsigned letter = random() % 6 + 1; letter > 0; --letter) subject += "%~0189AFxk*"[random() % 11];
            }
            raw.Publish(subject, std::string(random() % 100, 'x'));
        }
        raw.Flush();
        ASSERT_EQ(Send("k", "the end"), 1);
        Got got;
        while ((got = Read()).keys != "nothing" && got.body != "the end") {
        }
        EXPECT_EQ(got.keys, "good|test|7|k|");
    }));
    EXPECT_GE(Counted("foreign"), static_cast<std::int64_t>(subjects.size() + 3));
}

TEST_P(Hostile, QuestionsAndAnswersThatAreNoneSpoilNoFormat) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        struct {
            msgfmt head;
            char rest[4];
        } format{};
        ASSERT_EQ(TvxPublish("k", "i", &format.head, sizeof format), 1);
        RawClient raw(server_->Url());
        raw.Listen("_INBOX.raw");
        const std::string own = "tvx.f.good.test.7.k.i";
        for (const std::string subject : {own, std::string("tvx.a.k.i"), std::string("tvx.a")}) {
            for (const std::string& body :
                 {std::string(), std::string("x"), std::string("..."), std::string(100000, 'x'),
                  std::string("*.*.0.k.%"), std::string(300, '\0')}) {
                raw.Publish(subject, body);
                raw.Publish(subject, body, "_INBOX.raw");
            }
            raw.Publish(subject, "*.*.0.k.i", "_INBOX.raw");
            std::size_t length = 0;
            for (int answers = 0; answers < 6; ++answers) {
                const auto answer = raw.Next();
                ASSERT_TRUE(answer);
                length = static_cast<std::size_t>(natsMsg_GetDataLength(answer.get()));
            }
            EXPECT_EQ(length, sizeof format);
        }
    }));
    // A publisher that answers with what is no record.
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        RawClient raw(server_->Url());
        raw.Listen("tvx.a.bad.i");
        std::thread liar([&] {
            const auto question = raw.Next();
            if (question) raw.Publish(natsMsg_GetReply(question.get()), std::string(70000, 'x'));
            raw.Flush();
        });
        char text[] = "*.*.0.bad.i", buffer[64];
        std::uint32_t needed = 9;
        EXPECT_EQ(TvxQueryFormat(4, text, sizeof text, buffer, sizeof buffer, &needed), 1);
        EXPECT_EQ(needed, 0u);
        liar.join();
    }));
}

TEST_P(Hostile, AStreamThatIsFullRefusesAndLosesNothing) {
    if (!IsStored()) GTEST_SKIP() << "there is no stream";
    ASSERT_TRUE(InOwnProcess([&] {
        RawClient raw(server_->Url());
        jsCtx* store = nullptr;
        ASSERT_EQ(natsConnection_JetStream(&store, raw.Get(), nullptr), NATS_OK);
        const char* subjects[] = {"tvx.m.>"};
        jsStreamConfig config;
        jsStreamConfig_Init(&config);
        config.Name = "TEST";
        config.Subjects = subjects;
        config.SubjectsLen = 1;
        config.MaxMsgs = 100;
        config.Discard = js_DiscardNew;
        ASSERT_EQ(js_AddStream(nullptr, store, &config, nullptr, nullptr), NATS_OK);
        jsCtx_Destroy(store);
    }));
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "k", "*", 0, 0), 1);
        int accepted = 0;
        for (; accepted < 100000 && Send("k", std::to_string(accepted)); ++accepted)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorRefused));
        EXPECT_GE(accepted, 100);
        for (int i = 0; i < 100; ++i) ASSERT_EQ(Read().body, std::to_string(i));
        RawClient other(server_->Url());  // makes room
        jsCtx* otherStore = nullptr;
        natsConnection_JetStream(&otherStore, other.Get(), nullptr);
        js_PurgeStream(otherStore, "TEST", nullptr, nullptr);
        for (int i = 100; i < accepted; ++i) ASSERT_EQ(Read().body, std::to_string(i));
        jsCtx_Destroy(otherStore);
    }));
}

INSTANTIATE_TEST_SUITE_P(Bus, Hostile, testing::Values(std::string("live"), std::string("stored")),
                         [](const auto& way) { return way.param; });

}  // namespace
