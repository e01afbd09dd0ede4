#pragma once

#include <surveymsg/surveymsg.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "demo/ShotFile.h"
#include "demo/Solver.h"

namespace demo {

inline constexpr const char* kEndKey = "Demo~End";

/// The program that has the measurements: it sends the transducer's positions, and the transponder's once
/// that is solved, with the observations it rests on. A call that the library refuses raises
/// `LibraryFailure`; the library's exceptions pass through.
class Producer {
public:
    /// Called after each message that was sent, for whoever must read before the bus's queue is full.
    using AfterSend = std::function<void()>;

    Producer(const std::vector<Shot>& shots, double soundSpeed) : shots_(shots), soundSpeed_(soundSpeed) {}

    /// Fills the observation that the shot at `index` is: a one-way slant range in metres.
    void Observe(std::size_t index, CAcObsMsg& observation) const;

    /// Sends two fixes for each shot, the transducer at transmit and at receive. Gives their number.
    std::size_t SendFixes(const AfterSend& afterSend) const;

    /// Sends the position with an observation for each shot, in as many messages as it takes: an encoded
    /// message has a largest size. More than one are named "1 of 3", "2 of 3", ... by their prefix. Gives
    /// their number.
    std::size_t SendPosition(const Solution& solution, const AfterSend& afterSend) const;

    /// Sends the position once more as a raw record, with the format that describes it.
    void SendRecord(const Solution& solution) const;

    /// Says under `kEndKey` that this was all: what one sender sends arrives in its order.
    void SendEnd() const;

private:
    void Observe(std::size_t index, const Solution& solution, CAcObsMsg& observation) const;
    std::vector<std::size_t> PartEnds(const Solution& solution) const;

    const std::vector<Shot>& shots_;
    double soundSpeed_;
};

}  // namespace demo
