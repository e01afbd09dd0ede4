#include <surveymsg/core/detail/ValueText.h>

#include <langinfo.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <optional>

#include <surveymsg/core/Msg.h>
#include <surveymsg/core/detail/Clock.h>
#include <surveymsg/core/detail/Template.h>

namespace surveymsg::detail {
namespace {

bool IsBlank(const char* format) { return !format || !*format; }

constexpr Conversion DefaultOf(char type) {
    Conversion conversion;
    conversion.type = type;
    return conversion;
}

// "%f" and "%.Nf", which nearly all formats are, need no taking apart.
bool IsPlainFixed(const char* format, Conversion& conversion) {
    conversion.type = 'f';
    if (IsBlank(format)) return true;
    if (format[0] != '%') return false;
    if (format[1] == 'f') return format[2] == '\0';
    if (format[1] != '.' || format[2] < '0' || format[2] > '9' || format[3] != 'f' || format[4] != '\0') return false;
    conversion.precision = format[2] - '0';
    return true;
}

// Every rule in one: the default unless `format` is a template whose conversion the value fits.
template <class Fits, class Append>
void FormatBy(CString& out, const char* format, char defaultType, Fits&& fits, Append&& append) {
    TextBuffer text;
    Template parsed;
    if (!IsBlank(format) && ParseTemplate(format, parsed) && (!parsed.conversion.type || fits(parsed.conversion))) {
        AppendLiteral(text, parsed.head);
        if (parsed.conversion.type) append(text, parsed.conversion);
        AppendLiteral(text, parsed.tail);
    } else {
        append(text, DefaultOf(defaultType));
    }
    text.MoveTo(out);
}

}  // namespace

void FormatNumber(CString& out, const char* format, double value) {
    if (Conversion conversion; IsPlainFixed(format, conversion)) {
        TextBuffer text;
        AppendNumber(text, conversion, value);
        return text.MoveTo(out);
    }
    FormatBy(
        out, format, 'f', [](const Conversion& conversion) { return conversion.IsNumber(); },
        [value](TextBuffer& text, const Conversion& conversion) { AppendNumber(text, conversion, value); });
}

void FormatNumber(CString& out, const char* format, std::int32_t value) {
    FormatBy(
        out, format, 'd', [](const Conversion& conversion) { return conversion.IsNumber(); },
        [value](TextBuffer& text, const Conversion& conversion) { AppendInteger(text, conversion, value, true); });
}

void FormatNumber(CString& out, const char* format, std::uint32_t value) {
    FormatBy(
        out, format, 'd', [](const Conversion& conversion) { return conversion.IsNumber(); },
        [value](TextBuffer& text, const Conversion& conversion) {
            if (conversion.IsFloat())
                AppendNumber(text, conversion, value);
            else
                AppendInteger(text, conversion, static_cast<std::int32_t>(value), true);
        });
}

void FormatText(CString& out, const char* format, std::string_view value) {
    value = value.substr(0, value.find('\0'));
    if (IsBlank(format)) return out.Assign(value.data(), static_cast<int>(value.size()));
    FormatBy(
        out, format, 's', [](const Conversion& conversion) { return conversion.type == 's'; },
        [value](TextBuffer& text, const Conversion& conversion) { AppendText(text, conversion, value); });
}

namespace {

// The three units of an angle, largest first. A format may hold each once, in this order.
constexpr std::string_view kTokens[] = {"DEG%", "MIN%", "SEC%"};
constexpr std::size_t kUnitCount = std::size(kTokens);
constexpr double kStep = 60.0;  // from a unit to the next smaller one
constexpr double kPerStep = 0.016666666666666666;
constexpr double kPerTwoSteps = 0.0002777777777777778;

// A degree format taken apart: what stands before the first token, then for each unit its conversion and
// the literal behind it.
struct DegreeFormat {
    std::string_view head;
    struct Part {
        bool present = false;
        Conversion conversion;
        std::string_view literal;
    } parts[kUnitCount];
};

// Where the next token begins, and whose it is.
std::size_t FindToken(std::string_view format, std::size_t from, std::size_t& unit) {
    constexpr std::size_t kWord = 3;
    for (std::size_t percent = format.find('%', from); percent != std::string_view::npos;
         percent = format.find('%', percent + 1)) {
        if (percent < from + kWord) continue;
        const std::string_view token = format.substr(percent - kWord, kWord + 1);
        for (unit = 0; unit < kUnitCount; ++unit)
            if (token == kTokens[unit]) return percent - kWord;
    }
    return std::string_view::npos;
}

// False if a token stands twice or out of order, or has no conversion for a number behind it.
bool ParseDegrees(std::string_view format, DegreeFormat& parsed) {
    std::string_view* literal = &parsed.head;
    std::size_t begin = 0;
    std::size_t nextUnit = 0;
    for (;;) {
        std::size_t unit = 0;
        const std::size_t place = FindToken(format, begin, unit);
        *literal = format.substr(begin, place == std::string_view::npos ? place : place - begin);
        if (place == std::string_view::npos) return true;
        if (unit < nextUnit) return false;
        nextUnit = unit + 1;
        DegreeFormat::Part& part = parsed.parts[unit];
        // The format is terminated, so a conversion may be read behind the view's start.
        const char* behind = ParseConversion(format.data() + place + kTokens[unit].size(), part.conversion);
        if (!behind || !part.conversion.IsNumber()) return false;
        part.present = true;
        begin = static_cast<std::size_t>(behind - format.data());
        literal = &part.literal;
    }
}

// Renders minutes or seconds; `value` becomes what was printed. 60 starts over: the larger unit, which
// still holds the fraction, carries by its own rounding.
void RenderBelowSixty(TextBuffer& out, const Conversion& conversion, double& value) {
    TextBuffer over;
    value = AppendRounded(out, conversion, value);
    if (value < kStep || std::isnan(value)) return;
    value -= kStep;
    AppendNumber(over, conversion, value);
    out = over;
}

// For a negative angle: the hemisphere's letter changes, and carries the sign.
void TurnHemisphere(CString& text) {
    if (const int east = text.Find("E"); east >= 0)
        text.SetAt(east, 'W');
    else if (const int north = text.Find("N"); north >= 0)
        text.SetAt(north, 'S');
    else
        return;
    const std::string_view signedText = text.View();
    const std::size_t minus = signedText.find('-');
    if (minus == std::string_view::npos) return;
    const std::string_view behind = signedText.substr(minus + 1);
    char* start = text.GetBuffer(0);
    std::memmove(start + minus, behind.data(), behind.size());
    text.ReleaseBuffer(static_cast<int>(minus + behind.size()));
}

}  // namespace

bool HoldsDegreeToken(const char* format) {
    std::size_t unit = 0;
    return !IsBlank(format) && FindToken(format, 0, unit) != std::string_view::npos;
}

void FormatDegreeText(CString& out, const char* format, double value) {
    DegreeFormat parsed;
    if (!ParseDegrees(ViewOf(format), parsed)) return FormatNumber(out, nullptr, value);
    const auto& [degreesPart, minutesPart, secondsPart] = parsed.parts;

    double degrees = std::fabs(value);
    double minutes = (degrees - std::trunc(degrees)) * kStep;
    double seconds = (minutes - std::trunc(minutes)) * kStep;
    // Smallest unit first, since each takes out of the next what it has printed.
    TextBuffer secondsText;
    if (secondsPart.present) {
        RenderBelowSixty(secondsText, secondsPart.conversion, seconds);
        minutes -= seconds * kPerStep;
        degrees -= seconds * kPerTwoSteps;
    }
    TextBuffer minutesText;
    if (minutesPart.present) {
        RenderBelowSixty(minutesText, minutesPart.conversion, minutes);
        degrees -= minutes * kPerStep;
    }

    TextBuffer text;
    text.Append(parsed.head);
    if (degreesPart.present) {
        AppendNumber(text, degreesPart.conversion, value < 0.0 ? degrees * -1.0 : degrees);
        AppendLiteral(text, degreesPart.literal);
    }
    if (minutesPart.present) {
        text.Append(minutesText.View());
        AppendLiteral(text, minutesPart.literal);
    }
    if (secondsPart.present) {
        text.Append(secondsText.View());
        AppendLiteral(text, secondsPart.literal);
    }
    text.MoveTo(out);
    if (value < 0.0) TurnHemisphere(out);
}

void FormatAngle(CString& out, const char* format, double value) {
    if (HoldsDegreeToken(format))
        FormatDegreeText(out, format, value);
    else
        FormatNumber(out, format, value);
}

namespace {

constexpr std::size_t kCalendarText = 80;

char* PutTwoDigits(char* out, int number) {
    *out++ = static_cast<char>('0' + number / 10 % 10);
    *out++ = static_cast<char>('0' + number % 10);
    return out;
}

// The day of a year of our calendar, for days since 1970-01-01, counted in years that begin in March, so
// that the leap day comes last.
void SetDate(std::tm& calendar, int days) {
    const int sinceMarch = days + 719468;  // days since 0000-03-01
    const int era = sinceMarch / 146097;   // of 400 years
    const int dayOfEra = sinceMarch % 146097;
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int month = (5 * dayOfYear + 2) / 153;  // 0 is March
    calendar.tm_mday = dayOfYear - (153 * month + 2) / 5 + 1;
    calendar.tm_mon = month < 10 ? month + 2 : month - 10;
    calendar.tm_year = era * 400 + yearOfEra + (month < 10 ? 0 : 1) - 1900;
}

// The common conversions, without the detour through strftime. Gives the length, or nothing if
// the format holds anything else or needs more room.
std::optional<std::size_t> FormatCommon(char (&text)[kCalendarText], const char* format, std::int32_t seconds) {
    constexpr int kDay = 86400;
    constexpr std::size_t kLongestPiece = 16;
    std::tm calendar{};
    SetDate(calendar, seconds / kDay);
    const int ofDay = seconds % kDay;
    char* out = text;
    for (; *format; ++format) {
        if (static_cast<std::size_t>(text + kCalendarText - out) <= kLongestPiece) return std::nullopt;
        if (*format != '%') {
            *out++ = *format;
            continue;
        }
        switch (*++format) {
            case 'H':
                out = PutTwoDigits(out, ofDay / 3600);
                break;
            case 'M':
                out = PutTwoDigits(out, ofDay / 60 % 60);
                break;
            case 'S':
                out = PutTwoDigits(out, ofDay % 60);
                break;
            case 'd':
                out = PutTwoDigits(out, calendar.tm_mday);
                break;
            case 'm':
                out = PutTwoDigits(out, calendar.tm_mon + 1);
                break;
            case 'y':
                out = PutTwoDigits(out, calendar.tm_year);
                break;
            case 'Y':
                out = PutTwoDigits(PutTwoDigits(out, calendar.tm_year / 100 + 19), calendar.tm_year);
                break;
            case 'b': {  // the month's name is the locale's, as strftime has it
                const std::string_view name = nl_langinfo(ABMON_1 + calendar.tm_mon);
                if (name.size() > kLongestPiece) return std::nullopt;
                out += name.copy(out, name.size());
                break;
            }
            default:
                return std::nullopt;
        }
    }
    return static_cast<std::size_t>(out - text);
}

}  // namespace

bool FormatCalendar(CString& out, const char* format, double time) {
    constexpr double kLastSecond = std::numeric_limits<std::int32_t>::max();
    char text[kCalendarText];
    std::size_t length = 0;
    const double sinceUnix = std::trunc(time + kUnixEpochOffset);
    if (sinceUnix >= 0.0 && sinceUnix <= kLastSecond) {
        if (IsBlank(format)) format = "%H:%M:%S %d %b %y";
        if (const auto common = FormatCommon(text, format, static_cast<std::int32_t>(sinceUnix))) {
            length = *common;
        } else {
            const auto seconds = static_cast<std::time_t>(sinceUnix);
            std::tm calendar{};
            gmtime_r(&seconds, &calendar);
            length = std::strftime(text, sizeof text, format, &calendar);
        }
    }
    out.Assign(text, static_cast<int>(length));
    return length > 0;
}

std::int64_t ToInteger(double value) {
    constexpr double kLimit = 9223372036854775808.0;  // 2 to the power of 63
    return value >= -kLimit && value < kLimit ? static_cast<std::int64_t>(value) : 0;
}

}  // namespace surveymsg::detail

int CMsg::FormatTime(const char* format, CString* out, double time) {
    if (!out) return 0;
    return surveymsg::detail::FormatCalendar(*out, format, time == 0.0 ? MsgTime : time);
}

void CMsg::FormatString(double value, const char* format, CString* out) {
    if (ViewOf(format) == "%c") {
        const char character = static_cast<char>(surveymsg::detail::ToInteger(value));
        out->Assign(&character, character ? 1 : 0);
        return;
    }
    surveymsg::detail::FormatAngle(*out, format, value);
}

int CMsg::ValidNumberFormat(const char* format) {
    constexpr std::string_view kSkipped = "0123456789.-+hlIL";
    if (!format) return 1;
    while (*format) {
        if (*format++ != '%') continue;
        while (*format && kSkipped.find(*format) != std::string_view::npos) ++format;
        if (*format == 's' || *format == 'S') return 0;
        if (*format) ++format;
    }
    return 1;
}

int CMsg::SpecialDegreesFormat(CString format) { return surveymsg::detail::HoldsDegreeToken(format); }

void CMsg::FormatDegrees(CString& out, const char* format, double value) {
    surveymsg::detail::FormatDegreeText(out, format, value);
}
