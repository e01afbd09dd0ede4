// Memory that ends in the middle of things: with every single allocation of an operation refused in turn,
// the outcome is the documented failure, nothing leaks, and the object works afterwards.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "support/FormatRows.h"
#include "support/Heap.h"
#include "support/Text.h"

#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

namespace {

// Runs `operation` with its first, second, ... allocation refused, until it needs no more, and `check` after
// each failure. Gives how many allocations were refused.
int RefuseEach(const std::function<bool()>& operation, const std::function<void()>& check) {
    for (int nth = 0; nth < 1000; ++nth) {
        Heap& heap = TheHeap();
        heap.hasRefused = false;
        heap.left = nth;
        bool succeeded = false;
        try {
            succeeded = operation();
        } catch (const CMemoryException&) {
        } catch (const CArchiveException& failure) {  // a nested message that could not be made
            EXPECT_EQ(failure.m_strFileName, "CMsg");
        }
        heap.left = -1;
        if (!heap.hasRefused) {
            EXPECT_TRUE(succeeded);
            return nth;
        }
        check();
    }
    ADD_FAILURE() << "never ends";
    return -1;
}

const char* const kLong = "a name that is far too long for the storage inside a text";

void Fill(CCompPosnMsg& position) {
    position.Name = kLong;
    for (int i = 0; i < 12; ++i) {
        CAcObsMsg observation;
        observation.FromName = (std::string(kLong) + std::to_string(i)).c_str();
        observation.ToName = kLong;
        position.AddObservation(observation);
    }
}

TEST(MemoryEnds, WhileEncodingDecodingAndAssigning) {
    CCompPosnMsg source, target, decoded;
    Fill(source);
    source.Encode();
    const std::string bytes = Text(source.Body);
    const auto works = [&] {
        target = source;
        EXPECT_EQ(target.MsgDependencies.GetCount(), 12);
        EXPECT_EQ(decoded.Decode(&source), 1);
        EXPECT_EQ(decoded.MsgDependencies.GetCount(), 12);
        EXPECT_EQ(Text(source.Body), bytes);
    };
    RefuseEach(
        [&] {
            source.Body = CString();
            return source.Encode() == 1;
        },
        [&] {
            source.Encode();
            works();
        });
    EXPECT_GT(RefuseEach(
                  [&] {
                      CCompPosnMsg fresh;
                      return fresh.Decode(&source) == 1;
                  },
                  works),
              12);
    EXPECT_GT(RefuseEach([&] { return decoded.Decode(&source) == 1; }, works), 12);
    EXPECT_GT(RefuseEach([&] { return &(target = source) == &target; }, works), 12);
}

TEST(MemoryEnds, WhileAddingAndMakingMessages) {
    CCompPosnMsg position;
    Fill(position);
    CObsMsg observation;
    observation.Type = CObsMsg::DepthAt;
    observation.FromName = kLong;
    EXPECT_GT(RefuseEach(
                  [&] {
                      position.RemoveObservation(&observation);
                      return position.AddObservation(observation) == 1;
                  },
                  [&] {
                      const int count = position.MsgDependencies.GetCount();
                      EXPECT_TRUE(count == 12 || count == 13);
                      EXPECT_EQ(position.Encode(), 1);
                  }),
              2);
    EXPECT_GT(RefuseEach(
                  [] {
                      CMsg* message = nullptr;
                      const int result = AllocMsg("PRX~Position", nullptr, &message);
                      EXPECT_EQ(result == 1, message != nullptr);
                      return FreeMsg(message) == 1;
                  },
                  [] {}),
              0);
}

TEST(MemoryEnds, WhileFormattingAndSending) {
    CPosnMsg position;
    position.Name = kLong;
    EXPECT_GT(RefuseEach(
                  [&] {
                      CString out;
                      return position.FormatString(100, 0, "<%500s>", &out) == 1 && out.GetLength() == 502;
                  },
                  [&] { EXPECT_EQ(Format(position, 100), kLong); }),
              0);
    EXPECT_GT(RefuseEach(
                  [&] {
                      position.Unpublish();
                      return position.Send() != 0;
                  },
                  [&] { EXPECT_NE(position.Send(), 0); }),
              2);
}

// A message is taken from the bus or stays there.
TEST(MemoryEnds, WhileReceivingAndLosesNoMessage) {
    CPosnMsg position;
    position.Name = kLong;
    CMsg reader;
    reader.MsgKey = "PRX~Position";
    reader.InstanceIdentifier = kLong;
    ASSERT_EQ(reader.Subscribe(0), 1);
    ASSERT_NE(position.Send(), 0);
    std::unique_ptr<CMsg> received = std::make_unique<CMsg>();
    bool isTaken = false;
    EXPECT_GT(RefuseEach(
                  [&] {
                      isTaken = false;
                      return isTaken = received->OnReceive() != 0;
                  },
                  [&] {
                      if (!isTaken) {
                          ASSERT_NE(received->OnReceive(), 0);
                      }
                      EXPECT_EQ(received->InstanceIdentifier, kLong);
                      EXPECT_EQ(received->Body, position.Body);
                      ASSERT_NE(position.Send(), 0);
                      received = std::make_unique<CMsg>();
                  }),
              3);
    EXPECT_EQ(received->Body, position.Body);
    reader.Unsubscribe();
}

TEST(MemoryEnds, WhileListsGrowAndAreCopied) {
    CStringArray texts;
    CPtrArray pointers;
    CMapStringToOb map;
    for (int i = 0; i < 8; ++i) {
        texts.Add(kLong);
        pointers.Add(&texts);
        map[(std::string(kLong) + std::to_string(i)).c_str()] = nullptr;
    }
    EXPECT_GT(RefuseEach(
                  [&] {
                      CStringArray copied(texts), assigned;
                      assigned = texts;
                      assigned.Reserve(100);
                      return copied.Add(kLong) == 8 && assigned.GetSize() == 8;
                  },
                  [&] { EXPECT_EQ(texts.GetSize(), 8); }),
              17);
    EXPECT_GT(RefuseEach(
                  [&] {
                      CPtrArray copied(pointers), assigned;
                      assigned = pointers;
                      assigned.Reserve(100);
                      copied.SetAtGrow(99, nullptr);
                      return copied.GetSize() == 100 && assigned.GetSize() == 8;
                  },
                  [&] { EXPECT_EQ(pointers.GetSize(), 8); }),
              3);
    EXPECT_GT(RefuseEach(
                  [&] {
                      map["the ninth, at which the map is indexed"] = nullptr;
                      map.Reserve(100);
                      return map.GetCount() == 9;
                  },
                  [&] {
                      CObject* found = nullptr;
                      EXPECT_EQ(map.Lookup((kLong + std::string("7")).c_str(), found), 1);
                      EXPECT_EQ(map.Lookup("none", found), 0);
                  }),
              3);
    CPosnListMsg list;
    list.PositionNames = texts;
    EXPECT_GT(RefuseEach(
                  [&] {
                      CPosnListMsg other;
                      other.Copy(list);
                      return other.PositionNames.GetSize() == 8;
                  },
                  [] {}),
              8);
    CMobTransMsg mobile;
    for (int i = 0; i < 8; ++i) mobile.Ranges.Add(new CTransRange);
    CMobTransMsg copy;
    EXPECT_GT(RefuseEach([&] { return &(copy = mobile) == &copy; },
                         [&] {
                             copy = mobile;
                             EXPECT_EQ(copy.Ranges.GetSize(), 8);
                         }),
              7);
}

TEST(MemoryEnds, WhileMembersAreUsed) {
    CCompPosnMsg position;
    Fill(position);
    EXPECT_GT(RefuseEach(
                  [&] {
                      CPtrArray rows;
                      if (!position.GetMemberDefinitions(&rows)) return false;
                      for (int i = 0; i < rows.GetSize(); ++i) {
                          const auto id = static_cast<MemberDefinition*>(rows[i])->Id;
                          CString text;
                          char copy[256];
                          position.GetObservation(0)->Name = CString();
                          if (!position.FormatString(id, 0, "%60s", &text) && id < 209) return false;
                          position.GetObservation(0)->Name = CString();
                          if (!position.MemberCopy(id, 0, copy)) return false;
                      }
                      return true;
                  },
                  [&] { EXPECT_EQ(Format(position, 200), kLong + std::string("0->") + kLong); }),
              10);
}

TEST(MemoryEnds, WhileFetchingAFormat) {
    const msguser rows[] = {Field(MsgStorageDouble, "a"), Field(MsgStorageOpen, "s", 1), Field(MsgStorageFloat, "b", 3),
                            kClose};
    msgfmt* format = nullptr;
    std::uint32_t used = 0;
    LmbSetAlignment(8);
    LmbDefineFields(rows, 4);
    ASSERT_EQ(LmbBuildFormat(32, &format, &used), 0);
    ASSERT_EQ(TvxPublish("memory", "", format, format->Length), 1);
    std::free(format);
    EXPECT_GT(RefuseEach(
                  [] {
                      CMsg* message = nullptr;
                      const int result = AllocMsg("memory", "*.*.0.memory.%", &message);
                      EXPECT_EQ(result == 1, message != nullptr);
                      return FreeMsg(message) == 1;
                  },
                  [] {}),
              5);

    CMapStringToOb cache;
    CExtMsg message, other;
    EXPECT_GT(RefuseEach([&] { return message.GetMsgFmt("*.*.0.memory.%", cache) == 1; },
                         [&] {
                             EXPECT_EQ(message.FormatRoot, nullptr);
                             EXPECT_TRUE(cache.IsEmpty());
                         }),
              5);
    message.Body = CString(std::string(64, '\0').c_str(), 64);
    EXPECT_GT(RefuseEach(
                  [&] {
                      CPtrArray listed;
                      CString text;
                      return message.GetMemberDefinitions(&listed) == 1 &&
                             message.FormatString(100, 0, "%60f", &text) == 1 && &(other = message) == &other;
                  },
                  [] {}),
              3);
    EXPECT_EQ(Format(other, 101, "%.1f", 2), "0.0");
    delete cache.GetAt(0);
}

// Ten thousand bodies of 100 bytes would hold 1.2 GB if each kept what was reserved for it; and writing one
// again needs no heap.
TEST(MemoryEnds, LaterForMessagesThatKeepNoReserve) {
    CPosnMsg first;
    first.Encode();
    const std::size_t before = TheHeap().live;
    std::vector<std::unique_ptr<CPosnMsg>> positions(100);
    for (auto& position : positions) {
        position = std::make_unique<CPosnMsg>();
        position->Encode();
    }
    EXPECT_LT(TheHeap().live - before, 100u * 1024u);
    EXPECT_EQ(RefuseEach([&] { return first.Encode() == 1; }, [] {}), 0);
}

}  // namespace
