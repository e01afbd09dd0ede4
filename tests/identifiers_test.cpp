// How messages are named, renamed, compared and versioned; key texts.

#include <gtest/gtest.h>

#include "support/Text.h"
#include "support/Vectors.h"

namespace {

TEST(Identifiers, OfObservations) {
    struct Case {
        int type;
        const char *from, *to, *oldFrom, *oldTo;
        const char *identifier, *old;
    };
    const Case cases[] = {
        {0, "A", "B", "", "", "/A", "before"},
        {1, "A", "B", "", "", "Range/A->B", "before"},
        {1, "A", "B", "J", "", "Range/A->B", "Range/J->B"},
        {1, "A", "B", "J", "K", "Range/A->B", "Range/J->K"},
        {2, "A", "B", "J", "K", "Depth/A", "Depth/J"},
        {3, "A", "B", "", "", "East/A", "before"},
        {4, "A", "B", "", "", "North/A", "before"},
        {5, "A", "B", "", "", "Pitch/A", "before"},
        {6, "A", "B", "", "", "Roll/A", "before"},
        {7, "A", "B", "", "", "Heading/A", "before"},
        {8, "A", "B", "J", "K", "X Offset/A->B", "X Offset/J"},
        {8, "A", "B", "", "K", "X Offset/A->B", "before"},
        {9, "A", "B", "", "", "Y Offset/A->B", "before"},
        {10, "A", "B", "", "", "Z Offset/A->B", "before"},
        {11, "A", "B", "", "K", "Baseline/A->B", "Baseline/A->K"},
        {12, "A", "B", "J", "", "Bearing/A->B", "Bearing/J"},
        {13, "A", "B", "", "", "/A", "before"},
    };
    for (const Case& each : cases) {
        CObsMsg observation;
        observation.Type = static_cast<std::uint16_t>(each.type);
        observation.FromName = each.from;
        observation.ToName = each.to;
        observation.OldFromName = each.oldFrom;
        observation.OldToName = each.oldTo;
        observation.OldInstanceIdentifier = "before";
        EXPECT_EQ(Identifier(observation), each.identifier);
        EXPECT_EQ(observation.OldInstanceIdentifier, each.old) << each.identifier;
    }
}

TEST(Identifiers, OfPositions) {
    struct Case {
        const char *name, *prefix, *oldName, *oldPrefix;
        const char *identifier, *old;
    };
    const Case cases[] = {
        {"B", "", "", "", "B", "before"},   {"B", "A", "", "", "A/B", "before"}, {"B", "", "K", "", "B", "K"},
        {"B", "A", "K", "", "A/B", "A/K"},  {"B", "A", "", "D", "A/B", "D/B"},   {"B", "", "", "D", "B", "D/B"},
        {"B", "A", "K", "D", "A/B", "D/K"}, {"", "", "", "", "", "before"},
    };
    for (const Case& each : cases) {
        CPosnMsg position;
        position.Name = each.name;
        position.NamePrefix = each.prefix;
        position.OldName = each.oldName;
        position.OldNamePrefix = each.oldPrefix;
        position.OldInstanceIdentifier = "before";
        EXPECT_EQ(Identifier(position), each.identifier);
        EXPECT_EQ(position.OldInstanceIdentifier, each.old) << each.identifier;
    }
}

TEST(Identifiers, OfTargets) {
    struct Case {
        const char *prefix, *oldName, *oldPrefix, *oldReference;
        const char *identifier, *old;
    };
    const Case cases[] = {
        {"", "", "", "", "R->T", ""},           {"A", "", "", "", "A/R->T", ""},
        {"A", "K", "", "", "A/R->T", "A/R->K"}, {"A", "", "", "Q", "A/R->T", "A/Q->T"},
        {"A", "", "D", "", "A/R->T", "D/R->T"}, {"", "K", "", "", "R->T", "R->K"},
    };
    for (const Case& each : cases) {
        CTargMsg target;
        target.Name = "T";
        target.ReferencePosition = "R";
        target.NamePrefix = each.prefix;
        target.OldName = each.oldName;
        target.OldNamePrefix = each.oldPrefix;
        target.OldReferencePosition = each.oldReference;
        target.OldInstanceIdentifier = "before";
        EXPECT_EQ(Identifier(target), each.identifier);
        EXPECT_EQ(target.OldInstanceIdentifier, each.old);
    }
}

TEST(Identifiers, AreGivenByTheClassesThatHaveThem) {
    for (const char* className : {"CMsg", "CTransMsg", "CMobTransMsg", "CTransRange"}) {
        const auto message = MakeByClass(className);
        message->InstanceIdentifier = "set";
        CString out("before");
        EXPECT_EQ(message->GetInstanceIdentifier(&out), 0);
        EXPECT_EQ(out, "before");
    }
    CPosnMsg position;
    position.Name = "B";
    CString out;
    EXPECT_EQ(position.GetInstanceIdentifier(nullptr), 0);
    EXPECT_EQ(position.GetInstanceIdentifier(&out), 1);
    EXPECT_EQ(out, "B");
    position.Name = "C";  // an identifier that is there is not refreshed
    position.GetInstanceIdentifier(&out);
    EXPECT_EQ(out, "B");
    CCopMsg parameters;
    parameters.GetInstanceIdentifier(&out);
    EXPECT_EQ(out, "Standard COP Parameters");
    CPosnListMsg list;
    list.Name = "L";
    list.OldInstanceIdentifier = "before";
    EXPECT_EQ(Identifier(list), "L");
    EXPECT_EQ(list.OldInstanceIdentifier, "");
}

TEST(Identifiers, Versions) {
    CString out("before");
    CMsg plain;
    EXPECT_EQ(plain.GetVersion(&out), 0);
    CExtMsg unbound;
    EXPECT_EQ(unbound.GetVersion(&out), 0);
    EXPECT_EQ(out, "before");
    for (const char* className : {"CObsMsg", "CPosnMsg", "CTransRange", "CCopMsg", "CTargMsg", "CPosnListMsg"}) {
        const auto message = MakeByClass(className);
        EXPECT_EQ(message->GetVersion(nullptr), 0);
        out.Empty();
        EXPECT_EQ(message->GetVersion(&out), 1);
        EXPECT_EQ(out, "1.0.0.0") << className;
    }
}

TEST(Messages, CompareByTheirAddress) {
    CPosnMsg a, b;
    b.MsgTime = 0.0;
    b.East = 5.0;
    EXPECT_EQ(a == b, 1);
    b.SourceNumber = 1;
    EXPECT_EQ(a == b, 0);
    b.SourceNumber = 0;
    for (CString* key : {&b.InstanceIdentifier, &b.SourceNode, &b.SourceTask, &b.MsgKey}) {
        const CString before = *key;
        *key = "other";
        EXPECT_EQ(a == b, 0);
        *key = before;
    }
    EXPECT_EQ(a == b, 1);
}

TEST(Messages, ShiftingTakesHeaderAndBytesAsTheyStand) {
    CPosnMsg source, target;
    source.Name = "encoded";
    source.Encode();
    source.Name = "changed since";
    source.SourceNode = "node";
    source.OldInstanceIdentifier = "not taken";
    target << source;
    EXPECT_EQ(target.Name, "encoded");
    EXPECT_EQ(target.SourceNode, "node");
    EXPECT_EQ(target.OldInstanceIdentifier, "");
    source.Body.Empty();
    target << source;
    EXPECT_EQ(target.Name, "encoded");
    EXPECT_TRUE(target.Body.IsEmpty());
    source.Encode();
    source.BodyIsKeyText = 1;
    target << source;
    EXPECT_EQ(target.Name, "encoded");
    EXPECT_EQ(target.Body, source.Body);
    EXPECT_EQ(target.BodyIsKeyText, 1);
}

TEST(Messages, PlainCopiesLeaveOutWhatTheyShould) {
    CPosnMsg source, target;
    source.Name = "N";
    source.Latitude = 59.5;
    source.OldName = "O";
    source.Convergence = 2.0;
    target.Copy(source);
    EXPECT_EQ(target.Name, "N");
    EXPECT_EQ(target.Convergence, 2.0);
    EXPECT_EQ(target.Latitude, 0.0);
    EXPECT_EQ(target.OldName, "");
    target = source;
    EXPECT_EQ(target.Latitude, 59.5);
    CObsMsg observation, copy;
    observation.ExtraValue = 3.0;
    observation.Name = "stale";
    copy = observation;
    EXPECT_EQ(copy.ExtraValue, 3.0);
    EXPECT_EQ(copy.Name, "stale");
    observation.Type = CObsMsg::Baseline;
    observation.AssignWeight();
    EXPECT_EQ(observation.Weight, 2500.0);
    CPosnListMsg list, other;
    list.Name = "L";
    list.OldName = "O";
    list.PositionNames.Add("P");
    other.Copy(list);
    EXPECT_EQ(other.PositionNames.GetSize(), 1);
    EXPECT_EQ(other.OldName, "");
}

TEST(KeyTexts, ComeBackFieldForField) {
    const char* keys[] = {"",  "plain",        "POS/Vessel 1",     "a.b.c", "*",   "%", "%41",
                          ">", "\"quoted\\\"", "\xC3\xA9\xFF\x80", " ",     "\t\n"};
    for (const char* node : keys)
        for (const char* identifier : keys) {
            CMsg message, parsed;
            message.SourceNode = node;
            message.SourceTask = identifier;
            message.SourceNumber = 4294967295u;
            message.MsgKey = node;
            message.InstanceIdentifier = identifier;
            CString text;
            message.CombineKeys(&text);
            ASSERT_FALSE(text.IsEmpty());
            ASSERT_EQ(parsed.ExtractKeys(static_cast<const char*>(text)), 1) << Text(text);
            EXPECT_TRUE(parsed == message) << Text(text);
        }
}

TEST(KeyTexts, BuildTheIdentifierAndAreNeverCut) {
    CPosnMsg position;
    position.Name = "B";
    CString text;
    position.CombineKeys(&text);
    EXPECT_EQ(text, "%.%.0.PRX~Position.B");
    position.CombineKeys(&position.Name);
    EXPECT_EQ(position.Name, "%.%.0.PRX~Position.B");
    position.InstanceIdentifier = std::string(300, 'x').c_str();
    position.CombineKeys(&text);
    EXPECT_EQ(text, "");
}

TEST(KeyTexts, RefuseWhatIsNone) {
    const char* refused[] = {
        "",          "a",        "a.b.1.c",  "a.b.1.c.d.e", "a.b.x.c.d",   "a.b.-1.c.d",  "a.b.4294967296.c.d",
        "a.b.1.c.",  "a.b.1..d", ".b.1.c.d", "a.b.1.c.%4",  "a.b.1.c.%00", "a.b.1.c.%zz", "a.b..c.d",
        "%%.b.1.c.d"};
    CMsg message;
    message.MsgKey = "kept";
    for (const char* text : refused) EXPECT_EQ(message.ExtractKeys(text), 0) << text;
    EXPECT_EQ(message.MsgKey, "kept");
    EXPECT_EQ(message.ExtractKeys(static_cast<const char**>(nullptr)), 0);
    EXPECT_EQ(message.BodyIsKeyText, 0);
}

TEST(KeyTexts, MayStandInTheBody) {
    CMsg message;
    message.Body = "n.t.7.k.%";
    const char* text = nullptr;
    EXPECT_EQ(message.ExtractKeys(&text), 1);
    EXPECT_EQ(text, static_cast<const char*>(message.Body));
    EXPECT_EQ(message.SourceNumber, 7u);
    EXPECT_EQ(message.MsgKey, "k");
    EXPECT_EQ(message.InstanceIdentifier, "");
    EXPECT_EQ(message.Body, "n.t.7.k.%");
    EXPECT_EQ(message.BodyIsKeyText, 1);
    CMsg other;
    EXPECT_EQ(other.ExtractKeys(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(other.BodyIsKeyText, 1);
}

TEST(KeyTexts, SourceAndTarget) {
    struct Case {
        const char *text, *source, *target;
    };
    for (const Case& each : {Case{"A->B", "A", "B"}, Case{"A", "A", ""}, Case{"->B", "", "B"}, Case{"A->", "A", ""},
                             Case{"A->B->C", "A", "B->C"}}) {
        CString source("x"), target("x");
        EXPECT_EQ(CMsg::ExtractSourceAndTarget(each.text, &source, &target), 1);
        EXPECT_EQ(source, each.source);
        EXPECT_EQ(target, each.target);
    }
    CString source("x"), target("x");
    EXPECT_EQ(CMsg::ExtractSourceAndTarget("", &source, &target), 0);
    EXPECT_EQ(source, "x");
}

}  // namespace
