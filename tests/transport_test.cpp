// What the message library asks of the bus, call by call, against a recording bus.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "support/RecordingBus.h"
#include "support/Text.h"

namespace {

class Transport : public testing::Test {
protected:
    void SetUp() override { bus = RecordingBus{}; }
    RecordingBus& bus = TheRecordingBus();
};

// Each test has names of its own: what is published stays so for the process.
CPosnMsg& Named(CPosnMsg& position, const char* name) {
    position.Name = name;
    return position;
}

TEST_F(Transport, SendPublishesAPairOnce) {
    CPosnMsg position;
    Named(position, "once").MsgTime = 0.0;
    bus.result = 3;
    EXPECT_EQ(position.Send(), 3);
    EXPECT_GT(position.MsgTime, 0.0);
    EXPECT_EQ(bus.TakeCalls(), "publish 'PRX~Position''once' without 0; send 'PRX~Position''once'104");
    EXPECT_EQ(bus.lastSent, Text(position.Body));
    CPosnMsg other;
    Named(other, "once").Send();
    EXPECT_EQ(bus.TakeCalls(), "send 'PRX~Position''once'104");
    EXPECT_EQ(other.Publish(), 1);
    EXPECT_EQ(bus.TakeCalls(), "");
    other.Unpublish();
    other.Unpublish();
    EXPECT_EQ(bus.TakeCalls(), "unpublish 'PRX~Position''once'");
}

TEST_F(Transport, ARefusedPublishIsTriedAgainAndDoesNotStopTheSend) {
    CPosnMsg position;
    Named(position, "refused");
    bus.result = 0;
    EXPECT_EQ(position.Send(), 0);
    EXPECT_EQ(position.Send(), 0);
    EXPECT_EQ(bus.TakeCalls(),
              "publish 'PRX~Position''refused' without 0; send 'PRX~Position''refused'107; "
              "publish 'PRX~Position''refused' without 0; send 'PRX~Position''refused'107");
}

TEST_F(Transport, ARenameRetiresTheOldNameWithALastMessage) {
    CPosnMsg position;
    Named(position, "old").Send();
    Named(position, "new").OldName = "old";
    bus.TakeCalls();
    position.Send();
    EXPECT_EQ(bus.TakeCalls(),
              "publish 'PRX~Position''new' without 0; send 'PRX~Position''old'106; unpublish 'PRX~Position''old'; "
              "send 'PRX~Position''new'106");
    position.Send();
    EXPECT_EQ(bus.TakeCalls(), "send 'PRX~Position''new'106");
    position.OldName = "new";  // the old name is the present one
    position.Send();
    EXPECT_EQ(bus.TakeCalls(),
              "send 'PRX~Position''new'106; unpublish 'PRX~Position''new'; send 'PRX~Position''new'106");
    position.Send();
    EXPECT_EQ(bus.TakeCalls(),
              "publish 'PRX~Position''new' without 0; send 'PRX~Position''new'106; unpublish 'PRX~Position''new'; "
              "send 'PRX~Position''new'106");
}

TEST_F(Transport, AnEmptyIdentifierIsPublishedAsTextAndSentAsNull) {
    CMsg message;
    message.MsgKey = "plain/key";
    message.Send();
    EXPECT_EQ(bus.TakeCalls(), "publish 'plain/key''' without 0; send 'plain/key'null13");
}

TEST_F(Transport, AFailedEncodingSendsNothing) {
    CPosnMsg position;
    position.Name = std::string(130000, 'x').c_str();
    EXPECT_THROW(position.Send(), CMemoryException);
    EXPECT_EQ(bus.TakeCalls(), "");
}

TEST_F(Transport, PublishHandsOnAFormat) {
    msgfmt format{};
    format.Length = 16;
    CMsg message;
    message.MsgKey = "with format";
    message.InstanceIdentifier = "i";
    EXPECT_EQ(message.Publish(&format), 1);
    EXPECT_EQ(bus.TakeCalls(), "publish 'with format''i' with 16");
}

TEST_F(Transport, SubscriptionsAskForAnySender) {
    CPosnMsg position;
    position.InstanceIdentifier = "i";
    bus.result = 4;
    EXPECT_EQ(position.Subscribe(9), 1);
    EXPECT_EQ(position.Unsubscribe(), 4);
    EXPECT_EQ(bus.TakeCalls(), "subscribe '*''*'0'PRX~Position''i'0,9; unsubscribe '*''*'0'PRX~Position''i'");
}

TEST_F(Transport, ReceiveFillsKeysAndBodyAlone) {
    bus.incoming.push_back({"node", "task", 7, "key", "identifier", std::string("a\0b", 3)});
    bus.incoming.push_back({"node", "task", 7, "key", "identifier", ""});
    CPosnMsg message;
    message.MsgTime = 5.0;
    message.OldInstanceIdentifier = "kept";
    message.BodyIsKeyText = 1;
    message.Name = "kept";
    EXPECT_EQ(message.Receive(20), 5);
    EXPECT_EQ(bus.TakeCalls(), "wait 20; read 64,40960");
    EXPECT_EQ(message.SourceNode, "node");
    EXPECT_EQ(message.SourceTask, "task");
    EXPECT_EQ(message.SourceNumber, 7u);
    EXPECT_EQ(message.MsgKey, "key");
    EXPECT_EQ(message.InstanceIdentifier, "identifier");
    EXPECT_EQ(Text(message.Body), std::string("a\0b", 3));
    EXPECT_EQ(message.MsgTime, 5.0);
    EXPECT_EQ(message.OldInstanceIdentifier, "kept");
    EXPECT_EQ(message.BodyIsKeyText, 1);
    EXPECT_EQ(message.Name, "kept");
    EXPECT_EQ(message.OnReceive(), 5);
    EXPECT_TRUE(message.Body.IsEmpty());
    bus.TakeCalls();
    EXPECT_EQ(message.Receive(0), 0);
    EXPECT_EQ(message.MsgKey, "key");
    EXPECT_EQ(bus.TakeCalls(), "wait 0");
}

TEST_F(Transport, AFailedReadEmptiesTheTexts) {
    CPosnMsg message;
    message.InstanceIdentifier = "i";
    message.SourceNumber = 3;
    message.Body = "body";
    for (const std::uint32_t reason : {0x20000200u, 0x220u, 0x20000020u, 0x200008CAu, 1u}) {
        bus.readFailure = reason;
        EXPECT_EQ(message.OnReceive(), 0);
        EXPECT_EQ(bus.TakeCalls(), "read 64,40960");
    }
    EXPECT_EQ(message.MsgKey, "");
    EXPECT_EQ(message.InstanceIdentifier, "");
    EXPECT_EQ(message.SourceNode, "");
    EXPECT_EQ(message.SourceNumber, 3u);
    EXPECT_TRUE(message.Body.IsEmpty());
}

// Runs `work` in a process of its own, which starts with fresh sizes and ends with the library's unload.
// Gives the calls that the bus saw after `work`, a line each, of those that hold `word`.
std::string CallsAtUnload(const char* word, void (*work)()) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        TheRecordingBus() = RecordingBus{};
        work();
        TheRecordingBus().echo = pipeEnds[1];
        std::exit(testing::Test::HasFailure() ? 1 : 0);
    }
    close(pipeEnds[1]);
    std::string written;
    char buffer[256];
    for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) > 0;)
        written.append(buffer, static_cast<std::size_t>(got));
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    std::string calls;
    std::istringstream lines(written);
    for (std::string line; std::getline(lines, line);)
        if (line.find(word) != std::string::npos) calls += line + "\n";
    return calls;
}

TEST_F(Transport, UnloadRetiresEveryPairWithItsTwoTexts) {
    EXPECT_EQ(CallsAtUnload("unload",
                            [] {
                                CPosnMsg first, third;
                                CMsg second;
                                Named(first, "unload 1").Send();
                                second.MsgKey = "un/load/";
                                second.InstanceIdentifier = "unload/2";
                                second.Publish();
                                Named(third, "unload 3").Send();
                                third.Unpublish();
                            }),
              "unpublish 'PRX~Position''unload 1'\nunpublish 'un/load/''unload/2'\n");
    EXPECT_EQ(CallsAtUnload("nothing", [] {}), "");
}

TEST_F(Transport, BuffersDoubleForTheProcessAndEndAtTheirLimit) {
    EXPECT_EQ(
        CallsAtUnload("read",
                      [] {
                          RecordingBus& own = TheRecordingBus();
                          own.incoming.push_back({std::string(100, 'n'), "t", 1, "k", "i", std::string(100000, 'b')});
                          own.neededBytes = 100000;
                          CMsg message;
                          EXPECT_EQ(message.OnReceive(), 5);
                          EXPECT_EQ(own.TakeCalls(), "read 64,40960; read 128,81920; read 256,163840");
                          EXPECT_EQ(message.Body.GetLength(), 100000);
                          own.neededBytes = 0;
                          own.incoming.push_back({"n", "t", 1, "k", "i", "b"});
                          CMsg next;
                          EXPECT_EQ(next.OnReceive(), 5);
                          EXPECT_EQ(own.TakeCalls(), "read 256,163840");
                          own.neededBytes = 0xFFFFFFFF;
                          EXPECT_EQ(next.OnReceive(), 0);
                          EXPECT_EQ(own.TakeCalls(),
                                    "read 256,163840; read 512,327680; read 1024,655360; read 2048,1310720");
                          next.MsgKey = "kept";
                          EXPECT_EQ(next.OnReceive(), 0);
                          EXPECT_EQ(own.TakeCalls(), "");
                          EXPECT_EQ(next.MsgKey, "kept");
                      }),
        "");
}

TEST_F(Transport, KeyTextsGoThroughTheBus) {
    CPosnMsg position;
    position.Name = "B";
    CString text;
    position.CombineKeys(&text);
    EXPECT_EQ(text, "combined");
    EXPECT_EQ(bus.TakeCalls(), "combine ''''0'PRX~Position''B'256");
    position.SourceTask = "task";
    const char* given = "text";
    EXPECT_EQ(position.ExtractKeys(&given), 1);
    EXPECT_EQ(std::string(given), "text");
    EXPECT_EQ(position.SourceNode, "text");
    EXPECT_EQ(position.SourceTask, "");  // the bus left it null
    EXPECT_EQ(position.SourceNumber, 9u);
    EXPECT_EQ(position.InstanceIdentifier, "");
    position.MsgKey = "kept";
    EXPECT_EQ(position.ExtractKeys("bad"), 0);
    EXPECT_EQ(position.MsgKey, "kept");
}

}  // namespace
