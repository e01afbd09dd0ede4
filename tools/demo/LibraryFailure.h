#pragma once

#include <stdexcept>
#include <string>

namespace demo {

/// A call of the message library that did not do what it was asked.
class LibraryFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Raises `LibraryFailure` with the bus's reason; to be called straight after the call that failed.
[[noreturn]] void FailOnBus(const std::string& what);

}  // namespace demo
