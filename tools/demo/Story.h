#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "demo/Options.h"
#include "demo/Producer.h"
#include "demo/Receiver.h"
#include "demo/ShotFile.h"
#include "demo/Solver.h"

namespace demo {

// What each program tells of its part, on the standard output.

void TellShots(const Options& options, const std::vector<Shot>& shots);
void TellObservations(const Producer& producer, const Shot& shot, std::size_t fixCount);
void TellSolution(const Solution& solution, std::size_t shotCount);
void TellSent(std::size_t shotCount, std::size_t parts);
void TellReceived(const Receiver& receiver);
void TellMembers(const std::string& listing);
void TellRecord(const std::string& listing);

}  // namespace demo
