#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "demo/Sample.h"
#include "demo/ShotFile.h"
#include "demo/Text.h"

namespace demo {
namespace {

constexpr const char* kHead = "100.0 1 2 3 0.1 0.1 0.1 100.5 4 5 6 0.1 0.1 0.1 ";
const std::string kShot = std::string(kHead) + "0.25\n";

std::vector<Shot> ReadText(const std::string& text) {
    std::istringstream in(text);
    return ReadShots(in, "shots");
}

struct Malformed {
    const char* name;
    std::string text;
    std::size_t line;
    const char* wrong;  // part of the message
};

void PrintTo(const Malformed& malformed, std::ostream* out) { *out << malformed.name; }

class MalformedShots : public testing::TestWithParam<Malformed> {};

TEST_P(MalformedShots, AreRefusedWithTheirLine) {
    const Malformed& malformed = GetParam();
    try {
        ReadText(malformed.text);
        FAIL() << "nothing was raised";
    } catch (const ShotFileError& error) {
        EXPECT_EQ(error.Line(), malformed.line);
        const std::string place = malformed.line ? "shots:" + std::to_string(malformed.line) + ": " : "shots: ";
        EXPECT_TRUE(std::string(error.what()).starts_with(place)) << error.what();
        EXPECT_NE(std::string(error.what()).find(malformed.wrong), std::string::npos) << error.what();
    }
}

const Malformed kMalformed[] = {
    {"Empty", "", 1, "without a shot"},
    {"CommentsOnly", "# a\n\n  # b", 4, "without a shot"},
    {"Cut", kShot + "100.0 1 2", 2, "3 columns where a shot has 15; the file seems to be cut"},
    {"ShortLine", "# a\n1 2\n" + kShot, 2, "2 columns"},
    {"LongLine", kShot + kHead + "0.25 9\n", 2, "more than 15"},
    {"Word", kShot + kHead + "soon\n", 2, "column 15 is no number: \"soon\""},
    {"HalfANumber", kHead + std::string("0.25s\n"), 1, "no number"},
    {"NotANumber", kHead + std::string("nan\n"), 1, "no number"},
    {"Infinite", kHead + std::string("inf\n"), 1, "no number"},
    {"TooLarge", kHead + std::string("1e999\n"), 1, "no number"},
    {"TwoSigns", kHead + std::string("+-1\n"), 1, "no number"},
    {"NoTravel", kHead + std::string("0\n"), 1, "not above zero"},
    {"NegativeTravel", kHead + std::string("-0.25\n"), 1, "not above zero"},
    {"AbsurdTravel", kHead + std::string("61\n"), 1, "longer than 60"},
    {"ReceiveFirst", "100 1 2 3 0 0 0 99 1 2 3 0 0 0 0.25\n", 1, "receive time"},
    {"ZeroBytes", kShot + std::string(20, '\0') + "\n", 2, "no number: \"????????????????????\""},
    {"EndlessLine", kShot + "\n" + std::string(1 << 20, '1'), 3, "longer than 4095"},
    {"EndlessComment", "#" + std::string(1 << 20, ' '), 1, "longer than 4095"},
};

INSTANTIATE_TEST_SUITE_P(All, MalformedShots, testing::ValuesIn(kMalformed),
                         [](const auto& row) { return row.param.name; });

TEST(ShotFile, GivesTheColumns) {
    const auto shots = ReadText(kShot);
    ASSERT_EQ(shots.size(), 1u);
    EXPECT_EQ(shots[0].transmitTime, 100.0);
    EXPECT_EQ(shots[0].transmit, Eigen::Vector3d(1, 2, 3));
    EXPECT_EQ(shots[0].receiveTime, 100.5);
    EXPECT_EQ(shots[0].receive, Eigen::Vector3d(4, 5, 6));
    EXPECT_EQ(shots[0].travelTime, 0.25);
}

TEST(ShotFile, ToleratesWhatOtherRecordersWrite) {
    std::string line = kShot.substr(0, kShot.size() - 1);
    EXPECT_EQ(ReadText(line).size(), 1u) << "no end of the last line";
    EXPECT_EQ(ReadText(line + "\r\n" + line + "\r\n\r\n").size(), 2u) << "ends of two characters";
    EXPECT_EQ(ReadText("\xEF\xBB\xBF# first\n" + kShot + " # between\n" + line + "# behind\n").size(), 2u);
    for (char& character : line)
        if (character == ' ') character = '\t';
    EXPECT_EQ(ReadText("\t" + line + "\t\n").size(), 1u) << "tabs";
    EXPECT_EQ(ReadText(kHead + std::string("+2.5E-1")).front().travelTime, 0.25);
    EXPECT_EQ(ReadText(std::string(kHead) + "0.25" + std::string(4095 - kShot.size() + 1, ' ')).size(), 1u)
        << "the longest line";
}

TEST(ShotFile, RefusesWhatIsNoFile) {
    EXPECT_THROW(ReadShotFile("/"), ShotFileError);
    EXPECT_THROW(ReadShotFile("no such file"), ShotFileError);
}

TEST(ShotFile, ReadsTheSample) { EXPECT_EQ(ReadText(kSampleText).size(), 120u); }

TEST(DemoText, WritesNumbersForPeople) {
    EXPECT_EQ(Fixed(-0.0004, 3), "0.000");
    EXPECT_EQ(Fixed(-0.0006, 3), "-0.001");
    EXPECT_EQ(Fixed(std::numeric_limits<double>::max(), 3).size(), 313u);
    EXPECT_EQ(Grouped(0), "0");
    EXPECT_EQ(Grouped(999), "999");
    EXPECT_EQ(Grouped(1234567), "1,234,567");
    EXPECT_EQ(Counted(1, "shot", "shots"), "1 shot");
}

}  // namespace
}  // namespace demo
