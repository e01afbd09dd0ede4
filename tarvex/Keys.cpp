#include "tarvex/Keys.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace tarvex {
namespace {

constexpr char kSeparator = '.';
constexpr char kEscape = '%';
constexpr std::string_view kAny = "*";

bool TextMatches(std::string_view pattern, std::string_view text) { return pattern == text || pattern == kAny; }

constexpr std::array<bool, 256> kNeedsEscape = [] {
    std::array<bool, 256> table{};
    for (int byte = 0; byte <= 0x20; ++byte) table[static_cast<unsigned char>(byte)] = true;
    for (const char byte : {'\x7F', '.', '*', '>', '%', '"', '\\'}) table[static_cast<unsigned char>(byte)] = true;
    return table;
}();

bool NeedsEscape(char c) { return kNeedsEscape[static_cast<unsigned char>(c)]; }

// Undoes the escapes of the token at `text` in place. False if there is no sound token.
bool ParseToken(char* text, char* end, std::string_view& token) {
    char* to = text;
    const bool isEmptyText = end - text == 1 && *text == kEscape;
    for (const char* from = text; from != end && !isEmptyText;) {
        if (*from != kEscape) {
            *to++ = *from++;
            continue;
        }
        unsigned byte = 0;
        if (end - from < 3) return false;
        const auto [parsed, error] = std::from_chars(from + 1, from + 3, byte, 16);
        if (error != std::errc{} || parsed != from + 3 || byte == 0) return false;
        *to++ = static_cast<char>(byte);
        from += 3;
    }
    if (to == text && !isEmptyText) return false;
    *to = '\0';
    token = {text, static_cast<std::size_t>(to - text)};
    return true;
}

}  // namespace

bool Matches(const Address& pattern, const Address& address) {
    return TextMatches(pattern.msgKey, address.msgKey) && TextMatches(pattern.identifier, address.identifier) &&
           (pattern.number == 0 || pattern.number == address.number) && TextMatches(pattern.task, address.task) &&
           TextMatches(pattern.node, address.node);
}

OwnedAddress::OwnedAddress(const Address& address)
    : node_(address.node),
      task_(address.task),
      number_(address.number),
      msgKey_(address.msgKey),
      identifier_(address.identifier) {}

void AppendToken(std::string& out, std::string_view key) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    if (key.empty()) out += kEscape;
    while (!key.empty()) {
        const auto plain = static_cast<std::size_t>(std::find_if(key.begin(), key.end(), NeedsEscape) - key.begin());
        out.append(key, 0, plain);
        if (plain == key.size()) return;
        const auto byte = static_cast<unsigned char>(key[plain]);
        out += kEscape;
        out += kDigits[byte >> 4];
        out += kDigits[byte & 0xF];
        key.remove_prefix(plain + 1);
    }
}

void AppendKeyText(std::string& out, const Address& address) {
    AppendToken(out, address.node);
    out += kSeparator;
    AppendToken(out, address.task);
    out += kSeparator;
    out += std::to_string(address.number);
    out += kSeparator;
    AppendToken(out, address.msgKey);
    out += kSeparator;
    AppendToken(out, address.identifier);
}

bool ParseKeyText(char* text, Address& address, char*& end) {
    constexpr int kKeys = 5;
    constexpr int kNumber = 2;
    std::string_view* const texts[kKeys] = {&address.node, &address.task, nullptr, &address.msgKey,
                                            &address.identifier};
    end = text + std::strlen(text);
    char* token = text;
    for (int key = 0; key < kKeys; ++key) {
        char* tokenEnd = static_cast<char*>(std::memchr(token, kSeparator, static_cast<std::size_t>(end - token)));
        if ((tokenEnd == nullptr) != (key == kKeys - 1)) return false;  // too few or too many
        if (!tokenEnd) tokenEnd = end;
        if (key == kNumber) {
            const auto [parsed, error] = std::from_chars(token, tokenEnd, address.number);
            if (error != std::errc{} || parsed != tokenEnd) return false;
        } else if (!ParseToken(token, tokenEnd, *texts[key])) {
            return false;
        }
        token = tokenEnd + 1;
    }
    return true;
}

}  // namespace tarvex
