#include "tarvex/nats/Replies.h"

#include <array>
#include <charconv>

namespace tarvex {
namespace {

bool ReadDigits(std::string_view text, std::uint64_t& number) {
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && parsed == end && number != 0;
}

}  // namespace

bool ReadNumber(std::string_view reply, std::string_view root, Number& number) {
    if (!reply.starts_with(root)) return false;
    reply.remove_prefix(root.size());
    number.isAgain = reply.ends_with(kAgainMark);
    if (number.isAgain) reply.remove_suffix(kAgainMark.size());
    const std::size_t dot = reply.find('.');
    if (dot == 0 || dot == std::string_view::npos) return false;
    number.run = reply.substr(0, dot);
    return ReadDigits(reply.substr(dot + 1), number.number);
}

bool ReadPlaces(std::string_view reply, Places& places) {
    constexpr std::size_t kMostWords = 12, kWords = 9, kNewWords = 11;
    std::array<std::string_view, kMostWords> words;
    std::size_t count = 0;
    while (count < kMostWords) {
        const std::size_t dot = reply.find('.');
        words[count++] = reply.substr(0, dot);
        if (dot == std::string_view::npos) break;
        reply.remove_prefix(dot + 1);
    }
    if (count < kWords || words[0] != "$JS" || words[1] != "ACK") return false;
    const std::size_t at = count >= kNewWords ? 7 : 5;
    return ReadDigits(words[at], places.inStream) && ReadDigits(words[at + 1], places.inDelivery);
}

}  // namespace tarvex
