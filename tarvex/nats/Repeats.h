#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tarvex/nats/Replies.h"

namespace tarvex {

/// Tells a message that came already. Each run of a sender numbers its messages; after a cut it sends the
/// last ones again, marked, and overlapping subscriptions bring a message more than once in a row. A number
/// holds for the sender that the subject names, which the server can check: no other one can spoil it.
class Repeats {
public:
    /// `sender` is `Subjects::SenderOf` the message.
    bool IsNew(std::string_view sender, const Number& number);

private:
    static constexpr std::size_t kMostRuns = 4096;  // then the memory of all starts anew

    using Numbers = std::unordered_map<std::string, std::uint64_t>;  // by run and sender
    bool IsLatest(std::string_view sender, std::string_view run) const;

    Numbers last_;
    std::string name_;
    Numbers::iterator latest_ = last_.end();  // of the sender that came last
};

}  // namespace tarvex
