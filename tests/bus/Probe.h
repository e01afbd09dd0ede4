#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace bus {

/// A `bus_probe` that runs. Killed with this object if it has not ended.
class Probe {
public:
    using Settings = std::map<std::string, std::string>;

    /// Environment variables beside those of this process; words in front of the program, such as those that
    /// enter another network.
    Probe(const std::vector<std::string>& words, const Settings& settings, const std::vector<std::string>& before = {});
    ~Probe();
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    /// Waits until it has begun. False if it ended before.
    bool IsReady();
    /// Waits for its end, and gives a number that it said; -1 if it said none.
    std::int64_t Get(const std::string& name);
    pid_t Process() const { return process_; }

private:
    bool ReadUntil(const std::string& mark);

    pid_t process_ = -1;
    int output_ = -1;
    std::string said_;
};

}  // namespace bus
