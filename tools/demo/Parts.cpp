#include "demo/Parts.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "demo/LibraryFailure.h"
#include "demo/Listeners.h"
#include "demo/MemberTool.h"
#include "demo/Producer.h"
#include "demo/Receiver.h"
#include "demo/Sample.h"
#include "demo/ShotFile.h"
#include "demo/Solver.h"
#include "demo/Story.h"

namespace demo {
namespace {

constexpr std::uint32_t kLongestWait = 5000;  // milliseconds, for a message that was sent

std::vector<Shot> ReadShots(const Options& options) {
    if (!options.file.empty()) return ReadShotFile(options.file);
    std::istringstream sample(kSampleText);
    return demo::ReadShots(sample, "the sample that comes with the program");
}

int Finish(bool isSolved) {
    std::cout << std::flush;
    if (!std::cout) throw LibraryFailure("the output cannot be written");
    return isSolved ? EXIT_SUCCESS : EXIT_FAILURE;
}

struct Sent {
    std::size_t shots = 0, fixes = 0, parts = 0, records = 0;
    bool isSolved = false;
};

// What the producer does, with a word on each step.
Sent Produce(const Options& options, const Producer::AfterSend& afterSend) {
    const std::vector<Shot> shots = ReadShots(options);
    TellShots(options, shots);
    Sent sent;
    sent.shots = shots.size();
    const Producer producer(shots, options.soundSpeed);
    sent.fixes = producer.SendFixes(afterSend);
    TellObservations(producer, shots.front(), sent.fixes);
    const Solution solution = Solve(shots, options.soundSpeed);
    sent.isSolved = solution.solved;
    TellSolution(solution, shots.size());
    sent.parts = producer.SendPosition(solution, afterSend);
    TellSent(shots.size(), sent.parts);
    if (solution.solved) {
        producer.SendRecord(solution);
        sent.records = 1;
    }
    producer.SendEnd();
    return sent;
}

int RunProducer(const Options& options) {
    Listeners listeners;
    listeners.AwaitReady();
    const Sent sent = Produce(options, [] {});
    listeners.AwaitDone();  // the formats of what was sent are answered while this program runs
    return Finish(sent.isSolved);
}

// Listens, and keeps what the tool writes until its turn.
class Audience {
public:
    explicit Audience(const Options& options)
        : tool(members_, options.all),
          recordTool_(record_, options.all),
          receiver([this](CMsg& position) { tool.Take(position); },
                   [this](CMsg& record) { recordTool_.Show(record); }) {}

    void TellOfMembers() {
        tool.Finish();
        TellMembers(members_.str());
        if (receiver.RecordCount() > 0) TellRecord(record_.str());
        std::cout << tool.Result().Text() << '\n';
    }

private:
    std::ostringstream members_, record_;

public:
    MemberTool tool;

private:
    MemberTool recordTool_;

public:
    Receiver receiver;
};

int RunReceiver(const Options& options) {
    Audience audience(options);
    ListenToEnd(audience.receiver);
    TellReceived(audience.receiver);
    return Finish(!audience.receiver.Positions().empty());
}

int RunTool(const Options& options) {
    Audience audience(options);
    ListenToEnd(audience.receiver);
    audience.TellOfMembers();
    return Finish(audience.tool.Result().IsSolved());
}

}  // namespace

// Messages arrive while the producer still sends: the receiver reads after each, so that the queue never
// fills.
int RunInOneProcess(const Options& options) {
    Audience audience(options);
    Receiver& receiver = audience.receiver;
    const Sent sent = Produce(options, [&receiver] {
        while (receiver.ReceiveOne(0)) {
        }
    });
    while (!receiver.IsAtEnd())
        if (!receiver.ReceiveOne(kLongestWait)) throw LibraryFailure("messages that were sent did not arrive");
    if (receiver.FixCount() != sent.fixes || receiver.Positions().size() != sent.parts ||
        receiver.RecordCount() != sent.records || audience.tool.Result().observations != sent.shots)
        throw LibraryFailure("messages were lost on the way");
    TellReceived(receiver);
    audience.TellOfMembers();
    return Finish(audience.tool.Result().IsSolved());
}

int RunPart(const Options& options) {
    if (options.part == "producer") return RunProducer(options);
    return options.part == "receiver" ? RunReceiver(options) : RunTool(options);
}

}  // namespace demo
