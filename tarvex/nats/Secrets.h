#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tarvex {

/// Words that nobody can guess, of letters, digits, "-" and "_". Not for several threads at once.
class Secrets {
public:
    /// Writes a word of this length to `text`, and gives its end. Not terminated.
    char* Write(char* text, std::size_t length);

private:
    std::array<std::uint8_t, 256> drawn_;
    std::size_t left_ = 0;
};

/// One word of this length.
std::string SecretWord(std::size_t length);

}  // namespace tarvex
