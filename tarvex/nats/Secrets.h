#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace tarvex {

/// Numbers that nobody can guess. Not for several threads at once.
class Secrets {
public:
    std::uint64_t Next();

private:
    std::array<std::uint64_t, 32> drawn_;
    std::size_t left_ = 0;
};

/// A word of letters and digits that nobody can guess.
std::string SecretWord();

}  // namespace tarvex
