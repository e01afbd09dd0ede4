// Messages without a class: formats from the bus, their fields, and records in the body. The bus and the
// record format library are the real ones.

#include <gtest/gtest.h>

#include <cstring>

#include "support/FormatRows.h"
#include "support/Text.h"

#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

namespace {

struct Frees {
    void operator()(CMsg* message) const { FreeMsg(message); }
};
using Owned = std::unique_ptr<CMsg, Frees>;

std::unique_ptr<msgfmt, void (*)(void*)> BuildFormat(const std::vector<msguser>& rows, std::uint32_t size) {
    msgfmt* format = nullptr;
    std::uint32_t used = 0;
    LmbSetAlignment(8);
    LmbDefineFields(rows.data(), static_cast<int>(rows.size()));
    EXPECT_EQ(LmbBuildFormat(size, &format, &used), 0);
    return {format, std::free};
}

std::string KeyText(const char* msgKey, const char* identifier) {
    char text[256];
    TvxCombineKeys(text, sizeof text, "*", "*", 0, msgKey, identifier);
    return text;
}

Owned Alloc(const char* msgKey, const char* identifier) {
    CMsg* message = nullptr;
    AllocMsg(msgKey, KeyText(msgKey, identifier).c_str(), &message);
    return Owned(message);
}

// A record with a field of every storage, as a program's struct.
struct Sonar {
    char name[8];
    std::int8_t gain;
    std::uint8_t mode;
    std::int16_t tilt;
    std::uint16_t port;
    std::int32_t ping;
    std::uint32_t serial;
    float heading;
    double time;
    double beams[4];
    struct {
        double x;
        float y;
    } mounts[2];
    std::int16_t angle;
};

const std::vector<msguser> kSonar = {
    Field(MsgStorageText, "name", 0, 8),
    Field(MsgStorageInt8, "gain"),
    Field(MsgStorageUInt8, "mode"),
    Field(MsgStorageInt16, "tilt"),
    Field(MsgStorageUInt16, "port"),
    Field(MsgStorageInt32, "ping"),
    Field(MsgStorageUInt32, "serial"),
    Field(MsgStorageFloat, "heading", 0, 0, MsgDisplayAngle),
    Field(MsgStorageDouble, "time", 0, 0, MsgDisplayTime),
    Field(MsgStorageDouble, "beams", 4),
    Field(MsgStorageOpen, "mounts", 2),
    Field(MsgStorageDouble, "x"),
    Field(MsgStorageFloat, "y"),
    kClose,
    Field(MsgStorageInt16, "angle", 0, 0, MsgDisplayAngle),
};

class Extension : public testing::Test {
protected:
    void SetUp() override {
        const auto format = BuildFormat(kSonar, sizeof(Sonar));
        ASSERT_EQ(TvxPublish("sonar", "1", format.get(), format->Length), 1);
        message = Alloc("sonar", "1");
        ASSERT_TRUE(message);
        message->Body = CString(reinterpret_cast<const char*>(&record), sizeof record);
    }

    Sonar record{"bow", -3, 200, -300, 60000, -70000, 4000000000u, 33.25f, 1.0, {1.5, 2.5, 3.5, 4.5}, {{7.0, 8.0f}, {}},
                 5};
    Owned message;
};

TEST_F(Extension, AnswersNothingBeforeItsMembersWereListed) {
    double value = 0.0;
    EXPECT_EQ(Format(*message, 1), "(0)");
    EXPECT_EQ(message->GetMemberValue(101, 0, &value), 0);
    EXPECT_EQ(message->SetMemberValue(101, 0, 1.0), 0);
    EXPECT_EQ(Copied(*message, 101), "(0)");
    EXPECT_EQ(message->GetMemberDefinitions(nullptr), 0);
    message->MsgTime = 1.0;
    EXPECT_EQ(Format(*message, 1), "00:00:01 06 Jan 80");
    CExtMsg unbound;
    CPtrArray rows;
    EXPECT_EQ(unbound.GetMemberDefinitions(&rows), 0);
}

TEST_F(Extension, ListsItsFieldsByPath) {
    std::string listing;
    for (const MemberDefinition* row : Rows(*message))
        listing += std::to_string(row->Id) + " " + row->Label + " " + std::to_string(row->Width) + ";";
    EXPECT_EQ(listing,
              "100 name 8;101 gain 1;102 mode 1;103 tilt 2;104 port 2;105 ping 4;106 serial 4;107 heading 4;108 time 8;"
              "109 beams[] 8;110 mounts.x 8;111 mounts.y 4;112 angle 2;");
    CString version;
    EXPECT_EQ(message->GetVersion(&version), 1);
    EXPECT_EQ(version, "1.0");
    EXPECT_EQ(message->MsgKey, "sonar");
    EXPECT_EQ(message->GetInstanceIdentifier(&version), 1);
    EXPECT_EQ(version, "1");
}

TEST_F(Extension, ShowsEveryStorage) {
    message->GetMemberDefinitions(nullptr);
    const std::pair<int, const char*> texts[] = {{100, "bow"},        {101, "-3"},        {102, "200"},
                                                 {103, "-300"},       {104, "60000"},     {105, "-70000"},
                                                 {106, "-294967296"}, {107, "33.250000"}, {108, "06 01 80 00:00:01"},
                                                 {109, "1.500000"},   {110, "7.000000"},  {111, "8.000000"},
                                                 {112, kUntouched},   {113, "(0)"},       {99, "(0)"}};
    for (const auto& [id, text] : texts) EXPECT_EQ(Format(*message, static_cast<std::uint16_t>(id)), text) << id;
    EXPECT_EQ(Format(*message, 106, "%u"), "4000000000");
    EXPECT_EQ(Format(*message, 107, "DEG%03.0f MIN%04.1f E"), "033 15.0 E");
    EXPECT_EQ(Format(*message, 108, "%Y"), "1980");
    EXPECT_EQ(Format(*message, 109, "%.1f", 3), "4.5");
    EXPECT_EQ(Format(*message, 109, "%.1f", 4), "(0)");
    EXPECT_EQ(Format(*message, 110, nullptr, 1), "(0)");
    EXPECT_EQ(Copied(*message, 100, 0, 9), std::string("bow\0\0\0\0\0\xEE", 9));
    EXPECT_EQ(Copied(*message, 103, 0, 3), std::string("\xD4\xFE\xEE", 3));
}

TEST_F(Extension, ReadsAndWritesNumbersInPlace) {
    message->GetMemberDefinitions(nullptr);
    const std::pair<int, double> stored[] = {
        {101, -3},           {102, 200},   {103, -300}, {104, 60000}, {105, -70000},
        {106, 4000000000.0}, {107, 33.25}, {108, 1.0},  {109, 1.5},   {112, 5}};
    for (const auto& [id, expected] : stored) {
        double value = 0.0;
        EXPECT_EQ(message->GetMemberValue(static_cast<std::uint16_t>(id), 0, &value), 1);
        EXPECT_EQ(value, expected) << id;
    }
    EXPECT_EQ(message->SetMemberValue(102, 0, 300.7), 1);
    EXPECT_EQ(message->SetMemberValue(109, 2, -8.25), 1);
    EXPECT_EQ(message->SetMemberValue(107, 0, 0.1), 1);
    Sonar changed;
    std::memcpy(&changed, message->Body, sizeof changed);
    EXPECT_EQ(changed.mode, 44);
    EXPECT_EQ(changed.beams[2], -8.25);
    EXPECT_EQ(changed.heading, 0.1f);
    double value = 9.0;
    EXPECT_EQ(message->GetMemberValue(100, 0, &value), 1);  // a text: answered, nothing happens
    EXPECT_EQ(message->SetMemberValue(100, 0, 1.0), 1);
    EXPECT_EQ(value, 9.0);
    EXPECT_EQ(Format(*message, 100), "bow");
}

TEST_F(Extension, NothingReachesPastAShortRecord) {
    message->GetMemberDefinitions(nullptr);
    for (int length = 0; length < static_cast<int>(sizeof(Sonar)); ++length) {
        // Heap of exactly that length: the sanitizer sees what reads past it.
        message->Body = CString();
        message->Body = CString(reinterpret_cast<const char*>(&record), length);
        for (std::uint16_t id = 100; id < 113; ++id) {
            double value = 0.0;
            const bool fits = message->GetMemberValue(id, 0, &value) == 1;
            EXPECT_EQ(message->SetMemberValue(id, 0, value) == 1, fits);
            EXPECT_EQ(Format(*message, id) == "(0)", !fits) << id;
            Copied(*message, id);
        }
        EXPECT_EQ(message->Body.GetLength(), length);
    }
}

TEST_F(Extension, AssignmentAndSendingKeepTheRecord) {
    message->GetMemberDefinitions(nullptr);
    auto& source = static_cast<CExtMsg&>(*message);
    CExtMsg target;
    target = source;
    EXPECT_EQ(Format(target, 100), "bow");
    EXPECT_EQ(Format(source, 100), "bow");
    EXPECT_NE(target.MemberTable.get(), source.MemberTable.get());
    CExtMsg& itself = target;
    target = itself;
    EXPECT_EQ(Format(target, 105), "-70000");

    // Filled by number and sent, it arrives at a reader that has not seen the struct either.
    CMsg received;
    received.MsgKey = "sonar";
    received.InstanceIdentifier = "1";
    ASSERT_EQ(received.Subscribe(0), 1);
    target.SetMemberValue(105, 0, 12345);
    EXPECT_NE(target.Send(), 0);
    ASSERT_NE(received.Receive(1000), 0);
    CMsg* made = nullptr;
    CString keyText;
    received.CombineKeys(&keyText);
    ASSERT_EQ(AllocMsg(received.MsgKey, keyText, &made), 1);
    const Owned reader(made);
    reader->GetMemberDefinitions(nullptr);
    *reader << received;
    EXPECT_EQ(Format(*reader, 105), "12345");
    received.MsgKey = "sonar";
    received.InstanceIdentifier = "1";
    received.Unsubscribe();
}

TEST_F(Extension, RowsOfAnEarlierFormatGoByName) {
    const auto format = BuildFormat(
        {Field(MsgStorageUInt8, "mode"), Field(MsgStorageDouble, "time"), Field(MsgStorageInt8, "gain")}, 24);
    TvxPublish("sonar", "other", format.get(), format->Length);
    message->GetMemberDefinitions(nullptr);
    CMapStringToOb cache;
    auto& extension = static_cast<CExtMsg&>(*message);
    ASSERT_EQ(extension.GetMsgFmt(KeyText("sonar", "other").c_str(), cache), 1);
    extension.Body = CString("\7......................\5", 24);
    EXPECT_EQ(Format(extension, 102), "7");    // "mode", the first field now
    EXPECT_EQ(Format(extension, 100), "(0)");  // "name" is none of its fields
    extension.FormatRoot = nullptr;
    delete cache.GetAt(0);
}

TEST_F(Extension, FormatsAreFetchedOnceForAKeyText) {
    const auto other = BuildFormat({Field(MsgStorageUInt8, "a")}, 1);
    TvxPublish("sonar", "1", other.get(), other->Length);
    EXPECT_EQ(static_cast<CExtMsg&>(*Alloc("sonar", "1")).FormatRoot, static_cast<CExtMsg&>(*message).FormatRoot);
    CMsg* fresh = nullptr;
    ASSERT_EQ(AllocMsg("sonar", "*.%2A.0.sonar.1", &fresh), 1);  // another text: its own tree
    const Owned owned(fresh);
    EXPECT_EQ(Rows(*fresh).size(), 1u);
    EXPECT_FALSE(Alloc("sonar", "nobody"));
    EXPECT_FALSE(Alloc("", ""));
    CMsg* none = nullptr;
    EXPECT_EQ(AllocMsg("sonar", "no key text", &none), 0);
}

// Every byte of a published record changed: no format, or one whose members all stay within the body.
TEST_F(Extension, AChangedFormatIsRefusedOrHarmless) {
    const auto format = BuildFormat(kSonar, sizeof(Sonar));
    std::vector<char> bytes(reinterpret_cast<char*>(format.get()),
                            reinterpret_cast<char*>(format.get()) + format->Length);
    int refused = 0;
    for (std::size_t place = 0; place < bytes.size(); ++place)
        for (const int change : {0x01, 0xFF}) {
            std::vector<char> changed = bytes;
            changed[place] = static_cast<char>(changed[place] ^ change);
            const std::string identifier = "changed " + std::to_string(place) + "/" + std::to_string(change);
            TvxPublish("sonar", identifier.c_str(), reinterpret_cast<msgfmt*>(changed.data()),
                       static_cast<std::uint16_t>(changed.size()));
            const Owned made = Alloc("sonar", identifier.c_str());
            TvxUnpublish("sonar", identifier.c_str());
            if (!made) {
                ++refused;
                continue;
            }
            made->GetMemberDefinitions(nullptr);
            made->Body = CString(reinterpret_cast<const char*>(&record), sizeof record);
            for (const MemberDefinition* row : Rows(*made)) {
                std::vector<char> buffer(row->Width + 1u);
                made->MemberCopy(row->Id, 0, buffer.data());
                Format(*made, row->Id);
                made->SetMemberValue(row->Id, 3, 1.0);
            }
        }
    EXPECT_GT(refused, 100);
    for (std::size_t length : {std::size_t{16}, bytes.size() / 2, bytes.size() - 1}) {
        TvxPublish("sonar", "cut", reinterpret_cast<msgfmt*>(bytes.data()), static_cast<std::uint16_t>(length));
        EXPECT_FALSE(Alloc("sonar", "cut")) << length;
    }
}

TEST(PositionOffset, IsARecordWithItsFormat) {
    CMsg received;
    received.MsgKey = "PRX~PositionOffset";
    received.InstanceIdentifier = "*";
    ASSERT_EQ(received.Subscribe(0), 1);
    CCompPosnMsg position;
    position.Name = "ROV";
    position.MsgTime = 1.0;
    position.Body = "kept";
    position.East = 1.5;
    position.North = 2.5;
    position.Depth = 10.0;
    position.Latitude = 59.5;
    position.Longitude = -1.25;
    position.GridHeading = 123.456;
    position.TrueHeading = 2.0;
    ASSERT_NE(position.SendOrvanePosn(), 0);
    EXPECT_EQ(position.MsgKey, "PRX~ComputedPosition");
    EXPECT_EQ(position.MsgTime, 1.0);
    EXPECT_EQ(position.Body, "kept");
    ASSERT_NE(received.Receive(1000), 0);
    ASSERT_EQ(received.Body.GetLength(), 168);
    EXPECT_EQ(Text(received.Body.Mid(8, 4)), std::string("\x86\x03\0\0", 4));
    EXPECT_EQ(Text(received.Body.Mid(156, 4)), "\x79\xE9\xF6\x42");
    EXPECT_EQ(Text(received.Body.Mid(60, 96)), std::string(96, '\0'));
    EXPECT_EQ(Text(received.Body.Mid(164)), std::string("\1\0\0\0", 4));

    CString keyText;
    received.CombineKeys(&keyText);
    CMsg* made = nullptr;
    ASSERT_EQ(AllocMsg(received.MsgKey, keyText, &made), 1);
    const Owned reader(made);
    *reader << received;
    std::string listing;
    for (const MemberDefinition* row : Rows(*reader))
        listing += std::string(row->Label) + "=" + Format(*reader, row->Id) + ";";
    const std::string zeros =
        "LocalENH.Easting=0.000000;FilterPos.LocalENH.Northing=0.000000;FilterPos.LocalENH.Height=0.000000;"
        "FilterPos.LocalGeog.Latitude=0.000000;FilterPos.LocalGeog.Longitude=0.000000;FilterPos.LocalGeog.Height=0."
        "000000;"
        "FilterPos.WGS84Geog.Latitude=0.000000;FilterPos.WGS84Geog.Longitude=0.000000;FilterPos.WGS84Geog.Height=0."
        "000000;";
    EXPECT_EQ(
        listing,
        "Time=06 01 80 00:00:01;AvailFlags=902;Position.LocalENH.Easting=1.500000;Position.LocalENH.Northing=2.500000;"
        "Position.LocalENH.Height=-10.000000;Position.LocalGeog.Latitude=59.500000;Position.LocalGeog.Longitude=-1."
        "250000;"
        "Position.LocalGeog.Height=-10.000000;Position.WGS84Geog.Latitude=0.000000;"
        "Position.WGS84Geog.Longitude=0.000000;Position.WGS84Geog.Height=0.000000;FilterPos." +
            zeros + "GridHding=123.456001;TrueHding=2.000000;ValidFlags=1;");
    received.MsgKey = "PRX~PositionOffset";
    received.InstanceIdentifier = "*";
    received.Unsubscribe();
}

}  // namespace
