#pragma once

#include <stdexcept>
#include <string>

namespace demo {

/// What the command line asks for.
struct Options {
    std::string file;            ///< the shots; empty for the sample inside the program
    double soundSpeed = 1499.3;  ///< metres per second
    bool all = false;            ///< show every element of every message
    bool overNetwork = false;    ///< three processes and a server between them
    std::string part;            ///< "producer", "receiver" or "tool" alone; empty for all
    bool help = false;
};

/// A command line that cannot be used; `what` says why.
class OptionError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

extern const char kUsage[];

/// Raises `OptionError`.
Options ParseOptions(int argc, const char* const* argv);

}  // namespace demo
