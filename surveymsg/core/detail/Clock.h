#pragma once

namespace surveymsg::detail {

inline constexpr double kUnixEpochOffset = 315964800.0;  // seconds from 1970-01-01 to 1980-01-06

/// Seconds since 1980-01-06 UTC: the suite's time service if it can be loaded, else the system clock in
/// milliseconds.
double Now();

}  // namespace surveymsg::detail
