#include "demo/Text.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace demo {

std::optional<double> ParseNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto [parsed, failure] = std::from_chars(text.data(), end, value);
    if (failure != std::errc() || parsed != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::string Fixed(double value, int decimals) {
    // The longest finite double has 309 digits before the point.
    char text[400];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    std::string_view view = text;
    if (view.starts_with('-') && view.find_first_not_of("-0.") == std::string_view::npos) view.remove_prefix(1);
    return std::string(view);
}

std::string Grouped(std::uint64_t count) {
    std::string text = std::to_string(count);
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, 1, ',');
    }
    return text;
}

std::string Counted(std::uint64_t count, const char* one, const char* many) {
    return Grouped(count) + ' ' + (count == 1 ? one : many);
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMostShown = 24;
    std::string shown(text.substr(0, kMostShown));
    for (char& character : shown)
        if (character < ' ' || character > '~') character = '?';
    return "\"" + shown + (text.size() > kMostShown ? "...\"" : "\"");
}

}  // namespace demo
