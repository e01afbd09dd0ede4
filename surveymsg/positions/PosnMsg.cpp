#include <surveymsg/positions/PosnMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/positions/detail/PosnTable.h>

using surveymsg::detail::Join;

CPosnMsg::CPosnMsg() { MsgKey = "PRX~Position"; }

CPosnMsg::~CPosnMsg() = default;

CPosnMsg& CPosnMsg::operator=(CPosnMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] { TakeFields(source); });
}

void CPosnMsg::Copy(const CPosnMsg& source) {
    Name = source.Name;
    NamePrefix = source.NamePrefix;
    Type = source.Type;
    East = source.East;
    North = source.North;
    Depth = source.Depth;
    Pitch = source.Pitch;
    Roll = source.Roll;
    TrueHeading = source.TrueHeading;
    GridHeading = source.GridHeading;
    Convergence = source.Convergence;
}

void CPosnMsg::TakeFields(const CPosnMsg& source) {
    CPosnMsg::Copy(source);
    OldName = source.OldName;
    OldNamePrefix = source.OldNamePrefix;
    Latitude = source.Latitude;
    Longitude = source.Longitude;
}

void CPosnMsg::Serialize(CArchive& ar) {
    const auto fields = [this](auto& wire, int schema) {
        if (schema >= 4) {
            wire.String(NamePrefix);
            wire.String(OldNamePrefix);
        }
        if (schema >= 3) wire.Doubles(Latitude, Longitude);
        if (schema >= 2) wire.String(OldName);
        wire.String(Name);
        wire.Word(Type);
        wire.Doubles(East, North, Depth, Pitch, Roll, TrueHeading, GridHeading, Convergence);
    };
    // Older schemas have no prefixes: a position loaded from one has none either.
    surveymsg::detail::SerializeShare(ar, {"CPosnMsg", 4}, fields, [this] {
        NamePrefix.Empty();
        OldNamePrefix.Empty();
    });
    CMsg::Serialize(ar);
}

int CPosnMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CPosnMsg::GetInstanceIdentifier(CString* out) { return surveymsg::detail::BuildIdentifier(*this, out); }

int CPosnMsg::SetInstanceIdentifier() {
    const auto build = [](CString& identifier, const CString& prefix, const CString& name) {
        if (prefix.IsEmpty())
            identifier = name;
        else
            Join(identifier, prefix, std::string_view("/"), name);
    };
    build(InstanceIdentifier, NamePrefix, Name);
    if (!OldName.IsEmpty() || !OldNamePrefix.IsEmpty())  // the half that is not filled has not changed
        build(OldInstanceIdentifier, OldNamePrefix.IsEmpty() ? NamePrefix : OldNamePrefix,
              OldName.IsEmpty() ? Name : OldName);
    return 1;
}

void CPosnMsg::GetTypeString(CString* out) {
    if (!out) return;
    *out = Type & PositionTypeComputed ? "COMPUTED" : "MANUAL";
    if (Type & PositionTypeOffset) *out += "+OFFSET";
}

namespace surveymsg::detail {
namespace {

bool TypeText(CPosnMsg& position, CString& out) {
    position.GetTypeString(&out);
    return true;
}

// clang-format off
constexpr RowsOf<CPosnMsg> row;
constexpr Member kRows[] = {
    row(100, "Name",         &CPosnMsg::Name),
    row(101, "Type",         &CPosnMsg::Type).Reads<TypeText>().CopiedAsText().NotANumber(),
    row(102, "East",         &CPosnMsg::East).Unit("linear unit"),
    row(103, "North",        &CPosnMsg::North).Unit("linear unit"),
    row(104, "Depth",        &CPosnMsg::Depth).Unit("linear unit"),
    row(105, "Pitch",        &CPosnMsg::Pitch).Unit("degrees"),
    row(106, "Roll",         &CPosnMsg::Roll).Unit("degrees"),
    row(107, "Grid Heading", &CPosnMsg::GridHeading).Angle(),
    row(108, "True Heading", &CPosnMsg::TrueHeading).Angle(),
    row(109, "Convergence",  &CPosnMsg::Convergence).Unit("degrees"),
    row(110, "Latitude",     &CPosnMsg::Latitude).Angle(),
    row(111, "Longitude",    &CPosnMsg::Longitude).Angle(),
};
// clang-format on

}  // namespace

constinit const MemberTable kPosnTable = {kRows, &kMsgTable};

}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CPosnMsg, surveymsg::detail::kPosnTable)
