// Other clients of the same server: what they send that is no message of the bus is dropped and counted, and
// spoils nothing; what is one arrives.

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bus/Calls.h"
#include "bus/OwnProcess.h"
#include "bus/RawClient.h"
#include "server/EngineServer.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::InOwnProcess;
using bus::RawClient;
using bus::Send;
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

class HostileToAStream : public Hostile {};

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
    }));
    // The first three have not the words of a message: no reader asks for them. Three more were none.
    EXPECT_EQ(Counted("foreign"), static_cast<std::int64_t>(subjects.size()));
}

TEST_P(Hostile, RandomFramesSpoilNothing) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0), 1);
        RawClient raw(server_->Url());
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
}

// Who knows another sender's last number cannot make its next message look like a repeat.
TEST_P(Hostile, NumbersAndIdsOfOthersLoseNoMessage) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0), 1);
        RawClient raw(server_->Url());
        raw.Listen("tvx.m.good.>");
        const std::string header = "Nats-Msg-Id";
        for (int i = 0; i < 20; ++i) {
            ASSERT_EQ(Send("k", std::to_string(i)), 1);
            ASSERT_EQ(Read().body, std::to_string(i));
            const auto seen = raw.Next();
            ASSERT_TRUE(seen);
            const char* id = nullptr;
            if (IsStored()) natsMsgHeader_Get(seen.get(), header.c_str(), &id);
            const std::string number = IsStored() ? id : natsMsg_GetReply(seen.get());
            constexpr std::size_t kRun = 9;  // and its mark
            const std::string digits = number.substr(kRun, number.find('-') - kRun);
            const std::string rest = number.substr(kRun + digits.size());
            const unsigned long last = std::stoul(digits, nullptr, 36);
            for (unsigned long next = last + 3; next > last; --next) {
                char text[16];
                *std::to_chars(text, text + sizeof text, next, 36).ptr = '\0';
                const std::string forged = number.substr(0, kRun) + text;
                if (IsStored())
                    raw.Publish("tvx.m.evil.t.1.other.i", "", "", header, forged + rest);
                else
                    raw.Publish("tvx.m.evil.t.1.other.i", "", forged + (i % 2 ? "~" : ""));
            }
            raw.Flush();
            for (Got forged; (forged = Read(50)).keys != "nothing";) ASSERT_EQ(forged.keys, "evil|t|1|other|i");
        }
    }));
}

// What is sent to the places where the stream delivers and acknowledges is believed to be neither.
TEST_P(HostileToAStream, FramesToAnInboxMoveNoPlace) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0), 1);
        RawClient raw(server_->Url());
        raw.Listen("_INBOX.good.d.>");
        std::shared_ptr<natsMsg> heartbeat;
        for (int i = 0; i < 5 && !heartbeat; ++i) heartbeat = raw.Next();
        ASSERT_TRUE(heartbeat);
        const std::string inbox = natsMsg_GetSubject(heartbeat.get());
        for (std::uint64_t next = 1; next < 10; ++next) {
            const std::string places = std::to_string(next) + "." + std::to_string(next) + ".0.0";
            raw.Publish(inbox, "", "$JS.ACK.TEST.c.1." + places);
            raw.Publish(inbox, "body", "$JS.ACK.TEST.c.1." + places);
            raw.Publish(inbox, "", "$JS.ACK.TEST.c.1.9000000000." + std::to_string(next) + ".0.0");
            raw.Publish(inbox, "", "tvx.m.good.test.7.k.answered", "Status", "100");
            raw.Flush();
            ASSERT_EQ(Send("k", std::to_string(next)), 1);
            const Got got = Read();
            EXPECT_EQ(got.keys, "good|test|7|k|");
            EXPECT_EQ(got.body, std::to_string(next));
        }
        EXPECT_EQ(TvxWait(100), 0);
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorNothing));
    }));
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
            // An answer to a subject of messages would be one, in the publisher's name.
            ASSERT_EQ(TvxSubscribe("*", "*", 0, "*", "*", 0, 0), 1);
            raw.Publish(subject, "*.*.0.k.i", "tvx.m.good.test.7.k.i");
            raw.Publish(subject, "*.*.0.k.i", "_INBOX.raw");
            ASSERT_TRUE(raw.Next());
            ASSERT_EQ(Send("k", "the first"), 1);
            EXPECT_EQ(Read().body, "the first");
            TvxUnsubscribe("*", "*", 0, "*", "*");
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

// A stream with limits of its own, as a server's owner makes it.
class Stream {
public:
    explicit Stream(const std::string& url) : raw_(url) { natsConnection_JetStream(&store_, raw_.Get(), nullptr); }
    ~Stream() { jsCtx_Destroy(store_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    bool Make(std::int64_t mostMessages = -1, std::int32_t longest = -1) {
        const char* subjects[] = {"tvx.m.>"};
        jsStreamConfig config;
        jsStreamConfig_Init(&config);
        config.Name = "TEST";
        config.Subjects = subjects;
        config.SubjectsLen = 1;
        config.MaxMsgs = mostMessages;
        config.MaxMsgSize = longest;
        config.Discard = js_DiscardNew;
        return js_AddStream(nullptr, store_, &config, nullptr, nullptr) == NATS_OK;
    }
    bool Delete() { return js_DeleteStream(store_, "TEST", nullptr, nullptr) == NATS_OK; }
    bool Empty() { return js_PurgeStream(store_, "TEST", nullptr, nullptr) == NATS_OK; }

private:
    RawClient raw_;
    jsCtx* store_ = nullptr;
};

TEST_P(HostileToAStream, AStreamThatIsFullRefusesAndLosesNothing) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        Stream stream(server_->Url());
        ASSERT_TRUE(stream.Make(100, 1000));
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "k", "*", 0, 0), 1);
        int accepted = 0;
        for (; accepted < 100000 && Send("k", std::to_string(accepted)); ++accepted)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorRefused));
        EXPECT_GE(accepted, 100);
        for (int i = 0; i < 100; ++i) ASSERT_EQ(Read().body, std::to_string(i));
        ASSERT_TRUE(stream.Empty());
        for (int i = 100; i < accepted; ++i) ASSERT_EQ(Read().body, std::to_string(i));
        // A message that the stream never takes holds up no other.
        EXPECT_EQ(Send("k", std::string(2000, 'x')), 1);
        for (int tries = 0; tries < 500 && !Send("k", "behind"); ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(Read().body, "behind");
    }));
}

// An acknowledgement tells of its own message only.
TEST_P(HostileToAStream, WhatAStreamMissedWhileItWasGoneIsSentAgainInOrder) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        Stream stream(server_->Url());
        RawClient raw(server_->Url());
        raw.Listen("tvx.m.>");  // so that the server does not tell that nobody is there
        ASSERT_EQ(Send("k", "before"), 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        ASSERT_TRUE(stream.Delete());
        for (int i = 0; i < 10; ++i) ASSERT_EQ(Send("k", std::to_string(i)), 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(3500));  // the bus holds back what is behind by now
        for (int i = 10; i < 20; ++i) ASSERT_EQ(Send("k", std::to_string(i)), 1);
        ASSERT_TRUE(stream.Make());
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "k", "*", 0, 0xFFFF), 1);
        for (int i = 0; i < 20; ++i) ASSERT_EQ(Read().body, std::to_string(i));
        EXPECT_EQ(Send("k", "behind"), 1);
        EXPECT_EQ(Read().body, "behind");
    }));
}

TEST_P(HostileToAStream, AStreamThatIsMadeAnewIsToldAndReadFromItsBegin) {
    EXPECT_TRUE(InOwnProcess([&] {
        Use();
        Stream stream(server_->Url());
        RawClient raw(server_->Url());
        ASSERT_EQ(TvxSubscribe("*", "*", 0, "k", "*", 0, 0xFFFF), 1);  // of a stream that is empty
        for (int i = 0; i < 5; ++i) {
            ASSERT_EQ(Send("k", std::to_string(i)), 1);
            ASSERT_EQ(Read().body, std::to_string(i));
        }
        ASSERT_TRUE(stream.Delete());
        ASSERT_TRUE(stream.Make());
        for (int i = 0; i < 8; ++i) raw.Publish("tvx.m.n.t.1.k.i", "new " + std::to_string(i));  // more than before
        raw.Flush();
        EXPECT_EQ(TvxWait(10000), 0);
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorLost));
        for (int i = 0; i < 8; ++i) ASSERT_EQ(Read().body, "new " + std::to_string(i));
    }));
}

INSTANTIATE_TEST_SUITE_P(Bus, HostileToAStream, testing::Values(std::string("stored")),
                         [](const auto& way) { return way.param; });
INSTANTIATE_TEST_SUITE_P(Bus, Hostile, testing::Values(std::string("live"), std::string("stored")),
                         [](const auto& way) { return way.param; });

}  // namespace
