#pragma once

namespace surveymsg::detail {

inline constexpr double kUnixEpochOffset = 315964800.0;  // seconds from 1970-01-01 to 1980-01-06

/// Seconds since 1980-01-06 UTC: the suite's time service if it can be loaded, else the system clock in
/// milliseconds.
double Now();

/// Now, for the time of an object under construction. Objects that one load makes share one reading: it
/// is the load's time, and most of them overwrite it at once.
double ConstructionTime();

/// Marks a load for as long as it lives.
class LoadScope {
public:
    LoadScope();
    LoadScope(const LoadScope&) = delete;
    LoadScope& operator=(const LoadScope&) = delete;
    ~LoadScope();

private:
    const bool outer_;
};

}  // namespace surveymsg::detail
