#include <surveymsg/positions/TargMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/MemberTable.h>
#include <surveymsg/core/detail/Share.h>

CTargMsg::CTargMsg() { MsgKey = "PRX~Target"; }

CTargMsg::~CTargMsg() = default;

CTargMsg& CTargMsg::operator=(CTargMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        Name = source.Name;
        NamePrefix = source.NamePrefix;
        ReferencePosition = source.ReferencePosition;
        DeltaX = source.DeltaX;
        DeltaY = source.DeltaY;
        DeltaZ = source.DeltaZ;
        RangeToTarget = source.RangeToTarget;
        BearingToTarget = source.BearingToTarget;
        OldName = source.OldName;
        OldNamePrefix = source.OldNamePrefix;
        OldReferencePosition = source.OldReferencePosition;
    });
}

void CTargMsg::Serialize(CArchive& ar) {
    const auto fields = [this](auto& wire, int schema) {
        if (schema >= 2) {
            wire.String(NamePrefix);
            wire.String(OldName);
            wire.String(OldNamePrefix);
            wire.String(OldReferencePosition);
        }
        wire.String(Name);
        wire.String(ReferencePosition);
        wire.Doubles(DeltaX, DeltaY, DeltaZ, RangeToTarget, BearingToTarget);
    };
    surveymsg::detail::SerializeShare(ar, {"CTargMsg", 2}, fields, [this] { NamePrefix.Empty(); });
    CMsg::Serialize(ar);
}

int CTargMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CTargMsg::GetInstanceIdentifier(CString* out) { return surveymsg::detail::BuildIdentifier(*this, out); }

int CTargMsg::SetInstanceIdentifier() {
    const auto build = [](CString& identifier, const CString& prefix, const CString& reference, const CString& name) {
        const std::string_view slash = prefix.IsEmpty() ? "" : "/";
        surveymsg::detail::Join(identifier, prefix, slash, reference, std::string_view("->"), name);
    };
    const auto orPresent = [](const CString& old, const CString& present) -> const CString& {
        return old.IsEmpty() ? present : old;
    };
    build(InstanceIdentifier, NamePrefix, ReferencePosition, Name);
    if (OldName.IsEmpty() && OldNamePrefix.IsEmpty() && OldReferencePosition.IsEmpty())
        OldInstanceIdentifier.Empty();
    else
        build(OldInstanceIdentifier, orPresent(OldNamePrefix, NamePrefix),
              orPresent(OldReferencePosition, ReferencePosition), orPresent(OldName, Name));
    return 1;
}

namespace surveymsg::detail {
namespace {

// clang-format off
constexpr RowsOf<CTargMsg> row;
constexpr Member kRows[] = {
    row(100, "Name",               &CTargMsg::Name),
    row(101, "Reference Position", &CTargMsg::ReferencePosition),
    row(102, "Delta X",            &CTargMsg::DeltaX).Unit("linear unit"),
    row(103, "Delta Y",            &CTargMsg::DeltaY).Unit("linear unit"),
    row(104, "Delta Z",            &CTargMsg::DeltaZ).Unit("linear unit"),
    row(105, "Range to target",    &CTargMsg::RangeToTarget).Unit("linear unit"),
    row(106, "Bearing to target",  &CTargMsg::BearingToTarget).Angle(),
};
// clang-format on

constinit const MemberTable kTargTable = {kRows, &kMsgTable};

}  // namespace
}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CTargMsg, surveymsg::detail::kTargTable)
