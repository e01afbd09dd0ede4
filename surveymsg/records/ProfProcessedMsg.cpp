#include <surveymsg/records/ProfProcessedMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/positions/detail/PosnTable.h>

namespace surveymsg::detail {
namespace {

bool PositionText(CProfProcessedMsg& m, CString& out) {
    static constexpr const char* kTexts[] = {"Manual", "Pipe Tracker", "Automatic"};
    const auto status = static_cast<std::uint16_t>(m.PipePositionStatus);
    if (status >= std::size(kTexts)) return false;
    out = kTexts[status];
    return true;
}

bool BuriedText(CProfProcessedMsg& m, CString& out) {
    out = m.PipeBuriedStatus ? "Buried" : "Exposed";
    return true;
}

// The rows are also the fields of the stream, in this order.
// clang-format off
constexpr RowsOf<CProfProcessedMsg> row;
constexpr Member kRows[] = {
    row(199, "Port Seabed X",          &CProfProcessedMsg::PortSeabedX),
    row(200, "Port Seabed Y",          &CProfProcessedMsg::PortSeabedY),
    row(201, "Starboard Seabed X",     &CProfProcessedMsg::StarboardSeabedX),
    row(202, "Starboard Seabed Y",     &CProfProcessedMsg::StarboardSeabedY),
    row(203, "Mean Seabed Level",      &CProfProcessedMsg::MeanSeabedLevel),
    row(204, "Port Adjacent X",        &CProfProcessedMsg::PortAdjacentX),
    row(205, "Port Adjacent Y",        &CProfProcessedMsg::PortAdjacentY),
    row(206, "Starboard Adjacent X",   &CProfProcessedMsg::StarboardAdjacentX),
    row(207, "Starboard Adjacent Y",   &CProfProcessedMsg::StarboardAdjacentY),
    row(208, "Mean Adjacent Level",    &CProfProcessedMsg::MeanAdjacentLevel),
    row(209, "Port Top X",             &CProfProcessedMsg::PortTopX),
    row(210, "Port Top Y",             &CProfProcessedMsg::PortTopY),
    row(211, "Starboard Top X",        &CProfProcessedMsg::StarboardTopX),
    row(212, "Starboard Top Y",        &CProfProcessedMsg::StarboardTopY),
    row(213, "Port Bottom X",          &CProfProcessedMsg::PortBottomX),
    row(214, "Port Bottom Y",          &CProfProcessedMsg::PortBottomY),
    row(215, "Starboard Bottom X",     &CProfProcessedMsg::StarboardBottomX),
    row(216, "Starboard Bottom Y",     &CProfProcessedMsg::StarboardBottomY),
    row(217, "Bottom X",               &CProfProcessedMsg::BottomX),
    row(218, "Bottom Y",               &CProfProcessedMsg::BottomY),
    row(219, "Port Trench Width",      &CProfProcessedMsg::PortTrenchWidth),
    row(220, "Starboard Trench Width", &CProfProcessedMsg::StarboardTrenchWidth),
    row(221, "Pipe Centre X",          &CProfProcessedMsg::PipeCentreX),
    row(222, "Pipe Centre Y",          &CProfProcessedMsg::PipeCentreY),
    row(223, "Top of Pipe Level",      &CProfProcessedMsg::TopOfPipeLevel),
    row(224, "Pipe Diameter",          &CProfProcessedMsg::PipeDiameter),
    row(225, "Pipe Position Status",   &CProfProcessedMsg::PipePositionStatus).Reads<PositionText>(),
    row(226, "Pipe Buried Status",     &CProfProcessedMsg::PipeBuriedStatus).Reads<BuriedText>(),
    row(227, "Depth of Burial",        &CProfProcessedMsg::DepthOfBurial),
    row(228, "Minimum Cover",          &CProfProcessedMsg::MinimumCover),
    row(229, "Minimum Cover X",        &CProfProcessedMsg::MinimumCoverX),
    row(230, "Minimum Cover Y",        &CProfProcessedMsg::MinimumCoverY),
};
// clang-format on

constinit const MemberTable kProfProcessedTable = {kRows, &kPosnTable};

}  // namespace
}  // namespace surveymsg::detail

using surveymsg::detail::kProfProcessedTable;

CProfProcessedMsg::CProfProcessedMsg() {
    MsgKey = "PRX~ProfProcessed";
    Type = PositionTypeOffset;
}

CProfProcessedMsg::~CProfProcessedMsg() = default;

CProfProcessedMsg& CProfProcessedMsg::operator=(CProfProcessedMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        TakeFields(source);
        kProfProcessedTable.CopyFields(source, *this);
    });
}

void CProfProcessedMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CProfProcessedMsg", 1},
                                      [this](auto& wire, int) { kProfProcessedTable.Stream(wire, *this); });
    CPosnMsg::Serialize(ar);
}

int CProfProcessedMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

SURVEYMSG_MEMBERS_BY_TABLE(CProfProcessedMsg, kProfProcessedTable)
