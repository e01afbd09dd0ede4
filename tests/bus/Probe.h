#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "server/ChildProcess.h"

namespace bus {

/// A `bus_probe`.
class Probe : public server::ChildProcess {
public:
    using ChildProcess::ChildProcess;

    static std::vector<std::string> Receive(const std::string& key, int senders = 1, int delay = 0) {
        return {BUS_PROBE, "receive", key, std::to_string(senders), std::to_string(delay)};
    }
    static std::vector<std::string> Send(const std::string& key, int count, int rate, int size = 100) {
        return {BUS_PROBE, "send", key, std::to_string(count), std::to_string(rate), std::to_string(size)};
    }

    bool IsReady() { return Await("ready\n"); }
    /// A number that it said; -1 if it said none.
    std::int64_t Get(const std::string& name) {
        const std::size_t at = Output().find(name + "=");
        return at == std::string::npos ? -1 : std::atoll(Output().c_str() + at + name.size() + 1);
    }
};

}  // namespace bus
