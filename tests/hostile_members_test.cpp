// What generic tools can be made to do: hostile formats, numbers and lists, for every member of every class;
// and nothing that was never set reaches a text or the wire.

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "support/Text.h"
#include "support/Vectors.h"

namespace {

const char* const kClasses[] = {"CMsg",         "CObsMsg",           "CAcObsMsg",    "CPosnMsg",
                                "CCompPosnMsg", "CProfProcessedMsg", "CPosnListMsg", "CTargMsg",
                                "CTransMsg",    "CMobTransMsg",      "CTransRange",  "CCopMsg"};

// A message with something in each of its lists.
std::unique_ptr<CMsg> MakeFilled(const char* className) {
    auto message = MakeByClass(className);
    if (auto* computed = dynamic_cast<CCompPosnMsg*>(message.get())) {
        CAcObsMsg range;
        range.FromName = "A";
        computed->AddObservation(range);
    }
    if (auto* mobile = dynamic_cast<CMobTransMsg*>(message.get())) mobile->Ranges.Add(new CTransRange);
    return message;
}

bool IsTime(const MemberDefinition& row) { return std::string(row.Label).find("Time") != std::string::npos; }

// No conversion that any member could take: each gives what no format gives.
std::vector<std::string> RefusedFormats() {
    const std::string megabyte(1 << 20, 'x');
    std::vector<std::string> all = {"%n",
                                    "%hhn",
                                    "%1$n",
                                    "%-n",
                                    "%*d",
                                    "%.*f",
                                    "%-*.*f",
                                    "%f%f",
                                    "%d%s",
                                    "%s%s",
                                    "%f%n",
                                    "%%%n",
                                    "%999999999f",
                                    "%.999999999f",
                                    "%-0+ #1000d",
                                    "%1000s",
                                    "%.1000s",
                                    "%000001000d",
                                    "%",
                                    "x%",
                                    "%5",
                                    "%-",
                                    "%.",
                                    "%l",
                                    "%llllllll",
                                    "%I64",
                                    "%m",
                                    "%p",
                                    "%ls%n",
                                    "%C",
                                    "%w",
                                    "% 5.3",
                                    "%2147483648d",
                                    "%-99999999999999999999s"};
    all.push_back(megabyte + "%n");
    all.push_back("%n" + megabyte);
    all.push_back("%" + std::string(1 << 20, '9') + "d");
    all.push_back("%" + std::string(1 << 20, 'l') + "n");
    std::string many;
    for (int i = 0; i < 100000; ++i) many += "%f";
    all.push_back(many);
    return all;
}

TEST(HostileFormats, GiveTheDefaultForEveryMember) {
    for (const std::string& format : RefusedFormats()) {
        for (const char* className : kClasses) {
            const auto message = MakeFilled(className);
            for (const MemberDefinition* row : Rows(*message)) {
                if (IsTime(*row) && row->Width == 8) continue;  // goes by the rules of a time
                EXPECT_EQ(Format(*message, row->Id, format.c_str()), Format(*message, row->Id))
                    << className << " " << row->Label << " " << format.substr(0, 20);
            }
        }
        CString out;
        CMsg::FormatString(1.5, format.c_str(), &out);
        EXPECT_EQ(out, "1.500000") << format.substr(0, 20);
        CMsg::ValidNumberFormat(format.c_str());
    }
}

TEST(HostileFormats, DegreesOutOfOrderOrTwiceGiveTheNumber) {
    CPosnMsg position;
    position.Latitude = -33.5;
    std::string thousand;
    for (int i = 0; i < 1000; ++i) thousand += "DEG%f";
    for (const std::string& format : {std::string("MIN%fDEG%f"), std::string("SEC%fMIN%f"), std::string("DEG%fDEG%f"),
                                      std::string("DEG%f SEC%f SEC%f"), std::string("DEG%"), std::string("DEG%s"),
                                      std::string("DEG%n"), std::string("DEG%*f"), std::string("DEG%f MIN%"),
                                      std::string("DEG%999999999f"), std::string("DEG%% MIN%f"), thousand}) {
        EXPECT_EQ(Format(position, 110, format.c_str()), "-33.500000") << format.substr(0, 20);
        CString out;
        CMsg::FormatString(-33.5, format.c_str(), &out);
        EXPECT_EQ(out, "-33.500000");
    }
    const std::string megabyte(1 << 20, 'x');
    EXPECT_EQ(Format(position, 110, (megabyte + "DEG%.0f").c_str()), megabyte + "-34");
}

TEST(HostileFormats, TimesEndAtTheirLimit) {
    CCopMsg parameters;
    parameters.LocalTime = 1.0;
    std::string thousand;
    for (int i = 0; i < 1000; ++i) thousand += "%H";
    for (const std::string& format : {std::string("%999999999Y"), std::string("%0999999999d"),
                                      std::string(1 << 20, 'x'), thousand, std::string(79, 'x') + "%H"})
        EXPECT_EQ(Format(parameters, 103, format.c_str()), "");
    for (const char* format : {"%n", "%", "%E", "%O", "%Ez", "%#", "%^", "%-", "%5", "%s%s", "%*d", "\xFF%\xFF"})
        EXPECT_LT(Format(parameters, 103, format).size(), 80u) << format;
}

// NaN, the infinities and what no integer holds, into every number and out again as text.
TEST(HostileNumbers, BecomeZeroInIntegersAndATextEverywhere) {
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, -1e300, 9.3e18, 5e-324})
        for (const char* className : kClasses) {
            const auto message = MakeFilled(className);
            for (const MemberDefinition* row : Rows(*message)) {
                if (!message->SetMemberValue(row->Id, 0, value)) continue;
                double stored = 1.0;
                ASSERT_EQ(message->GetMemberValue(row->Id, 0, &stored), 1);
                if (row->Width < 8) {
                    EXPECT_EQ(stored, 0.0) << className << " " << row->Label;
                } else {
                    EXPECT_EQ(std::bit_cast<std::uint64_t>(stored), std::bit_cast<std::uint64_t>(value))
                        << className << " " << row->Label;
                }
                for (const char* format : {"%f", "%d", "%x", "%c", "%.999f", "%999.999e", "%a", "DEG%f MIN%f SEC%f E",
                                           "DEG%d MIN%d SEC%d N", "%Y-%m-%d"})
                    EXPECT_LT(Format(*message, row->Id, format).size(), 4200u);
            }
            message->Encode();
            EXPECT_EQ(MakeByClass(className)->Decode(message.get()), 1);
        }
}

// The list of a received position or transponder may hold any class, and any number of them.
TEST(HostileLists, NoCopyIsWiderThanItsRowPromises) {
    constexpr std::size_t kTypeOfPosition = 16;  // the one row whose text is longer than its width
    for (const char* className : kClasses) {
        const auto message = MakeFilled(className);
        for (const char* nested : kClasses) message->MsgDependencies[nested] = MakeByClass(nested).release();
        for (const MemberDefinition* row : Rows(*message)) {
            const bool isType = row->Id == 101 && dynamic_cast<CPosnMsg*>(message.get());
            const std::size_t width = isType ? kTypeOfPosition : row->Width;
            for (std::uint16_t index = 0; index < 16; ++index) {
                const std::string copy = Copied(*message, row->Id, index, 400);
                if (copy == "(0)") continue;
                EXPECT_EQ(copy.substr(width), std::string(400 - width, '\xEE')) << className << " " << row->Label;
            }
        }
    }
}

TEST(HostileLists, NoOtherClassIsServedAsAnObservation) {
    CCompPosnMsg position;
    for (const char* nested : {"CPosnMsg", "CCompPosnMsg", "CProfProcessedMsg", "CTargMsg", "CTransMsg", "CMobTransMsg",
                               "CPosnListMsg", "CTransRange", "CCopMsg", "CMsg"}) {
        auto stranger = MakeByClass(nested);
        position.MsgDependencies[nested] = stranger.get();
        const auto index = static_cast<std::uint16_t>(position.MsgDependencies.GetCount() - 1);
        EXPECT_EQ(position.GetObservation(index), nullptr) << nested;
        for (std::uint16_t id = 200; id <= 211; ++id) {
            double value = 7.0;
            EXPECT_EQ(Format(position, id, nullptr, index), "(0)") << nested << " " << id;
            EXPECT_EQ(Copied(position, id, index), "(0)");
            EXPECT_EQ(position.GetMemberValue(id, index, &value), 0);
            EXPECT_EQ(position.SetMemberValue(id, index, 1.0), 0);
            EXPECT_EQ(value, 7.0);
        }
        static_cast<void>(stranger.release());
    }
}

// All that a message gives away, when its object is made in storage that is full of `filling`.
template <class Message>
std::string MadeIn(unsigned char filling) {
    alignas(Message) unsigned char storage[sizeof(Message)];
    std::memset(storage, filling, sizeof storage);
    auto* message = new (storage) Message;
    message->MsgTime = 1.0;
    if (auto* parameters = dynamic_cast<CCopMsg*>(message)) parameters->LocalTime = 1.0;
    message->Encode();
    std::string all = Text(message->Body);
    for (std::uint16_t id = 0; id < 256; ++id) {
        double value = 0.0;
        all += Format(*message, id) + Copied(*message, id) + std::to_string(message->GetMemberValue(id, 0, &value));
        all.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    message->~Message();
    return all;
}

template <class Message>
void ExpectNothingOfItsStorage() {
    EXPECT_EQ(MadeIn<Message>(0xAA), MadeIn<Message>(0x55)) << Text(Message().MsgKey);
}

TEST(Unset, NothingOfItsStorageIsInAMessage) {
    ExpectNothingOfItsStorage<CMsg>();
    ExpectNothingOfItsStorage<CObsMsg>();
    ExpectNothingOfItsStorage<CAcObsMsg>();
    ExpectNothingOfItsStorage<CPosnMsg>();
    ExpectNothingOfItsStorage<CCompPosnMsg>();
    ExpectNothingOfItsStorage<CProfProcessedMsg>();
    ExpectNothingOfItsStorage<CPosnListMsg>();
    ExpectNothingOfItsStorage<CTargMsg>();
    ExpectNothingOfItsStorage<CTransMsg>();
    ExpectNothingOfItsStorage<CMobTransMsg>();
    ExpectNothingOfItsStorage<CTransRange>();
    ExpectNothingOfItsStorage<CCopMsg>();
    ExpectNothingOfItsStorage<CExtMsg>();
}

}  // namespace
