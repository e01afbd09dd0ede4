// The bus's contract, the same for every way to run it. What the environment names decides.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bus/Way.h"
#include "surveymsg/outside/Tarvex.h"

namespace {

using bus::IsEmbedded;

constexpr std::uint32_t kArrival = 5000;  // milliseconds, at most, for what was sent

struct Got {
    int result = 0;
    std::string keys;  // the five, joined by "|"
    std::string body;
};

Got Read(std::uint32_t keySize = 1001, std::uint32_t bodySize = 1310720) {
    static std::string body(1310720, '\0');
    std::string texts[4];
    for (std::string& text : texts) text.assign(keySize + 1, '\xEE');
    std::uint32_t number = 0, further = 9, length = 0;
    Got got;
    TvxWait(kArrival);
    got.result = TvxRead(texts[0].data(), keySize, texts[1].data(), keySize, &number, texts[2].data(), keySize,
                         texts[3].data(), keySize, &further, body.data(), bodySize, &length);
    for (const std::string& text : texts) EXPECT_EQ(text[keySize], '\xEE');
    if (!got.result) return got;
    got.keys = std::string(texts[0].c_str()) + "|" + texts[1].c_str() + "|" + std::to_string(number) + "|" +
               texts[2].c_str() + "|" + texts[3].c_str();
    got.body = body.substr(0, length);
    return got;
}

int Send(const char* key, const char* identifier, const std::string& body) {
    return TvxSend(key, identifier, body.data(), static_cast<std::uint32_t>(body.size()));
}

int Subscribe(const char* key, const char* identifier) { return TvxSubscribe("*", "*", 0, key, identifier, 0, 0); }
int Unsubscribe(const char* key, const char* identifier) { return TvxUnsubscribe("*", "*", 0, key, identifier); }

// The bus reads its names at the first call.
[[maybe_unused]] const bool kIsNamed = setenv("TARVEX_NODE", "test node", 1) == 0 &&
                                       setenv("TARVEX_TASK", "test.task", 1) == 0 &&
                                       setenv("TARVEX_NUMBER", "42", 1) == 0;
const std::string kSender = "test node|test.task|42|";

// Whether all that was sent before, and is wanted, has been read: what is sent now comes next.
bool IsAllRead() {
    const char* const mark = "a mark behind all";
    if (!Subscribe(mark, "")) return false;
    const bool isNext = Send(mark, "", "") && Read().keys == kSender + mark + "|";
    return Unsubscribe(mark, "") && isNext;
}

TEST(Bus, DeliversWhatIsAskedFor) {
    ASSERT_EQ(Subscribe("k", "i"), 1);
    EXPECT_EQ(Send("k", "i", std::string("a\0b", 3)), 1);
    EXPECT_EQ(Send("k", "other", "x"), 1);
    EXPECT_EQ(Send("k", "i", ""), 1);
    EXPECT_EQ(TvxUnpublish("k", "i"), 0);
    EXPECT_NE(TvxWait(kArrival), 0);
    Got got = Read();
    EXPECT_EQ(got.keys, kSender + "k|i");
    EXPECT_EQ(got.body, std::string("a\0b", 3));
    got = Read();
    EXPECT_EQ(got.result, 1);
    EXPECT_EQ(got.body, "");
    EXPECT_TRUE(IsAllRead());
    EXPECT_EQ(TvxWait(0), 0);
    EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorNothing));
    EXPECT_EQ(Unsubscribe("k", "i"), 1);
    EXPECT_EQ(Unsubscribe("k", "i"), 0);
}

TEST(Bus, WildcardsStandInEveryPlace) {
    struct Case {
        const char *node, *task;
        std::uint32_t number;
        const char *key, *identifier;
        bool matches;
    };
    const Case cases[] = {
        {"*", "*", 0, "*", "*", true},         {"test node", "test.task", 42, "k", "i", true},
        {"test node", "*", 0, "*", "i", true}, {"other", "*", 0, "*", "*", false},
        {"*", "other", 0, "*", "*", false},    {"*", "*", 43, "*", "*", false},
        {"*", "*", 0, "x", "*", false},        {"*", "*", 0, "*", "", false},
        {"*", "*", 0, "*", nullptr, false},    {"test*", "*", 0, "*", "*", false},
    };
    for (const Case& each : cases) {
        ASSERT_EQ(TvxSubscribe(each.node, each.task, each.number, each.key, each.identifier, 0, 0), 1);
        Send("k", "i", "body");
        if (each.matches)
            EXPECT_NE(TvxWait(kArrival), 0) << each.node << each.task << each.number << each.key;
        else
            EXPECT_TRUE(IsAllRead()) << each.node << each.task << each.number << each.key;
        EXPECT_EQ(TvxUnsubscribe(each.node, each.task, each.number, each.key, each.identifier), 1);
        EXPECT_EQ(TvxWait(0), 0);  // what was unread has gone with the subscription
    }
}

TEST(Bus, OverlappingSubscriptionsDeliverOnceAndKeepWhatOthersWant) {
    Subscribe("k", "*");
    Subscribe("*", "i");
    Subscribe("k", "*");
    Send("k", "i", "1");
    Send("k", "j", "2");
    Subscribe("last", "*");
    Send("last", "", "3");
    for (const char* body : {"1", "2", "3"}) EXPECT_EQ(Read().body, body);
    Send("k", "i", "1");
    EXPECT_NE(TvxWait(kArrival), 0);
    EXPECT_EQ(Unsubscribe("k", "*"), 1);
    EXPECT_EQ(Read().body, "1");  // the other subscription wants it too
    EXPECT_TRUE(IsAllRead());
    Unsubscribe("*", "i");
    Unsubscribe("last", "*");
}

TEST(Bus, ANullIdentifierIsTheEmptyOne) {
    Subscribe("k", nullptr);
    Send("k", "", "1");
    Send("k", nullptr, "2");
    EXPECT_EQ(Read().keys, kSender + "k|");
    EXPECT_EQ(Read().body, "2");
    EXPECT_EQ(Unsubscribe("k", ""), 1);
}

TEST(Bus, AMessageTooLargeForTheReaderWaitsForLargerBuffers) {
    Subscribe("a long key", "i");
    Send("a long key", "i", "12345678");
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{10, 100}, {11, 7}, {0, 100}};
    for (const auto& [keySize, bodySize] : sizes) {
        EXPECT_EQ(Read(keySize, bodySize).result, 0);
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorTooSmall));
    }
    EXPECT_EQ(Read(11, 8).body, "12345678");
    Unsubscribe("a long key", "i");
}

TEST(Bus, BodiesOfAllLengthsComeInTheirOrder) {
    ASSERT_EQ(Subscribe("k", "i"), 1);
    constexpr std::size_t kLengths[] = {100, 0, 100, 300000, 100, 262000, 262144, 1310720, 8, 400000, 200000, 200000};
    std::size_t sent = 0, read = 0;
    const auto body = [&](std::size_t index) {
        return std::string(kLengths[index % std::size(kLengths)], static_cast<char>('a' + index % 26));
    };
    for (std::size_t waiting : {1u, 1u, 1u, 2u, 5u, 12u, 1u, 24u, 1u, 1u, 1u, 1u, 1u}) {
        for (std::size_t i = 0; i < waiting; ++i) ASSERT_EQ(Send("k", "i", body(sent++)), 1);
        while (read < sent) {
            const Got got = Read();
            ASSERT_EQ(got.body.size(), body(read).size()) << "message " << read;
            ASSERT_EQ(got.body, body(read++));
        }
    }
    EXPECT_EQ(Unsubscribe("k", "i"), 1);
}

TEST(Bus, RefusesWhatNoReaderCouldTake) {
    const std::string longKey(1001, 'k');
    const std::string longestKey(1000, 'k');
    const std::string largest(1310720, 'b');
    for (const auto& [key, identifier] : {std::pair{longKey, longestKey}, std::pair{longestKey, longKey}}) {
        EXPECT_EQ(Send(key.c_str(), identifier.c_str(), ""), 0);
        EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorTooLong));
        EXPECT_EQ(TvxPublish(key.c_str(), identifier.c_str(), nullptr, 0), 0);
    }
    EXPECT_EQ(Send("k", "i", largest + "x"), 0);
    Subscribe("*", "*");
    EXPECT_EQ(Send(longestKey.c_str(), longestKey.c_str(), largest), 1);
    EXPECT_EQ(Read().body, largest);
    Unsubscribe("*", "*");
    msgfmt format{};
    const int refused[] = {TvxSend(nullptr, "i", "x", 1), TvxSend("k", "i", nullptr, 1),
                           TvxPublish("k", "i", &format, 15), TvxPublish("k", "i", nullptr, 16),
                           TvxSubscribe(nullptr, "*", 0, "k", "i", 0, 0)};
    for (const int result : refused) EXPECT_EQ(result, 0);
    EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorInvalid));
}

TEST(Bus, AnyBytesOfAKeyComeBack) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) all += static_cast<char>(byte);
    const std::string dots(255, '.'), stars(1000, '*'), blanks("  > . %~ %2E \\ \" \r\n");
    const std::pair<std::string, std::string> pairs[] = {
        {all, dots}, {stars, blanks}, {std::string(1000, '>'), std::string(1000, ' ')}, {"%", "*"}, {"", "%"}};
    for (const auto& [key, identifier] : pairs) {
        ASSERT_EQ(Subscribe(key.c_str(), identifier.c_str()), 1);
        ASSERT_EQ(Send(key.c_str(), identifier.c_str(), "body"), 1);
        EXPECT_EQ(Read().keys, std::string(kSender).append(key).append("|").append(identifier));
        EXPECT_EQ(Unsubscribe(key.c_str(), identifier.c_str()), 1);
    }
}

TEST(Bus, AFullQueueRefusesAndLosesNothing) {
    if (!IsEmbedded()) GTEST_SKIP() << "the queue of another process refuses nothing";
    Subscribe("k", "*");
    const std::string body(100000, 'x');
    int accepted = 0;
    while (accepted < 100000 && Send("k", std::to_string(accepted).c_str(), body)) ++accepted;
    EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorQueueFull));
    EXPECT_NEAR(accepted, 2048, 12);  // 256 MiB, in blocks of which each holds two, or more if it is left over
    Read();
    EXPECT_EQ(Send("k", "after", "x"), 1);
    for (int i = 1; i < accepted; ++i) ASSERT_EQ(Read().keys, kSender + "k|" + std::to_string(i));
    EXPECT_EQ(Read().keys, kSender + "k|after");

    accepted = 0;
    while (accepted < 10000000 && Send("k", "empty", "")) ++accepted;
    EXPECT_LT(accepted, 6000000);  // messages without a body cost as well
    Unsubscribe("k", "*");
}

TEST(Bus, WaitsForTheGivenTime) {
    Subscribe("k", "*");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(TvxWait(30), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(29));
    std::thread sender([] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        Send("k", "i", "x");
    });
    EXPECT_NE(TvxWait(0xFFFFFFFF), 0);
    sender.join();
    Unsubscribe("k", "*");
}

TEST(Bus, ServesSeveralThreadsInEachSendersOrder) {
    constexpr int kThreads = 4, kEach = 5000;
    Subscribe("threads", "*");
    std::atomic<bool> failed = false;
    std::vector<std::thread> senders;
    for (int t = 0; t < kThreads; ++t)
        senders.emplace_back([t, &failed] {
            for (int i = 0; i < kEach; ++i)
                if (!Send("threads", std::to_string(t).c_str(), std::to_string(i))) failed = true;
        });
    int next[kThreads] = {};
    for (int i = 0; i < kThreads * kEach; ++i) {
        ASSERT_NE(TvxWait(5000), 0);
        const Got got = Read();
        const int thread = got.keys.back() - '0';
        ASSERT_EQ(got.body, std::to_string(next[thread]++));
    }
    for (std::thread& sender : senders) sender.join();
    EXPECT_FALSE(failed);
    Unsubscribe("threads", "*");
}

TEST(Bus, SubscriptionsThatComeAndGoUnderLoadDisturbNoOther) {
    constexpr int kCount = 20000;
    ASSERT_EQ(Subscribe("flow", ""), 1);
    std::atomic<bool> isRead = false;
    std::thread sender([] {
        for (int i = 0; i < kCount; ++i) Send("flow", "", std::to_string(i));
    });
    std::thread subscriber([&] {
        for (int i = 0; !isRead; ++i) {
            const std::string key = "another" + std::to_string(i % 3);
            Subscribe(key.c_str(), "");
            if (i % 2 == 1) Unsubscribe(key.c_str(), "");
            std::this_thread::sleep_for(std::chrono::microseconds(200));  // it looks at all that is unread each time
        }
    });
    std::string wrong;
    for (int next = 0; next < kCount && wrong.empty(); ++next) {
        const Got got = Read();
        if (got.body != std::to_string(next)) wrong = got.body + " instead of " + std::to_string(next);
    }
    isRead = true;
    sender.join();
    subscriber.join();
    EXPECT_EQ(wrong, "");
    EXPECT_TRUE(IsAllRead());
    for (const char* key : {"flow", "another0", "another1", "another2"}) Unsubscribe(key, "");
}

std::string Query(const char* text, std::uint32_t size, std::uint32_t& needed, int& result) {
    std::string buffer(size, '\0');
    needed = 99;
    result = TvxQueryFormat(4, text, static_cast<std::uint32_t>(std::strlen(text)) + 1, buffer.data(), size, &needed);
    return buffer;
}

TEST(Bus, FormatsGoWithTheirPair) {
    struct {
        msgfmt head;
        char rest[4];
    } first{}, second{};
    first.rest[0] = '1';
    second.rest[0] = '2';
    EXPECT_EQ(TvxPublish("k", "one", &first.head, sizeof first), 1);
    EXPECT_EQ(TvxPublish("k", "two", &second.head, sizeof second), 1);
    EXPECT_EQ(TvxPublish("k", "none", nullptr, 0), 1);
    struct Case {
        const char* text;
        char format;  // ' ' for none
    };
    const Case cases[] = {
        {"test%20node.test%2Etask.42.k.two", '2'},
        {"*.*.0.k.one", '1'},
        {"%.%.0.k.two", '2'},
        {"*.*.0.*.*", '1'},
        {"*.*.0.%2A.two", '2'},
        {"*.*.41.k.one", ' '},
        {"*.*.0.k.none", ' '},
        {"*.*.0.x.*", ' '},
        {"other.*.0.k.one", ' '},
    };
    std::uint32_t needed = 0;
    int result = 0;
    for (const Case& each : cases) {
        const std::string record = Query(each.text, 64, needed, result);
        EXPECT_NE(result, 0) << each.text;
        EXPECT_EQ(needed, each.format == ' ' ? 0u : 20u) << each.text;
        EXPECT_EQ(each.format == ' ' ? ' ' : record[16], each.format) << each.text;
    }
    Query("*.*.0.k.one", 19, needed, result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorTooSmall));
    EXPECT_EQ(needed, 20u);
    Query("no key text", 64, needed, result);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(GetLastError(), static_cast<std::uint32_t>(TvxErrorInvalid));
    EXPECT_EQ(TvxUnpublish("k", "one"), 1);
    EXPECT_EQ(TvxUnpublish("k", "one"), 0);
    Query("*.*.0.k.one", 64, needed, result);
    EXPECT_EQ(needed, 0u);
}

TEST(Bus, KeyTextsAreNeverCutAndParseInPlace) {
    char text[64];
    EXPECT_EQ(TvxCombineKeys(text, 16, "n", "t", 1, "key", "a b"), 1);
    EXPECT_STREQ(text, "n.t.1.key.a%20b");
    EXPECT_EQ(TvxCombineKeys(text, 15, "n", "t", 1, "key", "a b"), 0);
    EXPECT_STREQ(text, "");
    std::strcpy(text, "n.t.7.key.%");
    char *place = text, *node = nullptr, *task = nullptr, *key = nullptr, *identifier = nullptr;
    std::uint32_t number = 0;
    EXPECT_EQ(TvxExtractKeys(&place, &node, &task, &number, &key, &identifier), 1);
    EXPECT_STREQ(node, "n");
    EXPECT_STREQ(key, "key");
    EXPECT_STREQ(identifier, "");
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(place, text + 11);
}

}  // namespace
