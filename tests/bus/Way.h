#pragma once

#include <cstdlib>

namespace bus {

/// The way to run the bus that a test program was started for: "live" or "stored", or null for the bus inside
/// the process.
inline const char* Way() { return std::getenv("BUS_TEST_WAY"); }
inline bool IsEmbedded() { return !Way(); }

}  // namespace bus
