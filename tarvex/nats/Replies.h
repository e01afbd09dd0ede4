#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvex {

// What the reply subject of a message tells. Nobody answers there.

/// A live message's: "~", the run that sent it, and its number in digits of 36, with "~" behind it if it may
/// have come before. Short, since the engine's client and server look at each character: a run of a sender
/// is 8 characters and numbers its messages from 1.
struct Number {
    std::string_view run;
    std::uint64_t number = 0;
    bool isAgain = false;
};
inline constexpr std::size_t kRunSize = 8;
inline constexpr std::size_t kLongestNumberText = 1 + kRunSize + 13 + 1;
/// Writes one to `text`, which has room for the longest, and gives its end. Not terminated.
char* WriteNumber(char* text, const Number& number);
/// False if it is none, as with a foreign sender's.
bool ReadNumber(std::string_view reply, Number& number);

/// A stored message's: $JS.ACK.<stream>.<consumer>.<times>.<in stream>.<in delivery>.<time>.<pending>, with
/// two words more behind ACK, and maybe one at the end, from newer servers. Both places count from 1.
struct Places {
    std::uint64_t inStream = 0;
    std::uint64_t inDelivery = 0;
};
bool ReadPlaces(std::string_view reply, Places& places);

}  // namespace tarvex
