#pragma once

#include <cstdlib>

namespace bus {

/// The way to run the bus that a test program was started for: BUS_TEST_WAY is "live" or "stored", or unset
/// for the bus inside the process.
inline bool IsEmbedded() { return std::getenv("BUS_TEST_WAY") == nullptr; }

}  // namespace bus
