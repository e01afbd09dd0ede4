// Text forms of a member, beside what the standard library has for the same characters.

#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "operations/Operations.h"
#include "peers/Surveymsg.h"
#include "suite/Keep.h"
#include "values/Sample.h"

namespace bench {
namespace {

constexpr std::size_t kText = 80;
constexpr double kUnixEpochOffset = 315964800.0;  // seconds from 1970-01-01 to 1980-01-06

// The angles of the sample are positive and not near a full minute, so the plain way needs no carrying.
struct Angle {
    explicit Angle(double degrees)
        : whole(std::floor(degrees)),
          minutes((degrees - whole) * 60.0),
          wholeMinutes(std::floor(minutes)),
          seconds((minutes - wholeMinutes) * 60.0) {}
    double whole, minutes, wholeMinutes, seconds;
};

int Default(const Position& p, char* text) { return std::snprintf(text, kText, "%f", p.north); }

int ThreeDecimals(const Position& p, char* text) { return std::snprintf(text, kText, "%.3f", p.north); }

int Minutes(const Position& p, char* text) {
    const Angle angle(p.latitude);
    return std::snprintf(text, kText, "%02.0f %06.3f N", angle.whole, angle.minutes);
}

int Seconds(const Position& p, char* text) {
    const Angle angle(p.longitude);
    return std::snprintf(text, kText, "%03.0f %02.0f %05.2f E", angle.whole, angle.wholeMinutes, angle.seconds);
}

int Time(const Position& p, char* text) {
    const auto seconds = static_cast<std::time_t>(p.time + kUnixEpochOffset);
    std::tm calendar{};
    gmtime_r(&seconds, &calendar);
    return static_cast<int>(std::strftime(text, kText, "%H:%M:%S %d %b %y", &calendar));
}

int Name(const Position& p, char* text) { return std::snprintf(text, kText, "%s", p.name.c_str()); }

struct Form {
    const char* operation;
    std::uint16_t member;
    const char* format;
    int (*plain)(const Position&, char* text);
};

constexpr Form kForms[] = {
    {"text/default", 103, nullptr, Default},
    {"text/3-decimals", 103, "%.3f", ThreeDecimals},
    {"text/degrees-minutes", 110, "DEG%02.0f MIN%06.3f N", Minutes},
    {"text/degrees-minutes-seconds", 111, "DEG%03.0f MIN%02.0f SEC%05.2f E", Seconds},
    {"text/time", 1, nullptr, Time},
    {"text/text", 100, nullptr, Name},
};

std::unique_ptr<CPosnMsg> FilledMessage() {
    auto message = std::make_unique<CPosnMsg>();
    SurveymsgPeer::Fill(SamplePosition(), *message);
    return message;
}

bool SameCharacters(const Form& form) {
    char plain[kText];
    const int length = form.plain(SamplePosition(), plain);
    CString text;
    FilledMessage()->FormatString(form.member, 0, form.format, &text);
    if (text.View() == std::string_view(plain, static_cast<std::size_t>(length))) return true;
    std::fprintf(stderr, "\"%s\" is not \"%s\"\n", static_cast<const char*>(text), plain);
    return false;
}

}  // namespace

void AddTextCases(Suite& suite) {
    for (const Form& form : kForms) {
        suite.Expect(std::string("characters of ") + form.operation, [&form] { return SameCharacters(form); });
        suite.Add(form.operation, "surveymsg", [&form] {
            return [message = FilledMessage(), &form, text = std::make_unique<CString>()] {
                message->FormatString(form.member, 0, form.format, text.get());
                Use(text.get());
            };
        });
        suite.Add(form.operation, "plain", [&form] {
            return [position = SamplePosition(), &form] {
                char text[kText];
                Use(&position);
                form.plain(position, text);
                Use(&text);
            };
        });
    }
}

}  // namespace bench
