// Bodies of the largest size that the bus takes, made to cost as much as they can: they load or fail as
// documented, within 64 MB of heap and in linear time, and the object then takes a good body.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "support/Heap.h"
#include "support/Text.h"
#include "support/Vectors.h"

namespace {

constexpr std::size_t kLargestBody = 1310720;
constexpr std::size_t kMostHeap = std::size_t{64} << 20;

template <class T>
std::string BytesOf(T value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

const std::string kClaim = BytesOf(0x7FFFFFFF);

std::string Short(const std::string& text) { return static_cast<char>(text.size()) + text; }

// The base share, with a count of nested messages.
std::string Base(const std::string& count) { return "\1" + BytesOf(0.0) + count; }

std::string List(const std::string& name, const std::string& texts = BytesOf(0)) {
    return "\1" + Short(name) + Short("") + texts;
}

std::string NestedList(const std::string& name) { return Short("STX~PosnList") + List(name) + Base(BytesOf(0)); }

// What the classes that have an identifier of their own look like inside a message.
std::vector<std::string> OneOfEachClass() {
    std::vector<std::string> all;
    const auto add = [&all](CMsg& message) {
        message.Encode();
        all.push_back(Short(Text(message.MsgKey)) + Text(message.Body));
    };
    CObsMsg observation;
    CAcObsMsg range;
    CPosnMsg position;
    CCompPosnMsg computed;
    CTargMsg target;
    CTransMsg transponder;
    CPosnListMsg list;
    CProfProcessedMsg profile;
    computed.Name = "computed";
    list.Name = "list";
    profile.Name = "profile";
    position.Name = "position";
    for (CMsg* message : std::initializer_list<CMsg*>{&observation, &range, &position, &computed, &target, &transponder,
                                                      &list, &profile})
        add(*message);
    CMobTransMsg mobile;  // has no identifier, and is the one that arrives last
    mobile.Ranges.Add(new CTransRange);
    add(mobile);
    return all;
}

struct Attack {
    const char* name;
    bool loads;  // else it fails
    std::string (*body)(std::size_t size);
};

void PrintTo(const Attack& attack, std::ostream* out) { *out << attack.name; }

std::string Repeat(std::string body, std::size_t size, const std::function<std::string(int)>& piece) {
    // The count stands at the end of what the body begins with.
    const std::size_t count = body.size() - 4;
    int pieces = 0;
    for (std::string next = piece(0); body.size() + next.size() <= size; next = piece(++pieces)) body += next;
    return body.replace(count, 4, BytesOf(pieces));
}

std::string Number(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%08d", number);
    return text;
}

const Attack kAttacks[] = {
    {"LevelsThatClaimAll", false,
     [](std::size_t size) {
         std::string body;
         for (int level = 1; level < 3724; ++level) body += List("") + Base(kClaim) + Short("STX~PosnList");
         body.resize(size);
         return body;
     }},
    {"LevelsWithoutEnd", false,
     [](std::size_t size) {
         std::string body;
         while (body.size() < size) body += List("") + Base(BytesOf(1)) + Short("STX~PosnList");
         return body.substr(0, size);
     }},
    {"OneIdentifier", true,
     [](std::size_t size) { return Repeat(List("") + Base(kClaim), size, [](int) { return NestedList(""); }); }},
    {"OneIdentifierInEachClass", true,
     [](std::size_t size) {
         auto each = OneOfEachClass();
         each.pop_back();
         return Repeat(List("") + Base(kClaim), size,
                       [&each](int i) { return each[static_cast<std::size_t>(i) % each.size()]; });
     }},
    {"TwoClassesWithOneIdentifier", false,
     [](std::size_t size) {
         const auto each = OneOfEachClass();
         return Repeat(List("") + Base(kClaim), size,
                       [&each](int i) { return each[static_cast<std::size_t>(i) % each.size()]; });
     }},
    {"ManyIdentifiers", true,
     [](std::size_t size) {
         return Repeat(List("") + Base(kClaim), size, [](int i) { return NestedList(Number(i)); });
     }},
    {"IdentifiersWithOneEnd", true,
     [](std::size_t size) {
         return Repeat(List("") + Base(kClaim), size, [](int i) { return NestedList(Number(i) + "/the same end"); });
     }},
    {"IdentifiersWithOneBeginning", true,
     [](std::size_t size) {
         return Repeat(List("") + Base(kClaim), size,
                       [](int i) { return NestedList("the same beginning/" + Number(i)); });
     }},
    {"EmptyTexts", false,
     [](std::size_t size) {
         std::string body = List("", kClaim);
         body.resize(size);
         return body;
     }},
    {"TextsJustTooLongToStandInPlace", false,
     [](std::size_t size) {
         std::string body = List("", kClaim);
         while (body.size() < size) body += Short(std::string(32, 'x'));
         return body.substr(0, size);
     }},
    {"RangesWithoutEnd", false,
     [](std::size_t size) {
         std::string body = "\2" + std::string(28, '\0') + kClaim;
         body.insert(0, List("") + Base(BytesOf(1)) + Short("PRX~MobileTransponder"));
         CTransRange range;
         range.Encode();
         while (body.size() < size) body += Text(range.Body);
         return body.substr(0, size);
     }},
    {"LongNames", true,
     [](std::size_t size) {
         const auto quarter = static_cast<std::int32_t>((size - 200) / 4);
         const std::string name =
             std::string("\xFF\xFF\xFF") + BytesOf(quarter) + std::string(static_cast<std::size_t>(quarter), 'x');
         const std::string observation = "\3" + BytesOf(0.0) + name + name + BytesOf(std::uint16_t{1}) + BytesOf(0.0) +
                                         BytesOf(0) + BytesOf(0) + name + name + std::string(24, '\0') +
                                         Base(BytesOf(0));
         return List("") + Base(BytesOf(1)) + Short("RAW~Observation") + observation;
     }},
};

class HostileBody : public testing::TestWithParam<Attack> {
protected:
    // Loads a body; gives the allocations that it took.
    long Load(const std::string& bytes) {
        CPosnListMsg list;
        list.Body = ToBody(bytes);
        const long before = TheHeap().allocations;
        try {
            list.Decode();
            EXPECT_TRUE(GetParam().loads);
        } catch (const CArchiveException&) {
            EXPECT_FALSE(GetParam().loads);
        }
        const long allocations = TheHeap().allocations - before;
        list.Body = CString();
        CPosnListMsg good;
        good.Encode();
        EXPECT_EQ(list.Decode(&good), 1);
        return allocations;
    }
};

TEST_P(HostileBody, StaysWithinItsHeap) {
    const std::string bytes = GetParam().body(kLargestBody);
    Heap& heap = TheHeap();
    const std::size_t before = heap.live;
    heap.peak = heap.live;
    Load(bytes);
    EXPECT_LT(heap.peak, before + bytes.size() + kMostHeap);
    EXPECT_LT(heap.live, before + (std::size_t{1} << 20));
}

TEST_P(HostileBody, TakesWorkInProportion) {
    const long half = Load(GetParam().body(kLargestBody / 2));
    const long whole = Load(GetParam().body(kLargestBody));
    EXPECT_LE(whole, 2 * half + 100);
}

INSTANTIATE_TEST_SUITE_P(Bodies, HostileBody, testing::ValuesIn(kAttacks),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
