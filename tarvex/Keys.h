#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarvex {

inline constexpr std::size_t kLongestKey = 1000;
inline constexpr std::uint32_t kLargestBody = 1310720;

/// The five keys of a message. The texts belong to somebody else.
struct Address {
    std::string_view node;
    std::string_view task;
    std::uint32_t number = 0;
    std::string_view msgKey;
    std::string_view identifier;
};

inline bool operator==(const Address& a, const Address& b) {
    return a.msgKey == b.msgKey && a.identifier == b.identifier && a.number == b.number && a.task == b.task &&
           a.node == b.node;
}

/// "*" for a text and 0 for the number match anything.
bool Matches(const Address& pattern, const Address& address);

/// An address that owns its texts.
class OwnedAddress {
public:
    explicit OwnedAddress(const Address& address);
    Address View() const { return {node_, task_, number_, msgKey_, identifier_}; }

private:
    std::string node_;
    std::string task_;
    std::uint32_t number_;
    std::string msgKey_;
    std::string identifier_;
};

// A key text is the five keys in bus order, joined by dots:
//
//     keytext    = token "." token "." number "." token "." token
//     token      = "%"                    the empty text
//                | 1*( byte | escape )
//     byte       = any but 0x00 to 0x20, 0x7F and  . * > % " and the backslash
//     escape     = "%" HEX HEX
//
// So POS/Vessel 1 reads POS/Vessel%201. On reading, a wildcard may stand as a bare "*".

/// Appends the token of one key.
void AppendToken(std::string& out, std::string_view key);

/// Appends the key text of `address`.
void AppendKeyText(std::string& out, const Address& address);

/// Takes the key text `text`, up to its terminator, apart in place: the address points into it, each key
/// terminated. False if it is none; the text may then be changed all the same. `end` is the terminator.
bool ParseKeyText(char* text, Address& address, char*& end);

}  // namespace tarvex
