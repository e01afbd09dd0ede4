#include "tarvex/nats/Subjects.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "tarvex/nats/Secrets.h"

namespace tarvex {
namespace {

constexpr std::string_view kDigestMark = "%~";
constexpr std::size_t kLongestInboxWord = 64;
constexpr std::size_t kInboxWord = 16;

// Two of the well-known 64-bit hashes of Fowler, Noll and Vo. What two keys share by chance is told apart by
// the header.
std::string Digest(std::string_view key) {
    std::uint64_t forward = 0xCBF29CE484222325, backward = forward;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    for (std::size_t i = 0; i < key.size(); ++i) {
        forward = (forward ^ static_cast<unsigned char>(key[i])) * kPrime;
        backward = (backward ^ static_cast<unsigned char>(key[key.size() - 1 - i])) * kPrime;
    }
    char text[40];
    std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(forward),
                  static_cast<unsigned long long>(backward));
    return std::string(kDigestMark) + text;
}

// True if the token is a digest.
bool Append(std::string& out, std::string_view key) {
    const std::size_t start = out.size();
    AppendToken(out, key);
    if (out.size() - start <= Subjects::kLongestToken) return false;
    out.resize(start);
    out += Digest(key);
    return true;
}

void AppendPattern(std::string& out, std::string_view key) {
    if (key == "*")
        out += key;
    else
        Append(out, key);
}

bool AppendSender(std::string& out, const Address& sender) {
    const bool isDigest = Append(out, sender.node);
    out += '.';
    const bool isTaskDigest = Append(out, sender.task);
    out += '.';
    out += std::to_string(sender.number);
    out += '.';
    return isDigest || isTaskDigest;
}

bool AppendPair(std::string& out, std::string_view msgKey, std::string_view identifier) {
    const bool isDigest = Append(out, msgKey);
    out += '.';
    return Append(out, identifier) || isDigest;
}

bool IsKey(std::string_view key) { return key.size() <= kLongestKey; }

}  // namespace

Subjects::Subjects(const std::string& domain, const Identity& identity)
    : identity_(identity), root_(domain), own_(domain + ".m.") {
    ownIsDigest_ = AppendSender(own_, identity.Sends({}, {}));
}

void Subjects::Message(std::string_view msgKey, std::string_view identifier, Subject& subject) const {
    subject.text = own_;
    subject.keys.clear();
    if (AppendPair(subject.text, msgKey, identifier) || ownIsDigest_)
        AppendKeyText(subject.keys, identity_.Sends(msgKey, identifier));
}

std::string Subjects::Pattern(const Address& pattern) const {
    std::string text = root_ + ".m.";
    AppendPattern(text, pattern.node);
    text += '.';
    AppendPattern(text, pattern.task);
    text += '.';
    text += pattern.number == 0 ? "*" : std::to_string(pattern.number);
    text += '.';
    AppendPattern(text, pattern.msgKey);
    text += '.';
    AppendPattern(text, pattern.identifier);
    return text;
}

std::string Subjects::FormatOfSender(const Address& sender) const {
    std::string text = root_ + ".f.";
    AppendSender(text, sender);
    AppendPair(text, sender.msgKey, sender.identifier);
    return text;
}

std::string Subjects::FormatOfPair(std::string_view msgKey, std::string_view identifier) const {
    std::string text = root_ + ".a.";
    AppendPair(text, msgKey, identifier);
    return text;
}

std::string Subjects::InboxOfNode() const {
    std::string word;
    AppendToken(word, identity_.Sends({}, {}).node);
    // The store's requests, which name it, are text of a kind that not every byte survives.
    const bool isAscii = std::all_of(word.begin(), word.end(), [](char c) { return (c & 0x80) == 0; });
    if (!isAscii || word.size() > kLongestInboxWord) word = Digest(identity_.Sends({}, {}).node);
    return "_INBOX." + word;
}

std::string Subjects::Inbox(char purpose) const {
    return InboxOfNode() + "." + purpose + "." + SecretWord(kInboxWord) + ".";
}

std::string_view Subjects::SenderOf(std::string_view subject) {
    for (int word = 0; word < 2; ++word) subject = subject.substr(0, subject.rfind('.'));
    return subject;
}

bool Subjects::IsDigest(std::string_view subject) { return subject.find(kDigestMark) != std::string_view::npos; }

bool Subjects::Parse(std::string_view subject, const char* keys, std::string& scratch, Address& address) const {
    const std::size_t head = root_.size() + 3;
    if (subject.size() <= head || subject.find('*') != std::string_view::npos) return false;
    const bool isDigest = IsDigest(subject);
    if (isDigest && !keys) return false;
    if (isDigest)
        scratch = keys;
    else
        scratch.assign(subject.substr(head));
    char* end = nullptr;
    if (!ParseKeyText(scratch.data(), address, end)) return false;
    if (address.number == 0 || address.node.empty() || address.task.empty()) return false;
    if (!IsKey(address.node) || !IsKey(address.task) || !IsKey(address.msgKey) || !IsKey(address.identifier))
        return false;
    std::string told = root_ + ".m.";
    AppendSender(told, address);
    AppendPair(told, address.msgKey, address.identifier);
    return told == subject;
}

}  // namespace tarvex
