#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace demo {

/// The number that `text` is, all of it, in any locale; nothing if it is none or not finite.
std::optional<double> ParseNumber(std::string_view text);

/// `value` with that many decimals, never "-0.000".
std::string Fixed(double value, int decimals);

/// 200000 as "200,000".
std::string Grouped(std::uint64_t count);

/// "1 shot", "200,000 shots".
std::string Counted(std::uint64_t count, const char* one, const char* many);

/// The start of `text` in quotes, made fit for a terminal.
std::string Quoted(std::string_view text);

}  // namespace demo
