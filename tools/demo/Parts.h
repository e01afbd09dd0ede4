#pragma once

#include "demo/Options.h"

namespace demo {

// The demonstration's programs. Each gives its exit code.

inline constexpr int kExitUnusableInput = 2;

/// All in this process.
int RunInOneProcess(const Options& options);
/// The producer, receiver or tool alone, on the bus that the environment names. The producer begins when the
/// two others listen and ends when they are done.
int RunPart(const Options& options);
/// A server of the bus on this machine, and the three programs as processes of their own.
int RunOverNetwork(const Options& options, const char* program);

}  // namespace demo
