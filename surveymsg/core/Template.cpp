#include <surveymsg/core/detail/Template.h>

#include <algorithm>
#include <bit>
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

bool IsLengthModifier(char c) {
    switch (c) {
        case 'h':
        case 'l':
        case 'L':
        case 'q':
        case 'j':
        case 'z':
        case 't':
            return true;
        default:
            return false;
    }
}

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

#if defined(__SIZEOF_INT128__)

constexpr int kMostDecimals = 9;
constexpr std::uint64_t kPowers[kMostDecimals + 1] = {1,      10,      100,      1000,      10000,
                                                      100000, 1000000, 10000000, 100000000, 1000000000};
__extension__ using Wide = unsigned __int128;

// A number below 10^9 times a power of ten, as a whole number: the exact value of the double rounded to
// nearest, ties to even, as printf has it. Cheaper than the general way, and nearly all numbers of
// this field are of this kind. False for the others.
bool ScaleExactly(double magnitude, int decimals, std::uint64_t& scaled) {
    constexpr double kMost = 1e9;
    constexpr int kMantissaBits = 52;
    constexpr int kUnitExponent = 1075;  // of a mantissa that counts ones
    constexpr int kVanishes = 90;        // the product has at most 83 bits
    if (!(magnitude < kMost) || decimals > kMostDecimals) return false;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const auto biased = static_cast<int>(bits >> kMantissaBits);
    std::uint64_t mantissa = bits & ((std::uint64_t{1} << kMantissaBits) - 1);
    if (biased > 0) mantissa |= std::uint64_t{1} << kMantissaBits;
    const int shift = kUnitExponent - (biased > 0 ? biased : 1);  // at least 23
    scaled = 0;
    if (shift > kVanishes) return true;
    const Wide product = Wide{mantissa} * kPowers[decimals];
    scaled = static_cast<std::uint64_t>(product >> shift);
    const Wide rest = product - (Wide{scaled} << shift);
    const Wide half = Wide{1} << (shift - 1);
    if (rest > half || (rest == half && scaled % 2 == 1)) ++scaled;
    return true;
}

// Writes the digits of a scaled number with its point; gives their end.
char* PutScaled(char* out, std::uint64_t scaled, int decimals) {
    out = std::to_chars(out, out + 24, scaled / kPowers[decimals]).ptr;
    if (decimals == 0) return out;
    *out = '.';
    std::uint64_t fraction = scaled % kPowers[decimals];
    for (int place = decimals; place > 0; --place, fraction /= 10) out[place] = static_cast<char>('0' + fraction % 10);
    return out + 1 + decimals;
}

bool AppendFixed(TextBuffer& out, const Conversion& conversion, double value, double& printed) {
    if (conversion.type != 'f' || conversion.alternate) return false;
    const int decimals = conversion.precision < 0 ? 6 : conversion.precision;
    std::uint64_t scaled = 0;
    if (!ScaleExactly(std::fabs(value), decimals, scaled)) return false;
    char text[48];
    char* digits = text;
    if (std::signbit(value)) *digits++ = '-';
    char* end = PutScaled(digits, scaled, decimals);
    AppendDigits(out, conversion, {text, static_cast<std::size_t>(end - text)});
    printed = static_cast<double>(scaled) / static_cast<double>(kPowers[decimals]);
    if (std::signbit(value)) printed = -printed;
    return true;
}

#else

bool AppendFixed(TextBuffer&, const Conversion&, double, double&) { return false; }

#endif

// The number that a rendered text begins with.
double NumberIn(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" +"), text.size()));
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
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
    while (IsLengthModifier(*text)) ++text;
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

double AppendRounded(TextBuffer& out, const Conversion& conversion, double value) {
    double printed = 0.0;
    if (AppendFixed(out, conversion, value, printed)) return printed;
    TextBuffer text;
    AppendNumber(text, conversion, value);
    out.Append(text.View());
    return NumberIn(text.View());
}

void AppendNumber(TextBuffer& out, const Conversion& conversion, double value) {
    double printed = 0.0;
    if (AppendFixed(out, conversion, value, printed)) return;
    if (conversion.IsInteger()) return AppendInteger(out, conversion, ToInteger(value), false);
    const char type = conversion.type;
    // The standard conversions in the "C" form, cheaper than by printf. Infinities and the rest go to
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
