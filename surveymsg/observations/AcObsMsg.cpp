#include <surveymsg/observations/AcObsMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/observations/detail/ObsTable.h>

CAcObsMsg::CAcObsMsg() {
    MsgKey = "RAW~AcousticObservation";
    Type = Range;
}

CAcObsMsg::~CAcObsMsg() = default;

CAcObsMsg& CAcObsMsg::operator=(CAcObsMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        TakeFields(source);
        SpeedOfSound = source.SpeedOfSound;
        TwoWayMilliseconds = source.TwoWayMilliseconds;
        HoldCount = source.HoldCount;
    });
}

void CAcObsMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CAcObsMsg", 1}, [this](auto& wire, int) {
        wire.Doubles(SpeedOfSound, TwoWayMilliseconds);
        wire.Longs(HoldCount);
    });
    CObsMsg::Serialize(ar);
}

namespace surveymsg::detail {
namespace {

// clang-format off
constexpr RowsOf<CAcObsMsg> row;
constexpr Member kRows[] = {
    row(110, "Speed Of Sound",     &CAcObsMsg::SpeedOfSound).Unit("linear unit/s"),
    row(111, "2-Way Milliseconds", &CAcObsMsg::TwoWayMilliseconds).Unit("ms"),
    row(112, "Hold Count",         &CAcObsMsg::HoldCount),
};
// clang-format on

constinit const MemberTable kAcObsTable = {kRows, &kObsTable};

}  // namespace
}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CAcObsMsg, surveymsg::detail::kAcObsTable)
