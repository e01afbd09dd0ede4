// Nested messages: who owns what, and what a stream can do with them.

#include <gtest/gtest.h>

#include <pthread.h>

#include "support/Text.h"
#include "support/Vectors.h"

namespace {

std::unique_ptr<CObsMsg> Depth(const char* at, double value) {
    auto observation = std::make_unique<CObsMsg>();
    observation->Type = CObsMsg::DepthAt;
    observation->FromName = at;
    observation->Value = value;
    return observation;
}

std::string Order(CMsg& message) {
    std::string order;
    for (int i = 0; i < message.MsgDependencies.GetCount(); ++i)
        order += Text(message.MsgDependencies.GetKeyAt(i)) + ";";
    return order;
}

TEST(Factory, MakesWhatItsListNames) {
    const char* const* keys = GetMsgList();
    int count = 0;
    for (; keys[count]; ++count) {
        CMsg* message = nullptr;
        ASSERT_EQ(AllocMsg(keys[count], "never looked at", &message), 1);
        EXPECT_EQ(message->MsgKey, keys[count]);
        message->MsgKey = "";
        EXPECT_EQ(FreeMsg(message), 1);
    }
    EXPECT_EQ(count, 9);
    for (const char* key : {"Standard COP Parameters", "prx~position", "", "PRX~Position "}) {
        CMsg unset;
        CMsg* message = &unset;
        EXPECT_EQ(AllocMsg(key, nullptr, &message), 0) << key;
        EXPECT_EQ(message, nullptr);
    }
    EXPECT_EQ(AllocMsg("PRX~Position", nullptr, nullptr), 0);
    EXPECT_EQ(FreeMsg(nullptr), 0);
}

TEST(Dependencies, PointerFormAdoptsTheFirstOfAnIdentifier) {
    CMsg owner;
    CObsMsg* first = Depth("A", 1.0).release();
    const auto second = Depth("A", 2.0);
    EXPECT_EQ(owner.AddMsgDependency(first), 1);
    EXPECT_EQ(owner.AddMsgDependency(second.get()), 1);
    EXPECT_EQ(owner.MsgDependencies.GetCount(), 1);
    EXPECT_EQ(owner.MsgDependencies.GetAt(0), first);
    EXPECT_EQ(first->Value, 2.0);
}

TEST(Dependencies, ReferenceFormStoresACopy) {
    CMsg owner;
    const auto given = Depth("A", 1.0);
    EXPECT_EQ(owner.AddMsgDependency(*given), 1);
    EXPECT_FALSE(given->Body.IsEmpty());
    given->Value = 3.0;
    EXPECT_EQ(static_cast<CObsMsg*>(owner.MsgDependencies.GetAt(0))->Value, 1.0);
    CCopMsg parameters;
    EXPECT_EQ(owner.AddMsgDependency(parameters), 0);
    EXPECT_EQ(owner.MsgDependencies.GetCount(), 1);
    CTransMsg transponder;  // has no identifier to be stored under but the empty one
    transponder.Name = "T1";
    EXPECT_EQ(owner.AddMsgDependency(transponder), 1);
    transponder.Name = "T2";
    EXPECT_EQ(owner.AddMsgDependency(transponder), 1);
    EXPECT_EQ(Order(owner), "Depth/A;;");
    EXPECT_EQ(static_cast<CTransMsg*>(owner.MsgDependencies.GetAt(1))->Name, "T2");
}

TEST(Dependencies, RefusesCyclesAndWhatIsStoredAlready) {
    CCompPosnMsg outer;
    outer.Name = "outer";
    auto* inner = new CCompPosnMsg;
    inner->Name = "inner";
    CObsMsg* leaf = Depth("A", 1.0).release();
    ASSERT_EQ(inner->AddMsgDependency(leaf), 1);
    ASSERT_EQ(outer.AddMsgDependency(inner), 1);
    CMsg other;
    EXPECT_EQ(outer.AddMsgDependency(&outer), 0);
    EXPECT_EQ(outer.AddMsgDependency(outer), 0);
    EXPECT_EQ(inner->AddMsgDependency(&outer), 0);
    EXPECT_EQ(inner->AddMsgDependency(outer), 0);
    EXPECT_EQ(leaf->AddMsgDependency(&outer), 0);
    EXPECT_EQ(outer.AddMsgDependency(inner), 0);
    EXPECT_EQ(outer.AddMsgDependency(*inner), 0);
    EXPECT_EQ(other.AddMsgDependency(inner), 0);
    EXPECT_EQ(other.AddMsgDependency(*leaf), 1);  // a copy of a stored one may go anywhere
    EXPECT_EQ(outer.AddMsgDependency(static_cast<CMsg*>(nullptr)), 0);
    EXPECT_EQ(Order(outer), "inner;");
}

TEST(Dependencies, RemovingGoesByIdentifier) {
    CMsg owner;
    for (const char* at : {"A", "B", "C"}) owner.AddMsgDependency(Depth(at, 1.0).release());
    const auto same = Depth("B", 9.0);
    EXPECT_EQ(owner.RemoveMsgDependency(same.get()), 1);
    EXPECT_EQ(owner.RemoveMsgDependency(same.get()), 0);
    EXPECT_EQ(Order(owner), "Depth/A;Depth/C;");
    owner.AddMsgDependency(Depth("B", 1.0).release());
    EXPECT_EQ(Order(owner), "Depth/A;Depth/C;Depth/B;");
    owner.RemoveAllMsgDependencies();
    owner.RemoveAllMsgDependencies();
    EXPECT_TRUE(owner.MsgDependencies.IsEmpty());
}

TEST(Dependencies, AssignmentSharesNothing) {
    CCompPosnMsg source, target;
    target.AddMsgDependency(Depth("old", 1.0).release());
    source.AddMsgDependency(Depth("A", 1.0).release());
    source.Latitude = 59.5;
    source.StandardDeviation = 0.5;
    target = source;
    EXPECT_EQ(Order(target), "Depth/A;");
    EXPECT_NE(target.MsgDependencies.GetAt(0), source.MsgDependencies.GetAt(0));
    EXPECT_EQ(target.Latitude, 59.5);
    EXPECT_EQ(target.StandardDeviation, 0.5);
    EXPECT_EQ(target.Body, source.Body);
    CCompPosnMsg& itself = target;
    target = itself;
    EXPECT_EQ(Order(target), "Depth/A;");
}

TEST(Dependencies, AMessageCanTakeTheContentOfOneItOwns) {
    CCompPosnMsg outer;
    outer.Name = "outer";
    auto* inner = new CCompPosnMsg;
    inner->Name = "inner";
    inner->AddMsgDependency(Depth("A", 1.0).release());
    outer.AddMsgDependency(inner);
    CCompPosnMsg decoded;
    decoded = outer;
    outer = *inner;
    EXPECT_EQ(outer.Name, "inner");
    EXPECT_EQ(Order(outer), "Depth/A;");
    auto* nested = static_cast<CMsg*>(decoded.MsgDependencies.GetAt(0));
    nested->Encode();
    EXPECT_EQ(decoded.Decode(nested), 1);
    EXPECT_EQ(decoded.Name, "inner");
}

TEST(Dependencies, LoadingReplacesDuplicatesAndRefusesStrangers) {
    // Two depths at A under different maps' keys, and a key that the factory does not know.
    CMsg owner;
    owner.MsgDependencies["1"] = Depth("A", 1.0).release();
    owner.MsgDependencies["2"] = Depth("B", 2.0).release();
    owner.MsgDependencies["3"] = Depth("A", 3.0).release();
    owner.Encode();
    CMsg loaded;
    loaded.Decode(&owner);
    EXPECT_EQ(Order(loaded), "Depth/A;Depth/B;");
    EXPECT_EQ(static_cast<CObsMsg*>(loaded.MsgDependencies.GetAt(0))->Value, 3.0);

    auto* position = new CPosnMsg;
    position->Name = "Depth/A";  // one identifier, two classes
    owner.MsgDependencies["4"] = position;
    owner.Encode();
    EXPECT_THROW(loaded.Decode(&owner), CArchiveException);

    CMsg stranger;
    stranger.AddMsgDependency(new CCopMsg);
    stranger.Encode();
    try {
        loaded.Decode(&stranger);
        ADD_FAILURE();
    } catch (const CArchiveException& failure) {
        EXPECT_EQ(failure.m_cause, CArchiveException::badSchema);
        EXPECT_EQ(failure.m_strFileName, "CMsg");
    }
    EXPECT_TRUE(loaded.MsgDependencies.IsEmpty());
}

std::string Level(bool innermost) {
    std::string bytes("\x01\0\0\0\0\0\0\x01\0\0\0\0\0\0\0\0", 16);  // a nameless position list and its base share
    bytes += innermost ? std::string(4, '\0') : std::string("\x01\0\0\0\x0CSTX~PosnList", 17);
    return bytes;
}

std::string Nested(int levels) {
    std::string bytes;
    for (int level = 1; level < levels; ++level) bytes += Level(false);
    return bytes + Level(true);
}

// Runs `work` on a thread with a stack of a megabyte.
void OnSmallStack(void (*work)()) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 1 << 20);
    pthread_t thread{};
    const auto run = [](void* f) -> void* {
        reinterpret_cast<void (*)()>(f)();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(work)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(Dependencies, TheDeepestMessageNeedsLittleStack) {
    OnSmallStack([] {
        CPosnListMsg deep;
        deep.Body = ToBody(Nested(3724));
        EXPECT_EQ(deep.Body.GetLength(), 122879);
        EXPECT_EQ(deep.Decode(), 1);
        CPosnListMsg copy;
        copy = deep;
        EXPECT_EQ(copy.Body.GetLength(), 122879);
        EXPECT_EQ(copy.Body, ToBody(Nested(3724)));
    });
}

TEST(Dependencies, DeeperOnesAreRefused) {
    for (const int levels : {3725, 39000}) {
        CPosnListMsg deep;
        deep.Body = ToBody(Nested(levels));
        EXPECT_THROW(deep.Decode(), CArchiveException);
        deep.Body = ToBody(Nested(2));
        EXPECT_EQ(deep.Decode(), 1);
    }
}

TEST(Dependencies, AHalfReadTreeIsReleased) {
    const std::string bytes = Nested(20);
    for (std::size_t length = 1; length < bytes.size(); ++length) {
        CPosnListMsg list;
        list.Body = ToBody(bytes.substr(0, length));
        EXPECT_THROW(list.Decode(), CArchiveException);
    }
}

}  // namespace
