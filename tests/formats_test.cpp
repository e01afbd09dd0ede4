// Format records: what the record format library builds, lists and renders, and what it refuses.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "support/FormatRows.h"
#include "surveymsg/outside/Lumbra.h"

namespace {

struct Frees {
    void operator()(msgfmt* format) const { std::free(format); }
};
using Format = std::unique_ptr<msgfmt, Frees>;

Format Build(const std::vector<msguser>& rows, std::uint32_t recordSize, int alignment = 8) {
    msgfmt* format = nullptr;
    std::uint32_t used = 0;
    EXPECT_EQ(LmbSetAlignment(alignment), 1);
    LmbDefineFields(rows.data(), static_cast<int>(rows.size()));
    const int result = LmbBuildFormat(recordSize, &format, &used);
    EXPECT_EQ(result == 0, format != nullptr);
    return Format(format);
}

// Every entry as "path@offset*count:size", structures with what they hold behind them.
std::string Listing(const msgfmt* format, const msguser* structure = nullptr) {
    std::vector<msguser> fields(format->FieldCount);
    int count = 0;
    LmbListFields(format, structure, fields.data(), format->FieldCount, &count);
    std::string text;
    for (int i = 0; i < count; ++i) {
        const msguser& field = fields[static_cast<std::size_t>(i)];
        text += std::string(field.Name) + "@" + std::to_string(field.Offset) + "*" + std::to_string(field.Count) + ":" +
                std::to_string(field.Size);
        if (field.Storage == MsgStorageOpen) text += "(" + Listing(format, &field) + ")";
        text += " ";
    }
    return text;
}

struct Inner {
    std::uint8_t flag;
    double value;
};
struct Outer {
    std::int16_t id;
    char name[5];
    Inner inner[3];
    float values[4];
    std::uint8_t last;
};

const std::vector<msguser> kOuter = {
    Field(MsgStorageInt16, "id"),        Field(MsgStorageText, "name", 0, 5), Field(MsgStorageOpen, "inner", 3),
    Field(MsgStorageUInt8, "flag"),      Field(MsgStorageDouble, "value"),    kClose,
    Field(MsgStorageFloat, "values", 4), Field(MsgStorageUInt8, "last"),
};

TEST(Formats, AreLaidOutAsTheCompilerDoes) {
    const Format format = Build(kOuter, sizeof(Outer));
    ASSERT_TRUE(format);
    EXPECT_EQ(format->FieldCount, 7);
    const auto at = [](std::size_t offset) { return std::to_string(offset); };
    EXPECT_EQ(Listing(format.get()), "id@0*0:2 name@2*0:5 inner@" + at(offsetof(Outer, inner)) +
                                         "*3:16(flag@0*0:1 value@8*0:8 ) values@" + at(offsetof(Outer, values)) +
                                         "*4:4 last@" + at(offsetof(Outer, last)) + "*0:1 ");
    const Format packed = Build(kOuter, 200, 1);
    EXPECT_EQ(Listing(packed.get()),
              "id@0*0:2 name@2*0:5 inner@7*3:9(flag@0*0:1 value@1*0:8 ) values@34*4:4 last@50*0:1 ");
    // Words stand at their own size whatever the alignment.
    const Format words = Build({Field(MsgStorageUInt8, "a"), Field(MsgStorageInt16, "b")}, 4, 1);
    EXPECT_EQ(Listing(words.get()), "a@0*0:1 b@2*0:2 ");
}

TEST(Formats, AreOneBlockThatMeansTheSameElsewhere) {
    const Format format = Build(kOuter, sizeof(Outer));
    const std::vector<char> moved(reinterpret_cast<char*>(format.get()),
                                  reinterpret_cast<char*>(format.get()) + format->Length);
    EXPECT_EQ(Listing(reinterpret_cast<const msgfmt*>(moved.data())), Listing(format.get()));
    EXPECT_STREQ(format->Version, "1.0");
    msgfmt* other = reinterpret_cast<msgfmt*>(const_cast<char*>(moved.data()));
    other->Private[2] ^= 3;  // the other byte order
    EXPECT_EQ(Listing(other), "");
}

TEST(Formats, RefuseTablesThatDescribeNoRecord) {
    const std::string longName(256, 'n');
    std::vector<msguser> deep(65, Field(MsgStorageOpen, "s", 1));
    deep.push_back(Field(MsgStorageUInt8, "a"));
    deep.insert(deep.end(), 65, kClose);
    const std::vector<msguser> refused[] = {
        {},
        {kClose},
        {Field(MsgStorageOpen, "s", 1), Field(MsgStorageUInt8, "a")},
        {Field(MsgStorageOpen, "s", 1), kClose},
        {Field(MsgStorageUInt8, "a"), kClose},
        {Field(MsgStorageUInt8, nullptr)},
        {Field(MsgStorageUInt8, longName.c_str())},
        {Field(MsgStorageText, "t")},
        {Field(0, "a")},
        {Field(12, "a")},
        {Field(MsgStorageDouble, "a", 10000)},
        {Field(MsgStorageDouble, "a", 3)},  // more than the record holds
        deep,
    };
    for (const auto& rows : refused) EXPECT_FALSE(Build(rows, 20)) << rows.size();
    EXPECT_TRUE(Build({Field(MsgStorageDouble, "a", 2)}, 20));
    EXPECT_FALSE(Build({Field(MsgStorageUInt8, "a")}, 65536));
    EXPECT_EQ(LmbSetAlignment(3), 0);
    EXPECT_EQ(LmbDefineFields(nullptr, 1), 0);
}

TEST(Formats, NoChangedByteReachesOutside) {
    const Format format = Build(kOuter, sizeof(Outer));
    const auto* bytes = reinterpret_cast<const unsigned char*>(format.get());
    for (std::size_t place = 0; place < format->Length; ++place)
        for (const int change : {0x01, 0x80, 0xFF}) {
            // Exactly as long as it was: the sanitizer sees what reads past it.
            std::unique_ptr<unsigned char[]> copy(new unsigned char[format->Length]);
            std::memcpy(copy.get(), bytes, format->Length);
            copy[place] = static_cast<unsigned char>(copy[place] ^ change);
            const auto* changed = reinterpret_cast<msgfmt*>(copy.get());
            if (changed->Length > format->Length) continue;  // the caller compares with what has arrived
            msguser fields[16];
            int count = 0;
            LmbListFields(changed, nullptr, fields, 16, &count);
            for (int i = 0; i < count; ++i) {
                EXPECT_LE(fields[i].Offset + fields[i].Size, static_cast<int>(sizeof(Outer)));
                EXPECT_LT(std::strlen(fields[i].Name), 256u);
                if (fields[i].Storage == MsgStorageOpen) Listing(changed, &fields[i]);
            }
        }
}

// The work of listing all structures of a record stays in proportion to its rows.
TEST(Formats, ListingAStructureLooksAtNothingElse) {
    const Format format = Build(kOuter, sizeof(Outer));
    msguser fields[8];
    int count = 0;
    ASSERT_EQ(LmbListFields(format.get(), nullptr, fields, 8, &count), 1);
    constexpr std::size_t kRowsAt = 24, kRowSize = 12, kSizeAt = 6;
    reinterpret_cast<unsigned char*>(format.get())[kRowsAt + kSizeAt] = 9;  // of "id"
    EXPECT_EQ(LmbListFields(format.get(), nullptr, fields + 7, 1, &count), 0);
    EXPECT_EQ(Listing(format.get(), &fields[2]), "flag@0*0:1 value@8*0:8 ");
    reinterpret_cast<unsigned char*>(format.get())[kRowsAt + 3 * kRowSize + kSizeAt] = 9;  // of "flag"
    EXPECT_EQ(Listing(format.get(), &fields[2]), "");
}

TEST(Formats, ListNoMoreThanTheCapacityAndOnlyTheirOwnStructures) {
    const Format format = Build(kOuter, sizeof(Outer));
    msguser fields[8];
    int count = 0;
    EXPECT_EQ(LmbListFields(format.get(), nullptr, fields, 2, &count), 1);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(LmbListFields(format.get(), &fields[0], fields, 8, &count), 0);  // no structure
    msguser stranger = Field(MsgStorageOpen, "s");
    for (const std::uint32_t place : {0u, 8u, 0xFFFFFFFFu}) {
        stranger.Private = place;
        EXPECT_EQ(LmbListFields(format.get(), &stranger, fields, 8, &count), 0);
        EXPECT_EQ(count, 0);
    }
    EXPECT_EQ(LmbListFields(nullptr, nullptr, fields, 8, &count), 0);
}

TEST(Formats, RenderTimesByTheirScale) {
    struct {
        double seconds;
        std::uint32_t count;
    } record{1000000000.5, 90061};
    struct Case {
        int storage, display;
        std::size_t offset;
        const char *format, *text;
    };
    const std::size_t count = offsetof(decltype(record), count);
    const Case cases[] = {
        {MsgStorageDouble, 1, 0, "%Y-%m-%d %H:%M:%S", "2001-09-09 01:46:40"},
        {MsgStorageDouble, 2, 0, "%Y-%m-%d %H:%M:%S", "1970-01-12 13:46:40"},
        {MsgStorageDouble, 3, 0, "%Y-%m-%d %H:%M:%S", "2011-09-14 01:46:40"},
        {MsgStorageDouble, 4, 0, "%Y-%m-%d %H:%M:%S", "1980-01-17 13:46:40"},
        {MsgStorageUInt32, 5, count, "%H:%M:%S", "01:01:01"},
        {MsgStorageDouble, 6, 0, "%Y", ""},
        {MsgStorageDouble, 3, 9, "%Y", ""},  // past the end
        {MsgStorageDouble, 3, 65535, "%Y", ""},
        {MsgStorageText, 3, 0, "%Y", ""},
        {MsgStorageDouble, 3, 0, "%999999999d", ""},
        {MsgStorageDouble, 3, 0, "", ""},
    };
    for (const Case& each : cases) {
        msguser field = Field(each.storage, "f", 0, 0, each.display);
        field.Offset = static_cast<std::uint16_t>(each.offset);
        char text[81];
        std::memset(text, 'x', sizeof text);
        EXPECT_EQ(LmbFormatField(text, &record, 16, &field, 2, each.format), *each.text != '\0');
        EXPECT_STREQ(text, each.text);
        EXPECT_EQ(text[80], 'x');
    }
}

}  // namespace
