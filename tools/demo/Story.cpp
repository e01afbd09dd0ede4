#include "demo/Story.h"

#include <algorithm>
#include <cstdint>
#include <iostream>

#include "demo/Text.h"

namespace demo {
namespace {

constexpr std::size_t kShownArrivals = 4;

}  // namespace

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

void TellMembers(const std::string& listing) {
    std::cout << "6. The tool knows no class. It shows what came by its members alone.\n" << listing << '\n';
}

void TellRecord(const std::string& listing) {
    std::cout
        << "Second act: the same position goes out as a raw record of 168 bytes, for programs that have no class.\n"
           "   Its format goes to the bus with it. The receiver fetched that, and the tool lists the fields by path.\n"
        << listing << '\n';
}

}  // namespace demo
