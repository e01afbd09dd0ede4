// The byte form of every class and schema, from tests/vectors, and what goes wrong on the way.

#include <gtest/gtest.h>

#include <random>

#include "support/Text.h"
#include "support/Vectors.h"

namespace {

std::string Encoded(CMsg& message) {
    message.Encode();
    return Text(message.Body);
}

// The failure that loading `bytes` raises: cause and text.
std::string FailureOf(CMsg& message, const std::string& bytes) {
    message.Body = ToBody(bytes);
    try {
        message.Decode();
    } catch (const CArchiveException& failure) {
        EXPECT_EQ(Text(message.Body), bytes);
        return std::to_string(failure.m_cause) + " " + Text(failure.m_strFileName);
    }
    return "none";
}

class EveryVector : public testing::TestWithParam<Vector> {};

TEST_P(EveryVector, LoadsAndStoresAgain) {
    const Vector& vector = GetParam();
    const auto message = MakeByClass(vector.className);
    message->Body = ToBody(vector.bytes);
    ASSERT_EQ(message->Decode(), 1);
    for (const auto& member : vector.members)
        EXPECT_EQ(Format(*message, member.id, nullptr, member.index), member.text) << member.id;
    EXPECT_EQ(Text(message->InstanceIdentifier), vector.identifier);
    EXPECT_EQ(Text(message->OldInstanceIdentifier), vector.oldIdentifier);

    const std::string stored = Encoded(*message);
    if (vector.newest) {
        EXPECT_EQ(stored, vector.bytes);
    }
    // What an older schema lacks has its default: the newest form of it is stable too.
    const auto again = MakeByClass(vector.className);
    ASSERT_EQ(again->Decode(message.get()), 1);
    EXPECT_EQ(Encoded(*again), stored);
}

TEST_P(EveryVector, EndsEarlyAtEveryLength) {
    const Vector& vector = GetParam();
    const auto message = MakeByClass(vector.className);
    for (std::size_t length = 1; length < vector.bytes.size(); ++length)
        ASSERT_EQ(FailureOf(*message, vector.bytes.substr(0, length)), "3 ") << length;
    EXPECT_EQ(FailureOf(*message, vector.bytes), "none");
}

TEST_P(EveryVector, RefusesOtherSchemas) {
    const Vector& vector = GetParam();
    const auto message = MakeByClass(vector.className);
    for (const char schema : {'\0', '\5', '\xEE'})
        EXPECT_EQ(FailureOf(*message, schema + vector.bytes.substr(1)), "7 " + vector.className);
}

// Loads, or fails in one of the two ways that bytes can; and whatever came before, good bytes load.
TEST_P(EveryVector, TakesGoodBytesAfterChangedAndRandomOnes) {
    const Vector& vector = GetParam();
    const auto message = MakeByClass(vector.className);
    const auto isKnown = [](const std::string& failure) {
        return failure == "none" || failure == "3 " || failure.substr(0, 2) == "7 ";
    };
    for (std::size_t place = 0; place < vector.bytes.size(); ++place)
        for (const char change : {'\x01', '\x80', '\xFF'}) {
            std::string changed = vector.bytes;
            changed[place] = static_cast<char>(changed[place] ^ change);
            ASSERT_TRUE(isKnown(FailureOf(*message, changed))) << place;
            ASSERT_EQ(FailureOf(*message, vector.bytes), "none") << place;
        }
    std::mt19937 random(7);
    for (int body = 0; body < 500; ++body) {
        std::string bytes(1 + random() % 400, vector.bytes[0]);  // begins with its schema
        for (std::size_t place = 1; place < bytes.size(); ++place)
            bytes[place] = static_cast<char>(random() % 4 ? random() % 3 : random());
        ASSERT_TRUE(isKnown(FailureOf(*message, bytes)));
    }
    EXPECT_EQ(FailureOf(*message, vector.bytes), "none");
    if (vector.newest) {
        EXPECT_EQ(Encoded(*message), vector.bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(Stream, EveryVector, testing::ValuesIn(AllVectors()),
                         [](const auto& test) { return test.param.name; });

TEST(Stream, NewMessagesHaveTheirKnownSizes) {
    const std::pair<const char*, int> sizes[] = {
        {"CMsg", 13},          {"CObsMsg", 68},       {"CAcObsMsg", 89},
        {"CPosnMsg", 100},     {"CCompPosnMsg", 109}, {"CProfProcessedMsg", 347},
        {"CPosnListMsg", 20},  {"CTargMsg", 60},      {"CTransMsg", 110},
        {"CMobTransMsg", 143}, {"CTransRange", 94},   {"CCopMsg", 34},
    };
    for (const auto& [className, size] : sizes) {
        const auto message = MakeByClass(className);
        message->Encode();
        EXPECT_EQ(message->Body.GetLength(), size) << className;
    }
}

TEST(Stream, OlderSchemasLeaveTheFieldsTheyLack) {
    CObsMsg observation;
    observation.Correction = 0.5;
    observation.OldFromName = "kept";
    CPosnMsg position;
    position.Latitude = 59.5;
    position.NamePrefix = "gone";
    CTargMsg target;
    target.NamePrefix = "gone";
    target.OldName = "kept";
    CTransMsg transponder;
    transponder.Type = 2;
    CCopMsg parameters;
    parameters.TimeZoneOffset = 1.5;
    for (const Vector& vector : AllVectors()) {
        const CString body = ToBody(vector.bytes);
        CMsg carrier;
        carrier.Body = body;
        if (vector.name == "obs_1") observation.Decode(&carrier);
        if (vector.name == "posn_1") position.Decode(&carrier);
        if (vector.name == "targ_1") target.Decode(&carrier);
        if (vector.name == "trans_1") transponder.Decode(&carrier);
        if (vector.name == "cop_1") parameters.Decode(&carrier);
    }
    EXPECT_EQ(observation.Correction, 0.5);
    EXPECT_EQ(observation.OldFromName, "kept");
    EXPECT_EQ(position.Latitude, 59.5);
    EXPECT_EQ(position.NamePrefix, "");
    EXPECT_EQ(target.NamePrefix, "");
    EXPECT_EQ(target.OldName, "kept");
    EXPECT_EQ(transponder.Type, 2);
    EXPECT_EQ(parameters.TimeZoneOffset, 1.5);
}

TEST(Stream, WhatWasReadBeforeAFailureStays) {
    CPosnMsg position;
    position.Name = "B";
    position.NamePrefix = "A";
    EXPECT_EQ(FailureOf(position, std::string("\x05", 1)), "7 CPosnMsg");
    EXPECT_EQ(position.NamePrefix, "");
    EXPECT_EQ(position.Name, "B");

    CObsMsg observation;
    observation.Weight = 2.0;
    CObsMsg source;
    source.Correction = 0.5;
    source.Value = 7.5;
    source.StatusBits = 3;
    const std::string bytes = Encoded(source);
    EXPECT_EQ(FailureOf(observation, bytes.substr(0, 1 + 8 + 2 + 2 + 8 + 4 + 3)), "3 ");  // inside `TimeOut`
    EXPECT_EQ(observation.Value, 7.5);
    EXPECT_EQ(observation.StatusBits, 3u);
    EXPECT_EQ(observation.Weight, 2.0);

    CMobTransMsg mobile;
    mobile.Ranges.Add(new CTransRange);
    EXPECT_EQ(FailureOf(mobile, std::string("\x03", 1)), "7 CMobTransMsg");
    EXPECT_EQ(mobile.Ranges.GetSize(), 1);
}

TEST(Stream, StringPrefixesGrowWithTheText) {
    const std::pair<int, std::string> prefixes[] = {
        {0, std::string("\0", 1)},
        {254, "\xFE"},
        {255, std::string("\xFF\xFF\0", 3)},
        {65533, "\xFF\xFD\xFF"},
        {65534, std::string("\xFF\xFF\xFF\xFE\xFF\0\0", 7)},
    };
    for (const auto& [length, prefix] : prefixes) {
        CPosnListMsg list;
        list.Name = ToBody(std::string(static_cast<std::size_t>(length), 'x'));
        const std::string bytes = Encoded(list);
        EXPECT_EQ(bytes.substr(1, prefix.size()), prefix) << length;
        EXPECT_EQ(bytes.size(), 1 + prefix.size() + static_cast<std::size_t>(length) + 1 + 4 + 13);
        CPosnListMsg loaded;
        loaded.Decode(&list);
        EXPECT_EQ(loaded.Name, list.Name);
    }
}

TEST(Stream, BelievesNoLengthThatTheBytesDoNotBack) {
    CPosnListMsg list;
    EXPECT_EQ(FailureOf(list, std::string("\x01\xFF\xFF\xFF\xFF\xFF\xFF\x7F", 8)), "3 ");
    EXPECT_EQ(FailureOf(list, std::string("\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8)), "3 ");
    EXPECT_EQ(FailureOf(list, std::string("\x01\xFF\xFE\xFF\x00", 5)), "7 CMsg");          // a wide text
    EXPECT_EQ(FailureOf(list, std::string("\x01\0\0\xFF\xFF\xFF\x7F\x01\x41", 9)), "3 ");  // 2^31 - 1 texts
    EXPECT_EQ(list.PositionNames.GetSize(), 1);
    const std::string negative =
        std::string("\x01\0\0\xFF\xFF\xFF\xFF", 7) + std::string("\x01\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF", 13);
    EXPECT_EQ(FailureOf(list, negative), "none");
    EXPECT_EQ(list.PositionNames.GetSize(), 0);
}

TEST(Stream, RefusesToDecodeWithoutBytesOrOverAKeyText) {
    CPosnMsg position;
    position.Name = "kept";
    CPosnMsg source;
    source.Name = "other";
    source.Encode();
    EXPECT_EQ(position.Decode(), 0);
    position.BodyIsKeyText = 1;
    EXPECT_EQ(position.Decode(&source), 0);
    EXPECT_EQ(position.Name, "kept");
    position.BodyIsKeyText = 0;
    source.BodyIsKeyText = 1;  // only the target's own flag counts
    EXPECT_EQ(position.Decode(&source), 1);
    EXPECT_EQ(position.Name, "other");
    EXPECT_TRUE(position.Body.IsEmpty());
}

TEST(Stream, RaisesOutOfMemoryPastTheCapacityAndEncodesAgain) {
    CPosnListMsg list;
    list.Name = ToBody(std::string(122880 - 1 - 7 - 1 - 4 - 13, 'x'));
    EXPECT_EQ(Encoded(list).size(), 122880u);
    list.OldName = "x";
    EXPECT_THROW(list.Encode(), CMemoryException);
    list.Name.Empty();
    EXPECT_EQ(Encoded(list).size(), 21u);
}

// A class of a program's own, written with the archive's operators.
class COwnMsg : public CMsg {
public:
    void Serialize(CArchive& ar) override {
        if (ar.IsStoring())
            ar << std::uint8_t{9} << Small << Signed << Wide << Real << Word;
        else {
            std::uint8_t schema = 0;
            ar >> schema >> Small >> Signed >> Wide >> Real >> Word;
        }
        CMsg::Serialize(ar);
    }
    std::uint16_t Small = 0;
    std::int32_t Signed = 0;
    std::uint32_t Wide = 0;
    double Real = 0.0;
    CString Word;
};

TEST(Stream, ProgramsWriteClassesOfTheirOwn) {
    COwnMsg message;
    message.MsgTime = 0.0;
    message.Small = 0x0102;
    message.Signed = -2;
    message.Wide = 0x01020304;
    message.Real = 1.0;
    message.Word = "hi";
    EXPECT_EQ(Encoded(message), std::string("\x09\x02\x01\xFE\xFF\xFF\xFF\x04\x03\x02\x01\0\0\0\0\0\0\xF0\x3F\x02hi"
                                            "\x01\0\0\0\0\0\0\0\0\0\0\0\0",
                                            35));
    COwnMsg loaded;
    loaded.Decode(&message);
    EXPECT_EQ(Encoded(loaded), Text(message.Body));
    EXPECT_EQ(loaded.Signed, -2);
}

TEST(Archive, RefusesTheWrongDirection) {
    unsigned char bytes[4] = {};
    CMemFile file(bytes, sizeof bytes);
    CArchive loading(&file, CArchive::load);
    std::uint32_t value = 0;
    EXPECT_THROW(loading << value, CArchiveException);
    loading >> value;
    EXPECT_THROW(loading >> value, CArchiveException);
    loading.Close();
    EXPECT_EQ(file.GetPosition(), 4u);
}

}  // namespace
