// Shows the road of one computed position, in one process: a producer measures, solves and sends, a
// receiver listens, and a tool that knows no class of message shows what came.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <sstream>

#include "demo/LibraryFailure.h"
#include "demo/MemberTool.h"
#include "demo/Options.h"
#include "demo/Producer.h"
#include "demo/Receiver.h"
#include "demo/Sample.h"
#include "demo/ShotFile.h"
#include "demo/Solver.h"
#include "demo/Text.h"

namespace {

using namespace demo;

constexpr int kExitUnusableInput = 2;
constexpr std::uint32_t kLongestWait = 5000;  // milliseconds, for a message that was sent
constexpr std::size_t kShownArrivals = 4;

std::vector<Shot> Read(const Options& options) {
    if (!options.file.empty()) return ReadShotFile(options.file);
    std::istringstream sample(kSampleText);
    return ReadShots(sample, "the sample that comes with the program");
}

void TellShots(const Options& options, const std::vector<Shot>& shots) {
    const auto [first, last] = std::ranges::minmax_element(shots, {}, &Shot::transmitTime);
    std::cout << "1. The producer reads the acoustic ranging shots.\n   "
              << (options.file.empty() ? "The sample that comes with the program" : options.file) << ": "
              << Counted(shots.size(), "shot", "shots") << " in " << Fixed(last->transmitTime - first->transmitTime, 0)
              << " seconds.\n\n";
}

void TellObservations(const Producer& producer, const Shot& shot, std::size_t fixCount) {
    CAcObsMsg first;
    producer.Observe(0, first);
    std::cout << "2. It makes an observation of each shot and sends the transducer's positions as fixes.\n   \""
              << first.InstanceIdentifier.View() << "\": " << Fixed(shot.travelTime * 1000.0, 3)
              << " ms there and back at " << Fixed(first.SpeedOfSound, 1) << " m/s are a slant range of "
              << Fixed(first.Value, 3) << " m.\n   " << Counted(fixCount, "fix", "fixes")
              << " sent, two for each shot: at transmit and at receive.\n\n";
}

void TellSolution(const Solution& solution, std::size_t shotCount) {
    std::cout << "3. It solves for the transponder on the seabed by least squares.\n   ";
    if (!solution.solved) {
        std::cout << "There is no solution: " << solution.whyNot << ".\n\n";
        return;
    }
    std::cout << "North " << Fixed(solution.position.x(), 3) << " m, east " << Fixed(solution.position.y(), 3)
              << " m, up " << Fixed(solution.position.z(), 3) << " m, standard deviation in space "
              << Fixed(solution.standardDeviation, 3) << " m.\n   " << Grouped(solution.usedCount) << " of "
              << Counted(shotCount, "shot", "shots") << " used after " << Counted(solution.rounds, "round", "rounds")
              << "; the others are beyond three sigma.\n   The two-way paths of the used shots fit to "
              << Fixed(solution.rms, 3) << " m (rms).\n\n";
}

void TellSent(std::size_t shotCount, std::size_t parts) {
    std::cout << "4. It sends the computed position with every observation in it.\n   "
              << Counted(shotCount, "observation", "observations") << " in " << Counted(parts, "message", "messages")
              << "; residuals are one-way, half of the two-way path's.\n\n";
}

void TellReceived(const Receiver& receiver) {
    const auto& positions = receiver.Positions();
    std::uint64_t bytes = 0;
    for (const auto& arrival : positions) bytes += arrival.bytes;
    std::cout << "5. The receiver has subscribed to both, and makes each object from its key.\n   "
              << Counted(receiver.FixCount(), "fix", "fixes") << " (" << Counted(receiver.FixBytes(), "byte", "bytes")
              << "), " << Counted(positions.size(), "computed position", "computed positions") << " ("
              << Counted(bytes, "byte", "bytes") << ").\n";
    for (std::size_t i = 0; i < std::min(positions.size(), kShownArrivals); ++i)
        std::cout << "   \"" << positions[i].identifier << "\" from " << positions[i].sender << ": "
                  << Counted(positions[i].observations, "observation", "observations") << ", "
                  << Counted(positions[i].bytes, "byte", "bytes") << ".\n";
    if (positions.size() > kShownArrivals)
        std::cout << "   ... and " << Grouped(positions.size() - kShownArrivals) << " more.\n";
    std::cout << '\n';
}

void TellRecord(const std::string& listing) {
    std::cout
        << "Second act: the same position goes out as a raw record of 168 bytes, for programs that have no class.\n"
           "   Its format goes to the bus with it. The receiver fetched that, and the tool lists the fields by path.\n"
        << listing << '\n';
}

// Messages arrive while the producer still sends: the receiver reads after each, so that the queue never
// fills, and what the tool writes about them is kept until its turn.
int Run(const Options& options) {
    const std::vector<Shot> shots = Read(options);
    TellShots(options, shots);

    std::ostringstream toolOutput;
    MemberTool tool(toolOutput, options.all);
    std::ostringstream recordOutput;
    MemberTool recordTool(recordOutput, options.all);
    Receiver receiver([&tool](CMsg& position) { tool.Take(position); },
                      [&recordTool](CMsg& record) { recordTool.Show(record); });
    const auto drain = [&receiver] {
        while (receiver.ReceiveOne(0)) {
        }
    };
    const Producer producer(shots, options.soundSpeed);
    const std::size_t fixCount = producer.SendFixes(drain);
    TellObservations(producer, shots.front(), fixCount);

    const Solution solution = Solve(shots, options.soundSpeed);
    TellSolution(solution, shots.size());

    const std::size_t parts = producer.SendPosition(solution, drain);
    TellSent(shots.size(), parts);

    const std::size_t records = solution.solved ? 1 : 0;
    if (solution.solved) producer.SendRecord(solution);
    while (receiver.FixCount() < fixCount || receiver.Positions().size() < parts || receiver.RecordCount() < records)
        if (!receiver.ReceiveOne(kLongestWait)) throw LibraryFailure("messages that were sent did not arrive");
    TellReceived(receiver);

    tool.Finish();
    if (tool.Result().observations != shots.size()) throw LibraryFailure("observations were lost on the way");
    std::cout << "6. The tool knows no class. It shows what came by its members alone.\n" << toolOutput.str() << '\n';
    if (solution.solved) TellRecord(recordOutput.str());
    std::cout << tool.Result().Text() << '\n' << std::flush;
    if (!std::cout) throw LibraryFailure("the output cannot be written");
    return tool.Result().IsSolved() ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    const auto complain = [](const char* what) { std::cerr << "surveymsg-demo: " << what << '\n'; };
    try {
        const Options options = ParseOptions(argc, argv);
        if (!options.help) return Run(options);
        std::cout << kUsage << '\n';
        return EXIT_SUCCESS;
    } catch (const OptionError& error) {
        complain(error.what());
        std::cerr << kUsage << '\n';
        return kExitUnusableInput;
    } catch (const ShotFileError& error) {
        complain(error.what());
        return kExitUnusableInput;
    } catch (const std::exception& error) {
        complain(error.what());
        return EXIT_FAILURE;
    }
}
