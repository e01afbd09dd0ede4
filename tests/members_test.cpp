// Members by number: every class's listing, and what the rows of a class do.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/Text.h"
#include "support/Vectors.h"

namespace {

std::string Listing(CMsg& message) {
    std::string ids;
    for (const MemberDefinition* row : Rows(message)) ids += std::to_string(row->Id) + " ";
    return ids;
}

const std::string kPosnIds = "100 101 102 103 104 105 106 107 108 109 110 111 1 ";
const std::string kTransIds = "100 101 102 103 104 105 106 107 108 109 110 112 111 113 114 1 ";

TEST(Members, AreListedClassFirst) {
    std::string profile;
    for (int id = 199; id <= 230; ++id) profile += std::to_string(id) + " ";
    const std::pair<const char*, std::string> listings[] = {
        {"CMsg", "1 "},
        {"CObsMsg", "100 101 102 103 104 105 106 107 108 109 1 "},
        {"CAcObsMsg", "110 111 112 100 101 102 103 104 105 106 107 108 109 1 "},
        {"CPosnMsg", kPosnIds},
        {"CCompPosnMsg", "199 200 201 202 203 204 205 206 207 208 209 210 211 " + kPosnIds},
        {"CProfProcessedMsg", profile + kPosnIds},
        {"CPosnListMsg", "1 "},
        {"CTargMsg", "100 101 102 103 104 105 106 1 "},
        {"CTransMsg", kTransIds},
        {"CMobTransMsg", "203 204 199 200 201 202 205 206 207 208 209 210 211 212 213 215 214 216 217 " + kTransIds},
        {"CTransRange", kTransIds},
        {"CCopMsg", "100 101 102 103 1 "},
    };
    for (const auto& [className, ids] : listings) {
        const auto message = MakeByClass(className);
        EXPECT_EQ(Listing(*message), ids) << className;
        EXPECT_EQ(message->GetMemberDefinitions(nullptr), 0);
        CPtrArray twice;
        message->GetMemberDefinitions(&twice);
        const int once = twice.GetSize();
        message->GetMemberDefinitions(&twice);
        EXPECT_EQ(twice.GetSize(), 2 * once);
        EXPECT_EQ(twice[0], twice[once]);
    }
}

// Whatever can be set arrives in the member's text, copy and number, and nowhere else.
TEST(Members, SetGetCopyAndFormatAgree) {
    for (const char* className : {"CObsMsg", "CAcObsMsg", "CPosnMsg", "CCompPosnMsg", "CProfProcessedMsg", "CTargMsg",
                                  "CTransMsg", "CCopMsg"}) {
        const auto message = MakeByClass(className);
        int settable = 0;
        for (const MemberDefinition* row : Rows(*message)) {
            if (message->SetMemberValue(row->Id, 0, row->Id + 0.5) != 1) continue;
            if (std::string(row->Label).find("[]") != std::string::npos) continue;
            ++settable;
            const double expected = row->Width == 8 ? row->Id + 0.5 : row->Width == 1 ? row->Id % 256 : row->Id;
            double value = -1.0;
            EXPECT_EQ(message->GetMemberValue(row->Id, 0, &value), 1) << className << " " << row->Id;
            EXPECT_EQ(value, expected) << className << " " << row->Id;
            const std::string copy = Copied(*message, row->Id);
            double real = 0.0;
            std::uint32_t integer = 0;
            if (row->Width == 8)
                std::memcpy(&real, copy.data(), sizeof real);
            else
                std::memcpy(&integer, copy.data(), row->Width);
            EXPECT_EQ(row->Width == 8 ? real : integer, expected) << className << " " << row->Id;
            EXPECT_EQ(copy[row->Width], '\xEE');
        }
        EXPECT_GT(settable, 3) << className;
    }
}

TEST(Members, ReachTheirOwnFields) {
    CPosnMsg position;
    position.SetMemberValue(107, 0, 90.0);
    position.SetMemberValue(110, 0, 59.5);
    EXPECT_EQ(position.GridHeading, 90.0);
    EXPECT_EQ(position.TrueHeading, 0.0);
    EXPECT_EQ(position.Latitude, 59.5);
    CObsMsg observation;
    observation.SetMemberValue(104, 0, 2.0);
    observation.SetMemberValue(109, 0, 3.0);
    EXPECT_EQ(observation.ScaleFactor, 2.0);
    EXPECT_EQ(observation.Correction, 3.0);
    CProfProcessedMsg profile;
    profile.SetMemberValue(224, 0, 0.5);
    EXPECT_EQ(profile.PipeDiameter, 0.5);
    CTargMsg target;
    target.SetMemberValue(105, 0, 7.0);
    EXPECT_EQ(target.RangeToTarget, 7.0);
}

TEST(Members, TheBaseAnswersItsSix) {
    CPosnMsg position;
    position.Name = "B";
    position.MsgTime = 60.0;
    position.SourceNode = "ship";
    position.SourceTask = "nav";
    EXPECT_EQ(position.SetMemberValue(4, 0, 7.9), 1);
    EXPECT_EQ(position.SourceNumber, 7u);
    EXPECT_EQ(Format(position, 1), "00:01:00 06 Jan 80");
    EXPECT_EQ(Format(position, 1, "%M:%S"), "01:00");
    EXPECT_EQ(Format(position, 2), "PRX~Position");
    EXPECT_EQ(Format(position, 3), "nav");
    EXPECT_EQ(Format(position, 4), "7");
    EXPECT_EQ(Format(position, 5, "[%s]"), "[ship]");
    EXPECT_EQ(Copied(position, 6).substr(0, 1), std::string(1, '\0'));  // no identifier is built for a copy
    EXPECT_EQ(Format(position, 6), "B");
    position.MsgTime = -1e12;
    EXPECT_EQ(Format(position, 1), "");
    double value = 5.0;
    for (const std::uint16_t id : {0, 7, 99, 112, 65535}) {
        EXPECT_EQ(Format(position, id), "(0)") << id;
        EXPECT_EQ(Copied(position, id), "(0)");
        EXPECT_EQ(position.GetMemberValue(id, 0, &value), 0);
        EXPECT_EQ(position.SetMemberValue(id, 0, 1.0), 0);
    }
    EXPECT_EQ(position.GetMemberValue(2, 0, &value), 0);
    EXPECT_EQ(value, 5.0);
    EXPECT_EQ(position.FormatString(102, 0, "%f", static_cast<CString*>(nullptr)), 0);
    EXPECT_EQ(position.MemberCopy(102, 0, nullptr), 0);
    EXPECT_EQ(position.GetMemberValue(102, 0, nullptr), 0);
}

TEST(Members, TextsAreCopiedUpTo256Bytes) {
    CPosnMsg position;
    for (const int length : {0, 255, 256, 300}) {
        const std::string name(static_cast<std::size_t>(length), 'n');
        position.Name = name.c_str();
        std::string expected(300, '\xEE');
        expected.replace(0, std::min<std::size_t>(name.size(), 256), name.substr(0, 256));
        if (length < 256) expected[static_cast<std::size_t>(length)] = '\0';
        EXPECT_EQ(Copied(position, 100, 0, 300), expected) << length;
        EXPECT_EQ(Format(position, 100), name);
    }
    position.Type = 3;
    EXPECT_EQ(Copied(position, 101, 0, 17), std::string("COMPUTED+OFFSET\0\xEE", 17));
}

TEST(Members, ObservationsShowTheirFlagsAndNames) {
    CObsMsg observation;
    observation.Type = CObsMsg::Range;
    observation.FromName = "A";
    observation.ToName = "B";
    EXPECT_EQ(Copied(observation, 100, 0, 6), std::string("A->B\0\xEE", 6));
    observation.FromName = "C";
    EXPECT_EQ(Format(observation, 100), "A->B");  // a name that is there is not refreshed
    EXPECT_EQ(Copied(observation, 101, 0, 3), std::string("\1\0\xEE", 3));
    observation.SetStatusBit(1, 1);
    observation.SetStatusBit(0, 2);
    observation.SetStatusBit(32, 1);
    observation.SetStatusBit(-1, 1);
    EXPECT_EQ(observation.StatusBits, 2u);
    EXPECT_EQ(observation.GetStatusBit(1), 1);
    EXPECT_EQ(observation.GetStatusBit(99), 0);
    EXPECT_EQ(Format(observation, 107), "OK");
    EXPECT_EQ(Format(observation, 108, "<%s>"), "<USED>");
    double value = 0.0;
    EXPECT_EQ(observation.GetMemberValue(107, 0, &value), 1);
    EXPECT_EQ(value, 2.0);
    observation.SetMemberValue(107, 0, 1.0);
    EXPECT_EQ(Format(observation, 107), "TIMED OUT");
    EXPECT_EQ(Format(observation, 108), "NOT USED");
    observation.Type = 13;
    EXPECT_EQ(Format(observation, 101), "");
    observation.TimeOut = 0xFFFFFFFF;
    EXPECT_EQ(Format(observation, 106), "-1");
    EXPECT_EQ(Format(observation, 106, "%u"), "4294967295");
    EXPECT_EQ(Format(observation, 106, "%.1f"), "4294967295.0");
}

TEST(Members, AComputedPositionReachesIntoItsObservations) {
    CCompPosnMsg position;
    CObsMsg depth;
    depth.Type = CObsMsg::DepthAt;
    depth.FromName = "A";
    CAcObsMsg range;
    range.FromName = "A";
    range.ToName = "B";
    range.SpeedOfSound = 1500.0;
    range.StatusBits = 0x01020304;
    ASSERT_EQ(position.AddObservation(depth), 1);
    ASSERT_EQ(position.AddObservation(range), 1);
    EXPECT_EQ(Format(position, 200, nullptr, 1), "A->B");
    EXPECT_EQ(Format(position, 209, nullptr, 0), "(0)");  // a plain observation has no speed of sound
    EXPECT_EQ(Format(position, 209, "%.1f", 1), "1500.0");
    EXPECT_EQ(Copied(position, 207, 1, 5), std::string("\4\3\2\1\xEE", 5));
    double value = 7.0;
    EXPECT_EQ(position.GetMemberValue(207, 1, &value), 0);
    EXPECT_EQ(position.SetMemberValue(205, 1, 2.0), 1);
    EXPECT_EQ(position.GetObservation(1)->Weight, 2.0);
    EXPECT_EQ(range.Weight, 1.0);
    // Past the end all is answered and nothing happens.
    EXPECT_EQ(Format(position, 200, nullptr, 2), kUntouched);
    EXPECT_EQ(position.GetMemberValue(202, 2, &value), 1);
    EXPECT_EQ(Copied(position, 202, 2, 1), "\xEE");
    EXPECT_EQ(position.SetMemberValue(202, 2, 1.0), 1);
    EXPECT_EQ(value, 7.0);
    EXPECT_EQ(position.GetObservation(2), nullptr);
    EXPECT_EQ(position.RemoveObservation(&depth), 1);
    EXPECT_EQ(Format(position, 200), "A->B");

    // A stream may hold messages that are no observations.
    ASSERT_EQ(position.AddMsgDependency(new CPosnMsg), 1);
    EXPECT_EQ(position.GetObservation(1), nullptr);
    EXPECT_EQ(Format(position, 201, nullptr, 1), "(0)");
    EXPECT_EQ(Copied(position, 201, 1, 1), "(0)");
    EXPECT_EQ(position.GetMemberValue(202, 1, &value), 0);
    EXPECT_EQ(position.SetMemberValue(202, 1, 1.0), 0);

    EXPECT_EQ(Format(position, 199), "0.000000");
    position.StandardDeviation = HUGE_VAL;
    EXPECT_EQ(Format(position, 199, "%f"), "NO SOLUTION");
    EXPECT_EQ(position.GetMemberValue(199, 0, &value), 1);
    EXPECT_EQ(value, HUGE_VAL);
}

TEST(Members, ATransponderShowsWhatItsTypeAllows) {
    struct Case {
        int type, method;
        std::string irf, turnAround, modes, methodText, typeText;
    };
    const Case cases[] = {
        {0, 0, "1", "187.500000", "CIF/USBL", "Fixed", "Compatt"},
        {0, 2, "1", "187.500000", "CIF/USBL", "CI(Mobile To Array)", "Compatt"},
        {0, 5, "1", "187.500000", "CIF/USBL", "FS", "Compatt"},
        {0, 6, "1", "187.500000", "CIF/USBL", kUntouched, "Compatt"},
        {1, 1, "n/a", "n/a", "n/a", "CI(Array To Mobile)", "DMT"},
        {1, 2, "n/a", "n/a", "n/a", kUntouched, "DMT"},
        {2, 2, "n/a", "n/a", "n/a", "LB", "Hydrophone"},
        {3, 77, "n/a", "n/a", "n/a", "None", "MicroNav"},
        {3, -1, "n/a", "n/a", "n/a", "None", "MicroNav"},
        {4, 0, "n/a", "n/a", "n/a", kUntouched, kUntouched},
        {-1, 0, "n/a", "n/a", "n/a", kUntouched, kUntouched},
    };
    for (const Case& each : cases) {
        CTransMsg transponder;
        transponder.IRF = 1;
        transponder.TurnAround = 3;
        transponder.InterrogationMode = {5, 0, 1};
        transponder.Type = each.type;
        transponder.PositioningMethod = each.method;
        CMobTransMsg mobile;
        auto* range = new CTransRange;
        range->RangeIRF = 1;
        range->RangeTurnAround = 3;
        range->RangeInterrogationMode = {5, 0, 1};
        range->RangeType = each.type;
        range->RangePositioningMethod = each.method;
        mobile.Ranges.Add(range);
        const std::pair<int, std::string> texts[] = {
            {110, each.irf}, {111, each.turnAround}, {112, each.modes}, {113, each.methodText}, {114, each.typeText}};
        for (const auto& [id, text] : texts) {
            EXPECT_EQ(Format(transponder, static_cast<std::uint16_t>(id)), text) << each.type << " " << id;
            EXPECT_EQ(Format(mobile, static_cast<std::uint16_t>(id + 103)), text) << each.type << " " << id;
        }
        EXPECT_EQ(Format(transponder, 114, "[%s]"), each.typeText);
    }
    CTransMsg transponder;
    transponder.InterrogationMode = {5, 0, 1};
    EXPECT_EQ(Copied(transponder, 112, 0, 13), std::string("\5\0\0\0\0\0\0\0\1\0\0\0\xEE", 13));
    transponder.InterrogationMode = {};
    EXPECT_EQ(Format(transponder, 112), "");
    transponder.Address = -1;
    EXPECT_EQ(Format(transponder, 101), "-1");
    transponder.SetMemberValue(111, 0, 4.9);
    EXPECT_EQ(Format(transponder, 111, "%.1f"), "250.0");
    for (const std::uint16_t id : {100, 112, 113, 114}) EXPECT_EQ(transponder.SetMemberValue(id, 0, 1.0), 0) << id;
}

TEST(Members, AMobileTransponderReachesIntoItsRanges) {
    CMobTransMsg mobile;
    mobile.Name = "M";
    for (const char* name : {"T", "U"}) {
        auto* range = new CTransRange;
        range->RangeName = name;
        mobile.Ranges.Add(range);
    }
    EXPECT_EQ(mobile.SetMemberValue(199, 1, 12.5), 1);
    EXPECT_EQ(mobile.SetMemberValue(204, 1, 70000.9), 1);
    const auto* second = static_cast<CTransRange*>(mobile.Ranges[1]);
    EXPECT_EQ(second->Range, 12.5);
    EXPECT_EQ(second->RangeAddress, 4464);
    EXPECT_EQ(static_cast<CTransRange*>(mobile.Ranges[0])->Range, 0.0);
    EXPECT_EQ(Format(mobile, 203, nullptr, 1), "U");
    EXPECT_EQ(Format(mobile, 100, nullptr, 1), "M");
    EXPECT_EQ(Format(mobile, 199, nullptr, 2), kUntouched);
    double value = 3.0;
    EXPECT_EQ(mobile.GetMemberValue(199, 2, &value), 1);
    EXPECT_EQ(mobile.GetMemberValue(203, 0, &value), 0);
    for (const std::uint16_t id : {213, 214, 215, 216, 217}) {
        EXPECT_EQ(Copied(mobile, id), "(0)");
        EXPECT_EQ(mobile.GetMemberValue(id, 0, &value), 0);
        EXPECT_EQ(mobile.SetMemberValue(id, 0, 1.0), 0);
    }
    EXPECT_EQ(value, 3.0);

    CMobTransMsg copy;
    copy.Ranges.Add(new CTransRange);
    copy = mobile;
    mobile.SetMemberValue(199, 1, 99.0);
    EXPECT_EQ(Format(copy, 199, nullptr, 1), "12.500000");
    mobile.ClearRanges();
    mobile.ClearRanges();
    EXPECT_EQ(copy.Ranges.GetSize(), 2);
    copy.Ranges.SetSize(3);  // a slot that was never filled does not travel
    copy.Encode();
    EXPECT_EQ(mobile.Decode(&copy), 1);
    EXPECT_EQ(mobile.Ranges.GetSize(), 2);
}

TEST(Members, ARangeAnswersForItsInheritedFields) {
    CTransRange range, copy;
    range.RangeName = "R";
    range.RangeType = 3;
    range.Name = "inherited";
    EXPECT_EQ(Format(range, 100), "inherited");
    copy = range;
    EXPECT_EQ(copy.RangeName, "R");
    EXPECT_EQ(copy.RangeType, 3);
    EXPECT_EQ(copy.Name, "inherited");
    CTransRange loaded;
    loaded.Decode(&range);
    EXPECT_EQ(loaded.RangeName, "R");
    EXPECT_EQ(loaded.Name, "");
    EXPECT_EQ(loaded.RangeType, 0);
}

TEST(Members, AProfileShowsItsStatuses) {
    CProfProcessedMsg profile, copy;
    EXPECT_EQ(Format(profile, 101), "MANUAL+OFFSET");
    EXPECT_EQ(Format(profile, 225), "Manual");
    EXPECT_EQ(Format(profile, 226, "[%s]"), "[Exposed]");
    EXPECT_EQ(Format(profile, 199, "%s"), "0.000000");
    profile.SetMemberValue(225, 0, 65537.0);
    EXPECT_EQ(Format(profile, 225), "Pipe Tracker");
    profile.PipePositionStatus = -1;
    EXPECT_EQ(Format(profile, 225), kUntouched);
    profile.SetMemberValue(226, 0, -1.0);
    double value = 0.0;
    EXPECT_EQ(profile.GetMemberValue(226, 0, &value), 1);
    EXPECT_EQ(value, -1.0);
    EXPECT_EQ(Format(profile, 226), "Buried");
    profile.PipeDiameter = 0.9;
    copy.Copy(profile);
    EXPECT_EQ(copy.PipeDiameter, 0.0);
    copy = profile;
    EXPECT_EQ(copy.PipeDiameter, 0.9);
    EXPECT_EQ(copy.PipePositionStatus, -1);
}

TEST(Members, CopParametersKeepTheirOwnRules) {
    CCopMsg parameters, other;
    EXPECT_EQ(parameters.LocalTime, parameters.MsgTime);
    parameters.NmeaChecksum = 10;
    EXPECT_EQ(Format(parameters, 101, "%d"), "0A");
    parameters.SetMemberValue(101, 0, 300.0);
    EXPECT_EQ(parameters.NmeaChecksum, 44);
    parameters.SetMemberValue(102, 0, 3600.0);
    EXPECT_EQ(parameters.LocalTime, parameters.MsgTime);
    parameters.UpdateTime();
    EXPECT_EQ(parameters.LocalTime, parameters.MsgTime + 3600.0);
    other = parameters;
    EXPECT_EQ(other.NmeaChecksum, 44);
    parameters.NmeaChecksum = 1;
    parameters.Encode();
    other << parameters;
    EXPECT_EQ(other.NmeaChecksum, 44);
    parameters.MsgTime = 60.0;
    parameters.LocalTime = 0.0;
    EXPECT_EQ(Format(parameters, 103, "%M"), "01");
}

TEST(Members, NumbersThatNoIntegerHoldsStoreZero) {
    CObsMsg observation;
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, -1e19}) {
        observation.TimeOut = 5;
        EXPECT_EQ(observation.SetMemberValue(106, 0, value), 1);
        EXPECT_EQ(observation.TimeOut, 0u);
    }
    observation.SetMemberValue(106, 0, -1.9);
    EXPECT_EQ(observation.TimeOut, 0xFFFFFFFFu);
    observation.SetMemberValue(106, 0, 4294967297.0);
    EXPECT_EQ(observation.TimeOut, 1u);
}

}  // namespace
