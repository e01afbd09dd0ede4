#pragma once

#include <string>
#include <string_view>

#include "tarvex/Identity.h"
#include "tarvex/Keys.h"

namespace tarvex {

/// The words that the bus says to the engine. A message's subject is a domain word, "m" and the key text:
///
///     <domain>.m.<node>.<task>.<number>.<key>.<identifier>    messages
///     <domain>.f.<node>.<task>.<number>.<key>.<identifier>    asks one sender for a pair's format
///     <domain>.a.<key>.<identifier>                           asks all senders of a pair
///     <domain>.a                                              asks all
///
/// The engine ends a connection that names a longer subject than it takes. So a token of more than
/// `kLongestToken` characters is "%~" and a digest of its key instead, and the message carries its key text
/// in a header.
class Subjects {
public:
    static constexpr std::size_t kLongestToken = 800;
    static constexpr const char* kKeysHeader = "Tvx-Keys";

    Subjects(const std::string& domain, const Identity& identity);

    struct Subject {
        std::string text;
        std::string keys;  ///< the key text, only if the subject does not tell all of it
    };
    /// What this process sends to a pair. The given texts are used again.
    void Message(std::string_view msgKey, std::string_view identifier, Subject& subject) const;

    /// What to subscribe to for a pattern; "*" and number 0 become the engine's wildcard.
    std::string Pattern(const Address& pattern) const;
    std::string FormatOfSender(const Address& sender) const;
    std::string FormatOfPair(std::string_view msgKey, std::string_view identifier) const;
    std::string FormatOfAny() const { return root_ + ".a"; }
    std::string AllMessages() const { return root_ + ".m.>"; }

    /// Where the engine answers this process, a dot at the end. The first words are the node's own, so that a
    /// server can keep others out; the last can be guessed by nobody.
    std::string Inbox(char purpose) const;
    /// The first words of all of them, for the engine's client.
    std::string InboxOfNode() const;
    /// Where no one but the bus asks to be answered. Elsewhere an answer would be a message in this program's name.
    static bool IsInbox(std::string_view reply) { return reply.starts_with("_INBOX."); }

    /// All words of a message but its pair.
    static std::string_view SenderOf(std::string_view subject);
    /// Whether the keys have to come from the header.
    static bool IsDigest(std::string_view subject);
    /// The keys of a message with this subject, and this key text if `IsDigest`. False if it is none of the
    /// bus's, or if the bus would write the subject otherwise: a server's permissions look at how it is written. The
    /// address points into `scratch`.
    bool Parse(std::string_view subject, const char* keys, std::string& scratch, Address& address) const;

private:
    const Identity& identity_;
    const std::string root_;
    std::string own_;  // root, "m" and the sender's tokens, a dot behind each
    bool ownIsDigest_ = false;
};

}  // namespace tarvex
