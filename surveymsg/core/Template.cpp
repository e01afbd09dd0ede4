#include <surveymsg/core/detail/Template.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <surveymsg/core/detail/ValueText.h>

namespace surveymsg::detail {
namespace {

constexpr int kMostDigits = 3;
// The longest number: 309 digits of the largest double, a point, 999 decimals, a sign.
constexpr std::size_t kLongestNumber = 1400;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// At most three digits; null if there are more.
const char* ParseDigits(const char* text, int& value) {
    value = 0;
    for (int digits = 0; IsDigit(*text); ++text) {
        if (++digits > kMostDigits) return nullptr;
        value = value * 10 + (*text - '0');
    }
    return text;
}

void AppendPadded(TextBuffer& out, const Conversion& conversion, std::string_view text) {
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t padding = width > text.size() ? width - text.size() : 0;
    if (!conversion.leftAligned) out.Append(padding, ' ');
    out.Append(text);
    if (conversion.leftAligned) out.Append(padding, ' ');
}

// Sign in front, then zeros if the width asks for them.
void AppendDigits(TextBuffer& out, const Conversion& conversion, std::string_view digits) {
    const bool negative = digits.front() == '-';
    if (negative) digits.remove_prefix(1);
    const char sign = negative ? '-' : conversion.sign;
    const std::size_t length = digits.size() + (sign ? 1 : 0);
    const auto width = static_cast<std::size_t>(conversion.width);
    const std::size_t padding = width > length ? width - length : 0;
    const bool zeros = conversion.zeroFilled && !conversion.leftAligned;
    if (!conversion.leftAligned && !zeros) out.Append(padding, ' ');
    if (sign) out.Append({&sign, 1});
    if (zeros) out.Append(padding, '0');
    out.Append(digits);
    if (conversion.leftAligned) out.Append(padding, ' ');
}

// The system's own printf, with a format built from checked parts.
template <class T>
void AppendPrinted(TextBuffer& out, const Conversion& conversion, const char* modifier, T value) {
    char format[24];
    char* end = format;
    *end++ = '%';
    if (conversion.leftAligned) *end++ = '-';
    if (conversion.zeroFilled) *end++ = '0';
    if (conversion.alternate) *end++ = '#';
    if (conversion.sign) *end++ = conversion.sign;
    if (conversion.width) end = std::to_chars(end, end + kMostDigits, conversion.width).ptr;
    if (conversion.precision >= 0) {
        *end++ = '.';
        end = std::to_chars(end, end + kMostDigits, conversion.precision).ptr;
    }
    while (*modifier) *end++ = *modifier++;
    *end++ = conversion.type;
    *end = '\0';
    char text[kLongestNumber];
    const int length = std::snprintf(text, sizeof text, format, value);
    if (length > 0) out.Append({text, static_cast<std::size_t>(length)});
}

}  // namespace

void TextBuffer::Spill(std::string_view text) {
    if (spilled_.empty()) spilled_.assign(short_, length_);
    spilled_.append(text);
}

void TextBuffer::Append(std::size_t count, char character) {
    char run[64];
    std::memset(run, character, sizeof run);
    for (; count > sizeof run; count -= sizeof run) Append({run, sizeof run});
    Append({run, count});
}

void TextBuffer::MoveTo(CString& out) const {
    std::string_view text = View();
    text = text.substr(0, text.find('\0'));
    out.Assign(text.data(), static_cast<int>(text.size()));
}

bool Conversion::IsFloat() const { return type && std::strchr("fFeEgGaA", type); }
bool Conversion::IsInteger() const { return type && std::strchr("dioxXuc", type); }

const char* ParseConversion(const char* text, Conversion& conversion) {
    for (;; ++text) {
        if (*text == '-')
            conversion.leftAligned = true;
        else if (*text == '0')
            conversion.zeroFilled = true;
        else if (*text == '#')
            conversion.alternate = true;
        else if (*text == '+')
            conversion.sign = '+';
        else if (*text == ' ') {
            if (!conversion.sign) conversion.sign = ' ';
        } else
            break;
    }
    text = ParseDigits(text, conversion.width);
    if (text && *text == '.') text = ParseDigits(text + 1, conversion.precision);
    if (!text) return nullptr;
    while (*text && std::strchr("hlLqjzt", *text)) ++text;
    if (*text == 'I') {  // the platform's own: I, I32, I64
        ++text;
        if (!std::strncmp(text, "64", 2) || !std::strncmp(text, "32", 2)) text += 2;
    }
    conversion.type = *text;
    return conversion.IsNumber() || conversion.type == 's' ? text + 1 : nullptr;
}

bool ParseTemplate(const char* format, Template& parsed) {
    const char* behind = nullptr;  // the conversion, once it is found
    const char* at = format;
    for (; *at; ++at) {
        if (*at != '%') continue;
        if (at[1] == '%') {
            ++at;
            continue;
        }
        if (behind) return false;
        parsed.head = {format, static_cast<std::size_t>(at - format)};
        behind = ParseConversion(at + 1, parsed.conversion);
        if (!behind) return false;
        at = behind - 1;
    }
    (behind ? parsed.tail : parsed.head) = {behind ? behind : format,
                                            static_cast<std::size_t>(at - (behind ? behind : format))};
    return true;
}

void AppendLiteral(TextBuffer& out, std::string_view literal) {
    for (std::size_t pair; (pair = literal.find("%%")) != std::string_view::npos; literal.remove_prefix(pair + 2))
        out.Append(literal.substr(0, pair + 1));
    out.Append(literal);
}

void AppendNumber(TextBuffer& out, const Conversion& conversion, double value) {
    if (conversion.IsInteger()) return AppendInteger(out, conversion, ToInteger(value), false);
    const char type = conversion.type;
    // The standard conversions in the "C" form, at a fifth of printf's cost. Infinities and the rest go to
    // printf, which knows their padding.
    if (!std::isfinite(value) || conversion.alternate || type == 'a' || type == 'A')
        return AppendPrinted(out, conversion, "", value);
    const int precision = conversion.precision < 0 ? 6 : conversion.precision;
    const auto form = type == 'f' || type == 'F'   ? std::chars_format::fixed
                      : type == 'e' || type == 'E' ? std::chars_format::scientific
                                                   : std::chars_format::general;
    char text[kLongestNumber];
    const auto result = std::to_chars(text, text + sizeof text, value, form, precision);
    if (type == 'E' || type == 'G')
        for (char* c = text; c != result.ptr; ++c)
            if (*c == 'e') *c = 'E';
    AppendDigits(out, conversion, {text, static_cast<std::size_t>(result.ptr - text)});
}

void AppendInteger(TextBuffer& out, const Conversion& conversion, std::int64_t value, bool is32Bits) {
    if (conversion.IsFloat()) return AppendNumber(out, conversion, static_cast<double>(value));
    if (conversion.type == 'c') {
        const char character = static_cast<char>(value);
        return AppendPadded(out, conversion, {&character, 1});
    }
    const bool isSigned = conversion.type == 'd' || conversion.type == 'i';
    if (isSigned && conversion.precision < 0) {
        char text[24];
        const auto result = std::to_chars(text, text + sizeof text, value);
        return AppendDigits(out, conversion, {text, static_cast<std::size_t>(result.ptr - text)});
    }
    if (isSigned) return AppendPrinted(out, conversion, "ll", static_cast<long long>(value));
    const auto bits = static_cast<unsigned long long>(value);
    AppendPrinted(out, conversion, "ll", is32Bits ? bits & 0xFFFFFFFFu : bits);
}

void AppendText(TextBuffer& out, const Conversion& conversion, std::string_view text) {
    if (conversion.precision >= 0) text = text.substr(0, static_cast<std::size_t>(conversion.precision));
    AppendPadded(out, conversion, text);
}

}  // namespace surveymsg::detail
