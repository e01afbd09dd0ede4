#pragma once

#include <cstddef>
#include <string>

namespace busbench {

// What a process of the benchmark does, and says on its standard output. Each gives its exit code.

/// Bodies with their number and the time in them, at `rate` a second, or flat out for 0.
int Publish(const std::string& channel, std::size_t size, std::size_t count, double rate);
/// Takes `count` messages; says "ready", then "rate=<messages a second> lost=<number> p50=<microseconds>
/// p99=<microseconds>".
int Subscribe(const std::string& channel, std::size_t count);

/// One sender's calls only, for a count of instructions: nothing else runs in `MeasuredLoop`.
int CountSends(const std::string& channel, std::size_t size);
/// One thread that sends, waits and reads, `batch` messages at a time, inside one process; "bus" or "queue", a
/// mutex and a deque. Says "time=<nanoseconds for each message>".
int RunInside(const std::string& channel, std::size_t size, std::size_t batch);

}  // namespace busbench
