#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tarvex/Keys.h"

namespace tarvex {

/// What this process is called as a sender.
struct Identity {
    std::string node;      ///< `TARVEX_NODE`, or the host's name
    std::string task;      ///< `TARVEX_TASK`, or the program's name
    std::uint32_t number;  ///< `TARVEX_NUMBER`, or the process id; never 0, which stands for any

    /// The keys of what this process sends to a pair.
    Address Sends(std::string_view msgKey, std::string_view identifier) const {
        return {node, task, number, msgKey, identifier};
    }
};

/// Nothing if one of the variables holds what no key can be.
std::optional<Identity> ReadIdentity();

/// The value of an environment variable, or `otherwise` if it is unset or empty.
std::string Setting(const char* name, const std::string& otherwise);

}  // namespace tarvex
