#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tarvex/nats/Replies.h"

namespace tarvex {

/// Tells a message that came already. Each run of a sender numbers its messages; after a cut it sends the
/// last ones again, marked, and overlapping subscriptions bring a message more than once in a row. Only
/// such a one can be taken for a repeat: a false number loses no message that is not marked.
class Repeats {
public:
    bool IsNew(const Number& number);

private:
    static constexpr std::size_t kMostRuns = 4096;  // then the memory of all starts anew

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Numbers = std::unordered_map<std::string, std::uint64_t, Hash, std::equal_to<>>;
    Numbers last_;
    Numbers::iterator latest_ = last_.end();  // of the sender that came last
};

}  // namespace tarvex
