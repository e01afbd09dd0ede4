// Format records that lie, and a bus that lies about them: no message and nothing kept, or a message whose
// every member stays inside its body. The bus's answer and, where a test wants, the record format library's
// are the test's own.

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <malloc.h>

#include <bit>
#include <cstring>
#include <functional>

#include "lumbra/Record.h"
#include "support/FormatRows.h"
#include "support/Heap.h"
#include "support/Text.h"

#include <surveymsg/extension/detail/ExtFormatDefn.h>
#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

namespace {

using Query = std::function<int(void* buffer, std::uint32_t size, std::uint32_t* needed)>;
using Listing = std::function<int(const msguser* structure, msguser* fields, int capacity)>;

Query query;
Listing listing;  // none: the record format library's

}  // namespace

int TvxQueryFormat(int, const char*, uint32_t, void* buffer, uint32_t size, uint32_t* needed) {
    return query(buffer, size, needed);
}

int LmbListFields(const msgfmt* format, const msguser* structure, msguser* fields, int capacity, int* count) {
    static const auto library = reinterpret_cast<decltype(&LmbListFields)>(dlsym(RTLD_NEXT, "LmbListFields"));
    if (!listing) return library(format, structure, fields, capacity, count);
    *count = listing(structure, fields, capacity);
    return 1;
}

namespace {

constexpr std::uint8_t kByteOrder =
    std::endian::native == std::endian::little ? lumbra::kLittleEndian : lumbra::kBigEndian;

// A record by the row, sound unless a test changes it.
struct Crafted {
    std::vector<lumbra::Row> rows;
    std::string names = std::string("a\0b\0", 4);
    int recordSize = 64;
    int fieldCount = -1;  // -1: as many as there are
    int length = -1;

    std::uint16_t NameAt(std::size_t place) const {
        return static_cast<std::uint16_t>(sizeof(msgfmt) + sizeof(lumbra::Extent) + rows.size() * sizeof(lumbra::Row) +
                                          place);
    }
    std::string Bytes() const {
        const lumbra::Extent extent{static_cast<std::uint16_t>(recordSize), static_cast<std::uint16_t>(rows.size()),
                                    static_cast<std::uint16_t>(recordSize), 0};
        msgfmt head{{'L', 'b', kByteOrder, lumbra::kLayout}, "1.0", 0, 0};
        head.Length = static_cast<std::uint16_t>(length >= 0 ? length : NameAt(names.size()));
        head.FieldCount = static_cast<std::uint16_t>(fieldCount >= 0 ? fieldCount : static_cast<int>(rows.size()));
        std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
        bytes.append(reinterpret_cast<const char*>(&extent), sizeof extent);
        bytes.append(reinterpret_cast<const char*>(rows.data()), rows.size() * sizeof(lumbra::Row));
        return bytes + names;
    }
};

lumbra::Row Leaf(int offset = 0, std::uint16_t name = 0) {
    return {MsgStorageDouble, 0, 0, static_cast<std::uint16_t>(offset), 8, name, 0};
}
lumbra::Row Structure(int inside, int offset = 0, int size = 64) {
    return {MsgStorageOpen,
            0,
            0,
            static_cast<std::uint16_t>(offset),
            static_cast<std::uint16_t>(size),
            0,
            static_cast<std::uint16_t>(inside)};
}

// Names every row that has no name.
Crafted Record(std::vector<lumbra::Row> rows) {
    Crafted record;
    record.rows = std::move(rows);
    for (lumbra::Row& row : record.rows)
        if (row.name == 0) row.name = record.NameAt(0);
    return record;
}

Query Answers(std::string bytes) {
    return [bytes = std::move(bytes)](void* buffer, std::uint32_t size, std::uint32_t* needed) {
        *needed = static_cast<std::uint32_t>(bytes.size());
        SetLastError(TvxErrorTooSmall);
        if (bytes.size() > size) return 0;
        std::memcpy(buffer, bytes.data(), bytes.size());
        return 1;
    };
}

// The names of the fields that a record gives, after every member was used over bodies of every length up to
// 65 bytes; "refused" if it gives no message.
std::string FieldsOf(Query answer) {
    query = std::move(answer);
    CMapStringToOb cache;
    std::string names;
    const std::size_t before = TheHeap().live;
    {
        CExtMsg message;
        if (!message.GetMsgFmt("*.*.0.hostile.1", cache)) {
            EXPECT_EQ(message.FormatRoot, nullptr);
            EXPECT_EQ(cache.GetCount(), 0);
            names = "refused";
        } else {
            for (const MemberDefinition* row : Rows(message)) names += std::string(row->Label) + ";";
            for (int length = 0; length <= 65; ++length) {
                message.Body = CString();  // heap of exactly the length: the sanitizer sees what reads past it
                message.Body = CString(std::string(65, '\7').c_str(), length);
                for (const MemberDefinition* row : Rows(message))
                    for (const std::uint16_t index : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{65535}}) {
                        double value = 0.0;
                        Format(message, row->Id, nullptr, index);
                        Copied(message, row->Id, index, row->Width + std::size_t{1});
                        message.GetMemberValue(row->Id, index, &value);
                        message.SetMemberValue(row->Id, index, value);
                    }
            }
        }
    }
    for (int i = 0; i < cache.GetCount(); ++i) delete cache.GetAt(i);
    cache.RemoveAll();
    if (names == "refused") {
        EXPECT_EQ(TheHeap().live, before);
    }
    return names;
}

std::string FieldsOf(const Crafted& record) { return FieldsOf(Answers(record.Bytes())); }

class HostileRecords : public testing::Test {
protected:
    void TearDown() override { listing = nullptr; }
};

TEST_F(HostileRecords, ASoundOneIsTaken) {
    EXPECT_EQ(FieldsOf(Record({Leaf(), Structure(1, 8, 8), Leaf()})), "a;a.a;");
    Crafted named = Record({Leaf(), Leaf(8)});
    named.rows[1].name = named.NameAt(2);
    EXPECT_EQ(FieldsOf(named), "a;b;");
}

TEST_F(HostileRecords, SizesThatLieOrCreep) {
    const std::string bytes = Record({Leaf()}).Bytes();
    for (const std::uint32_t claimed : {0u, 15u, 16u, 27u, 39u, 0xFFFFFFFFu}) {
        EXPECT_EQ(FieldsOf([&](void* buffer, std::uint32_t, std::uint32_t* needed) {
                      std::memcpy(buffer, bytes.data(), bytes.size());
                      *needed = claimed;
                      return 1;
                  }),
                  "refused")
            << claimed;
    }
    for (const std::uint32_t more : {0u, 1u, 0xFFFFu, 0xFFFFFFFFu}) {
        int queries = 0;
        EXPECT_EQ(FieldsOf([&](void*, std::uint32_t size, std::uint32_t* needed) {
                      ++queries;
                      *needed = size + more;
                      SetLastError(TvxErrorTooSmall);
                      return 0;
                  }),
                  "refused");
        EXPECT_LE(queries, 4);
    }
}

TEST_F(HostileRecords, HeadsThatDoNotFitTheRest) {
    const auto changed = [](void (*change)(Crafted&)) {
        Crafted record = Record({Leaf(), Structure(1, 8, 8), Leaf()});
        change(record);
        return FieldsOf(record);
    };
    EXPECT_EQ(changed([](Crafted& r) { r.fieldCount = 0; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.fieldCount = 2; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.fieldCount = 65535; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.length = 0; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.length = 24; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.length = r.NameAt(4) + 1; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.recordSize = 15; }), "refused");
    EXPECT_EQ(changed([](Crafted& r) { r.rows.clear(); }), "refused");
}

TEST_F(HostileRecords, RowsThatReachOut) {
    const auto changed = [](void (*change)(std::vector<lumbra::Row>&)) {
        Crafted record = Record({Leaf(), Structure(2, 8, 56), Leaf(), Leaf(8)});
        change(record.rows);
        return FieldsOf(record);
    };
    EXPECT_EQ(changed([](auto&) {}), "a;a.a;");
    EXPECT_EQ(changed([](auto& rows) { rows[0].offset = 65535; }), "refused");  // 65,543 would wrap to 7
    EXPECT_EQ(changed([](auto& rows) { rows[0].offset = 57; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[0].count = 9; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[0].size = 65535; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[3].offset = 49; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[1].inside = 3; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[1].inside = 65535; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[0].inside = 1; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[2].name = 65535; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[2].name = 3; }), "refused");
    EXPECT_EQ(changed([](auto& rows) { rows[2].storage = MsgStorageClose; }), "refused");
}

TEST_F(HostileRecords, NamesThatDoNotEndOrAreTheSame) {
    Crafted unended = Record({Leaf()});
    unended.names = std::string(100, 'n');
    EXPECT_EQ(FieldsOf(unended), "refused");
    unended.names = std::string(256, 'n') + '\0';
    EXPECT_EQ(FieldsOf(unended), "refused");
    unended.names = std::string(255, 'n') + '\0';
    EXPECT_EQ(FieldsOf(unended), std::string(255, 'n') + ";");
    EXPECT_EQ(FieldsOf(Record({Leaf(), Leaf(8), Leaf(16)})), "a;");
    EXPECT_EQ(FieldsOf(Record({Leaf(), Structure(1, 8, 8), Leaf(), Structure(1, 16, 8), Leaf()})), "a;a.a;");
}

TEST_F(HostileRecords, StructuresThatHoldNothingOrTooMuch) {
    EXPECT_EQ(FieldsOf(Record({Structure(0)})), "refused");
    EXPECT_EQ(FieldsOf(Record({Structure(0), Leaf()})), "a;");
    std::vector<lumbra::Row> deep;
    for (int inside = 4000; inside > 0; --inside) deep.push_back(Structure(inside));
    deep.push_back(Leaf());
    EXPECT_EQ(FieldsOf(Record(deep)), "refused");
    // As many structures as a record can hold.
    EXPECT_EQ(FieldsOf(Record(std::vector<lumbra::Row>(5400, Structure(0)))), "refused");
}

// Another record format library may believe what ours refuses.
TEST_F(HostileRecords, StructuresThatHoldThemselves) {
    const Crafted record = Record({Leaf(), Leaf(8)});
    listing = [](const msguser*, msguser* fields, int capacity) {
        for (int i = 0; i < capacity; ++i) fields[i] = Field(MsgStorageOpen, "self");
        return capacity;
    };
    EXPECT_EQ(FieldsOf(record), "refused");
    listing = [](const msguser* structure, msguser* fields, int) {
        fields[0] = Field(structure ? MsgStorageDouble : MsgStorageOpen, "far");
        fields[0].Offset = 40000;
        return 1;
    };
    EXPECT_EQ(FieldsOf(record), "refused");  // 80,000 would wrap to 14,464
    listing = [](const msguser*, msguser* fields, int) {
        fields[0] = Field(MsgStorageDouble, nullptr);
        return 1;
    };
    EXPECT_EQ(FieldsOf(record), "refused");
}

// A record of 39 fields, with names as paths of structures are: they fill a text's storage inside the object.
std::string RecordOf39Fields() {
    std::vector<std::string> names;
    std::vector<msguser> rows;
    for (int i = 0; i < 39; ++i) names.push_back("FilterPos.WGS84Geog.Longitude" + std::to_string(10 + i));
    for (const std::string& name : names) rows.push_back(Field(MsgStorageDouble, name.c_str()));
    msgfmt* format = nullptr;
    std::uint32_t used = 0;
    LmbDefineFields(rows.data(), static_cast<int>(rows.size()));
    EXPECT_EQ(LmbBuildFormat(512, &format, &used), 0);
    std::string record(reinterpret_cast<const char*>(format), format->Length);
    std::free(format);
    return record;
}

TEST_F(HostileRecords, ACachedFormatOf39FieldsStaysSmall) {
    query = Answers(RecordOf39Fields());
    CMapStringToOb cache;
    CExtMsg message;
    const std::size_t before = TheHeap().live;
    ASSERT_EQ(message.GetMsgFmt("*.*.0.small.1", cache), 1);
    EXPECT_EQ(message.FormatRoot->Fields.GetCount(), 39);
    EXPECT_LT(TheHeap().live - before + malloc_usable_size(message.FormatRoot->Format.get()), 8192u);
    delete cache.GetAt(0);
}

TEST_F(HostileRecords, ANewKeyTextWithEveryMessageFillsTheCacheToItsLimitOnly) {
    query = Answers(RecordOf39Fields());
    CMapStringToOb cache;
    const std::size_t before = TheHeap().live;
    const auto find = [&](int number) {
        CExtMsg message;
        return message.GetMsgFmt(("*.*.0.new." + std::to_string(number)).c_str(), cache);
    };
    int kept = 0;
    while (kept < 100000 && find(kept)) ++kept;
    EXPECT_GT(kept, 5000);
    EXPECT_LT(TheHeap().live - before, std::size_t{80} << 20);
    EXPECT_FALSE(find(kept + 1));
    EXPECT_TRUE(find(0) && find(kept - 1));  // what is there serves on
    for (int i = 0; i < cache.GetCount(); ++i) delete cache.GetAt(i);
}

}  // namespace
