#include "tarvex/nats/Replies.h"

#include <array>
#include <charconv>

namespace tarvex {
namespace {

constexpr char kMark = '~';
constexpr int kBase = 36;

bool ReadDigits(std::string_view text, std::uint64_t& number, int base = 10) {
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc{} && parsed == end && number != 0;
}

}  // namespace

char* WriteNumber(char* text, const Number& number) {
    *text++ = kMark;
    text += number.run.copy(text, kRunSize);
    text = std::to_chars(text, text + kLongestNumberText, number.number, kBase).ptr;
    if (number.isAgain) *text++ = kMark;
    return text;
}

bool ReadNumber(std::string_view reply, Number& number) {
    if (reply.size() <= 1 + kRunSize || reply.front() != kMark) return false;
    number.isAgain = reply.back() == kMark;
    if (number.isAgain) reply.remove_suffix(1);
    if (reply.size() <= 1 + kRunSize) return false;
    number.run = reply.substr(1, kRunSize);
    return ReadDigits(reply.substr(1 + kRunSize), number.number, kBase);
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
