#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvex {

// What the reply subject of a message tells. Nobody answers there.

/// A live message's: <domain>.n.<run>.<number>, with ".again" behind it if it may have come before. A run of
/// a sender numbers its messages from 1.
struct Number {
    std::string_view run;
    std::uint64_t number = 0;
    bool isAgain = false;
};
inline constexpr std::string_view kAgainMark = ".again";
inline std::string NumberRoot(const std::string& domain) { return domain + ".n."; }
/// False if it is none, as with a foreign sender's.
bool ReadNumber(std::string_view reply, std::string_view root, Number& number);

/// A stored message's: $JS.ACK.<stream>.<consumer>.<times>.<in stream>.<in delivery>.<time>.<pending>, with
/// two words more behind ACK, and maybe one at the end, from newer servers. Both places count from 1.
struct Places {
    std::uint64_t inStream = 0;
    std::uint64_t inDelivery = 0;
};
bool ReadPlaces(std::string_view reply, Places& places);

}  // namespace tarvex
