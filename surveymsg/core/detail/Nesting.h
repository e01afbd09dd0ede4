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

    explicit Nesting(CArchive& archive) : archive_(archive) { archive_.nesting_ = this; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    ~Nesting() { archive_.nesting_ = nullptr; }

    static Nesting* Of(CArchive& archive) { return archive.nesting_; }

    std::vector<Level> levels;

private:
    CArchive& archive_;
};

/// Levels that the deepest encoded message has: each takes at least 33 bytes, but the outermost 20.
inline constexpr std::size_t kMostLevels = 1 + (122880 - 20) / 33;

}  // namespace surveymsg::detail
