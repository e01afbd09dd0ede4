#pragma once

#include <memory>
#include <vector>

#include <surveymsg/core/Msg.h>

namespace surveymsg::detail {

struct FreesMsg {
    void operator()(CMsg* message) const { FreeMsg(message); }
};
using OwnedMsg = std::unique_ptr<CMsg, FreesMsg>;

/// The nested messages of one archive that are under way, outermost first.
///
/// A message's base share is the last of its stream, so a message with nested ones does not have to
/// finish inside its own `Serialize`: it enters itself here, and the outermost share works the levels
/// off in a loop. The depth of nesting, which a sender chooses, so costs heap and no stack.
class Nesting {
public:
    struct Level {
        CMsg* message;    // whose nested messages these are
        OwnedMsg owned;   // the same message while it is loaded and no other owns it
        std::int32_t at;  // storing: the next one's index; loading: how many are still to come
    };

    Nesting(CArchive& archive, CMsg* outermost, std::int32_t at)
        : archive_(archive), outermost_{outermost, nullptr, at} {
        archive_.nesting_ = this;
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    ~Nesting() { archive_.nesting_ = nullptr; }

    static Nesting* Of(CArchive& archive) { return archive.nesting_; }

    std::size_t Depth() const { return 1 + inner_.size(); }
    Level& Innermost() { return inner_.empty() ? outermost_ : inner_.back(); }
    void Open(CMsg* message, std::int32_t at) { inner_.push_back({message, nullptr, at}); }
    /// Ends the innermost level, which is not the outermost; gives its message if the level owned it.
    OwnedMsg Close() {
        OwnedMsg owned = std::move(inner_.back().owned);
        inner_.pop_back();
        return owned;
    }

private:
    CArchive& archive_;
    Level outermost_;  // the common case is nothing but this one, and needs no heap
    std::vector<Level> inner_;
};

/// Levels that the deepest encoded message has: each takes at least 33 bytes, but the outermost 20.
inline constexpr std::size_t kMostLevels = 1 + (122880 - 20) / 33;

}  // namespace surveymsg::detail
