#pragma once

#include <cstdint>
#include <string_view>

namespace surveymsg::detail {

/// SipHash-1-3 under a key that is drawn once per process, so that no sender can choose keys that
/// collide.
std::uint64_t SeededHash(std::string_view text);

}  // namespace surveymsg::detail
