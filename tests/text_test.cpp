// Text forms of numbers, angles and times, and the formats that tools may bring.

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "support/Text.h"

namespace {

std::string Number(double value, const char* format) {
    CString out("before");
    CMsg::FormatString(value, format, &out);
    return Text(out);
}

struct Protected : CMsg {
    using CMsg::FormatDegrees;
    using CMsg::FormatTime;
    using CMsg::SpecialDegreesFormat;
};

TEST(Text, DegreesMinutesSeconds) {
    const char* full = "DEG%03.0f MIN%02.0f SEC%05.2f E";
    struct Case {
        double value;
        const char* format;
        const char* text;
    };
    const Case cases[] = {
        {12.5125, full, "012 30 45.00 E"},
        {-12.5125, full, "12 30 45.00 W"},
        {10.9999999, full, "011 00 00.00 E"},
        {-33.25, "DEG%02.0f MIN%06.3f N", "33 15.000 S"},
        {-33.25, "DEG%02.0f MIN%06.3f", "-33 15.000"},
        {-0.5, "DEG%02.0f MIN%02.0f", "-0 30"},
        {-0.5, "MIN%.1f", "30.0"},
        {-1.5, "DEG%.1f N E", "1.5 N W"},
        {1.5, "at DEG%.0f MIN%.0f 5%% off", "at 1 30 5% off"},
        {1.5, "100%% DEG%.1f", "100%% 1.5"},
        {-2.5, "SEC%.0f E", "0 W"},
        {59.999, "DEG%f", "59.999000"},
        {1.25, "DEG%d MIN%d", "1 15"},
        // No degree formats: the number's default.
        {1.5, "MIN%.0f DEG%.0f", "1.500000"},
        {1.5, "DEG%.0f DEG%.0f", "1.500000"},
        {1.5, "DEG%s", "1.500000"},
        {1.5, "DEG%", "1.500000"},
        {1.5, "DEG%n", "1.500000"},
        {1.5, "DEG%*f", "1.500000"},
        {1.5, "DEG%9999f", "1.500000"},
    };
    for (const Case& each : cases) EXPECT_EQ(Number(each.value, each.format), each.text) << each.format;
    CString without;
    Protected::FormatDegrees(without, "no unit, E", -1.0);
    EXPECT_EQ(without, "no unit, W");
    EXPECT_EQ(Protected::SpecialDegreesFormat("xSEC%y"), 1);
    EXPECT_EQ(Protected::SpecialDegreesFormat("SEC"), 0);
    EXPECT_EQ(Protected::SpecialDegreesFormat(""), 0);
    EXPECT_EQ(Number(std::nan(""), full).substr(0, 3), "nan");
    EXPECT_FALSE(Number(HUGE_VAL, full).empty());
}

TEST(Text, AnglesTakeDegreeFormatsAndOtherNumbersDoNot) {
    CPosnMsg position;
    position.Latitude = position.Pitch = -33.25;
    EXPECT_EQ(Format(position, 110, "DEG%02.0f MIN%06.3f N"), "33 15.000 S");
    EXPECT_EQ(Format(position, 110), "-33.250000");
    EXPECT_EQ(Format(position, 105, "DEG%.2f"), "DEG-33.25");
    CTargMsg target;
    target.BearingToTarget = 45.5;
    EXPECT_EQ(Format(target, 106, "DEG%03.0f MIN%02.0f"), "045 30");
}

// The fast rendering gives printf's own characters.
TEST(Text, NumbersReadAsPrintfWritesThem) {
    const double values[] = {0.0,  -0.0,     1.0,      -1.5,   0.1,    2.5,    1e-7,    123456789.987654321,
                             1e15, 1e22,     1e300,    5e-324, 0.9995, 99.995, -0.0004, 1e-3,
                             3.0,  HUGE_VAL, -HUGE_VAL};
    const char* formats[] = {"%f",    "%.0f",   "%.1f",    "%.3f",    "%8.2f", "%-8.2f|", "%08.2f",
                             "%+.2f", "% .2f",  "%.12f",   "%e",      "%.2E",  "%g",      "%G",
                             "%.3g",  "%#.0f",  "%a",      "%12g",    "%012e", "%.0e",    "%.0g",
                             "<%f>",  "%%%f%%", "%+08.1f", "%-+8.1f", "%lf",   "%5.0f",   "%.300f"};
    for (const char* format : formats)
        for (const double value : values) {
            char expected[1500];
            std::snprintf(expected, sizeof expected, format, value);
            EXPECT_EQ(Number(value, format), expected) << format;
        }
    CTransMsg transponder;
    for (const std::int32_t value : {0, 1, -1, 2147483647, static_cast<int>(0x80000000)})
        for (const char* format : {"%d", "%5d", "%-5d|", "%05d", "%+d", "%.3d", "%x", "%#X", "%o", "%u", "%i"}) {
            char expected[64];
            std::snprintf(expected, sizeof expected, format, value);
            transponder.IRF = value;
            EXPECT_EQ(Format(transponder, 110, format), expected) << format;
        }
}

TEST(Text, FormatsThatDoNotFitGiveTheDefault) {
    const std::string megabyte(1 << 20, 'x');
    const char* refused[] = {"%s",
                             "%S",
                             "%n",
                             "%*f",
                             "%p",
                             "%f%f",
                             "%f %n",
                             "%1000f",
                             "%.1000f",
                             "%999999999f",
                             "%",
                             "%5",
                             "x%",
                             "% s",
                             "%#s",
                             "%hs",
                             "%ls",
                             "%-*.*f",
                             "%1$f",
                             "%m",
                             "%5%f",
                             "%.*f",
                             "%99999999999999999999d",
                             "%k"};
    for (const char* format : refused) EXPECT_EQ(Number(1.5, format), "1.500000") << format;
    EXPECT_EQ(Number(1.5, megabyte.c_str()), megabyte);
    EXPECT_EQ(Number(1.5, "none"), "none");
    EXPECT_EQ(Number(1.5, nullptr), "1.500000");
    EXPECT_EQ(Number(1.5, ""), "1.500000");
    EXPECT_EQ(Number(65.9, "%d"), "65");
    EXPECT_EQ(Number(HUGE_VAL, "%d"), "0");
    EXPECT_EQ(Number(1e15, "%d"), "1000000000000000");
    EXPECT_EQ(Number(1.5, "%999.1f").size(), 999u);

    CPosnMsg position;
    position.Name = "name";
    for (const char* format : {"%d", "%n", "%s%s", "%s %d", "%*s", "%1234s", "%", "%c"})
        EXPECT_EQ(Format(position, 100, format), "name") << format;
    EXPECT_EQ(Format(position, 100, "%-6s|%%"), "name  |%");
    EXPECT_EQ(Format(position, 100, "%.2s"), "na");
    EXPECT_EQ(Format(position, 100, "none"), "none");
    EXPECT_EQ(Format(position, 4, "%.1f"), "0.0");  // an integer shown as a double
    EXPECT_EQ(Format(position, 4, "%s"), "0");
}

TEST(Text, SingleCharacters) {
    EXPECT_EQ(Number(65.9, "%c"), "A");
    EXPECT_EQ(Number(321.0, "%c"), "A");
    EXPECT_EQ(Number(256.0, "%c"), "");
    EXPECT_EQ(Number(std::nan(""), "%c"), "");
    EXPECT_EQ(Number(65.0, "<%c>"), "<A>");
    EXPECT_EQ(Number(0.0, "<%c>"), "<");  // a text ends at its first zero
}

TEST(Text, ValidNumberFormat) {
    for (const char* format : {"%f", "%d", "%%", "", "x", "%", "%-+5.2l", "%%s", "% s", "%5%s"})
        EXPECT_EQ(CMsg::ValidNumberFormat(format), 1) << format;
    for (const char* format : {"%s", "%S", "%-5.2s", "%f %s", "%%%s", "%hls", "%I64S"})
        EXPECT_EQ(CMsg::ValidNumberFormat(format), 0) << format;
}

TEST(Text, Times) {
    Protected message;
    message.MsgTime = 60.0;
    struct Case {
        double time;
        const char* format;
        const char* text;
    };
    const Case cases[] = {
        {1.0, nullptr, "00:00:01 06 Jan 80"},
        {1.9, "", "00:00:01 06 Jan 80"},
        {0.0, nullptr, "00:01:00 06 Jan 80"},
        {1e9, "%Y-%m-%d %H:%M:%S", "2011-09-14 01:46:40"},
        {-315964800.0, "%Y-%m-%d", "1970-01-01"},
        {-315964801.0, "%Y", ""},
        {1831518847.0, "%Y", "2038"},
        {1831518848.0, "%Y", ""},
        {std::nan(""), "%Y", ""},
        {HUGE_VAL, "%Y", ""},
        {1.0, "%p%%", "AM%"},
    };
    for (const Case& each : cases) {
        CString out("before");
        EXPECT_EQ(message.FormatTime(each.format, &out, each.time), *each.text != '\0') << each.text;
        EXPECT_EQ(Text(out), each.text);
    }
    CString out;
    EXPECT_EQ(message.FormatTime(std::string(79, 'x').c_str(), &out, 1.0), 1);
    EXPECT_EQ(message.FormatTime(std::string(80, 'x').c_str(), &out, 1.0), 0);
    EXPECT_EQ(message.FormatTime("%999999999d", &out, 1.0), 0);
    EXPECT_EQ(message.FormatTime("%Y", nullptr, 1.0), 0);
}

// The fast rendering gives strftime's own characters, on every kind of day.
TEST(Text, TimesReadAsStrftimeWritesThem) {
    const char* formats[] = {"%H:%M:%S %d %b %y", "%Y-%m-%d %H:%M:%S", "%d %m %y %H:%M:%S", "%b%Y", "x%M"};
    Protected message;
    for (std::time_t seconds = 0; seconds < 2147480000; seconds += 86399 * 7 + 1234) {
        std::tm calendar{};
        gmtime_r(&seconds, &calendar);
        for (const char* format : formats) {
            char expected[80];
            std::strftime(expected, sizeof expected, format, &calendar);
            CString out;
            ASSERT_EQ(message.FormatTime(format, &out, static_cast<double>(seconds) - 315964800.0 + 0.25), 1);
            ASSERT_EQ(Text(out), expected);
        }
    }
}

TEST(Text, OutMayBeTheFormatOrTheMember) {
    CPosnMsg position;
    position.Name = "name";
    EXPECT_EQ(position.FormatString(100, 0, "<%s>", &position.Name), 1);
    EXPECT_EQ(position.Name, "<name>");
    CString both("%.1f and more than thirty-one characters");
    CMsg::FormatString(2.5, both, &both);
    EXPECT_EQ(both, "2.5 and more than thirty-one characters");
}

TEST(Clock, CountsFrom1980) {
    CMsg message;
    message.UpdateTime();
    EXPECT_LT(std::fabs(message.Age()), 5.0);
    EXPECT_GT(message.MsgTime, 1.4e9);  // 2024 and later
    message.MsgTime += 1000.0;
    EXPECT_LT(message.Age(), 0.0);
}

}  // namespace
