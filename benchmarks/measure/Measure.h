#pragma once

#include <optional>
#include <string>
#include <vector>

#include "suite/Suite.h"

namespace bench {

struct Result {
    const Case* measured = nullptr;
    double nanoseconds = 0.0;  ///< of the processor's time, median over the rounds
    double heapCalls = 0.0;    ///< per operation
};

struct RoundOptions {
    int rounds = 9;
    double secondsEach = 0.02;
};

/// Runs every case shortly in each round, in a random order that is new for each round.
std::vector<Result> RunRounds(const std::vector<const Case*>& cases, const RoundOptions& options);

/// Does one operation so many times inside `MeasuredLoop`, a function that an instruction counter can tell by its
/// name; what comes before is done outside it.
void RunCounted(const Case& counted, std::size_t iterations);

/// Prints the bytes of memory that each live, encoded message costs, by peer.
void PrintResident();

void PrintTable(const std::vector<Result>& results);
/// "operation peer nanoseconds" a line, for `ratios.awk`.
void PrintLines(const std::vector<Result>& results);

}  // namespace bench
