#include <surveymsg/positions/CompPosnMsg.h>

#include <cmath>
#include <typeinfo>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/observations/AcObsMsg.h>
#include <surveymsg/positions/detail/PosnTable.h>

CCompPosnMsg::CCompPosnMsg() {
    MsgKey = "PRX~ComputedPosition";
    Type = PositionTypeComputed;
}

CCompPosnMsg::~CCompPosnMsg() = default;

CCompPosnMsg& CCompPosnMsg::operator=(CCompPosnMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        TakeFields(source);
        StandardDeviation = source.StandardDeviation;
    });
}

void CCompPosnMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CCompPosnMsg", 1},
                                      [this](auto& wire, int) { wire.Doubles(StandardDeviation); });
    CPosnMsg::Serialize(ar);
}

int CCompPosnMsg::AddObservation(CObsMsg& observation) { return AddMsgDependency(observation); }

int CCompPosnMsg::RemoveObservation(CObsMsg* observation) { return RemoveMsgDependency(observation); }

namespace {

// Nearly always one of two classes, and comparing is cheaper than a cast by run-time type.
CObsMsg* AsObservation(CObject* nested) {
    if (!nested) return nullptr;
    const std::type_info& type = typeid(*nested);
    if (type == typeid(CAcObsMsg) || type == typeid(CObsMsg)) [[likely]]
        return static_cast<CObsMsg*>(nested);
    return dynamic_cast<CObsMsg*>(nested);
}

}  // namespace

CObsMsg* CCompPosnMsg::GetObservation(std::uint16_t index) {
    return index < MsgDependencies.GetCount() ? AsObservation(MsgDependencies.GetAt(index)) : nullptr;
}

namespace surveymsg::detail {
namespace {

bool SolutionText(CCompPosnMsg& position, const char* /*format*/, CString& out) {
    if (position.StandardDeviation != HUGE_VAL) return false;
    out = "NO SOLUTION";
    return true;
}

// Past the last observation there is nothing to do, and that is no failure. A nested message of another
// class, which a stream may hold, is not served.
CMsg* ObservationAt(CMsg& owner, std::uint16_t index, int& result) {
    if (index >= owner.MsgDependencies.GetCount()) return nullptr;
    result = 0;
    return AsObservation(owner.MsgDependencies.GetAt(index));
}

// clang-format off
constexpr RowsOf<CCompPosnMsg> row;
constexpr RowsOf<CCompPosnMsg> each{ObservationAt};
constexpr Member kRows[] = {
    row(199, "Standard Deviation", &CCompPosnMsg::StandardDeviation).Forms<SolutionText>().Unit("linear unit"),
    each.Forward(200, 0x100, "Observation[].name",              100).NotANumber(),
    each.Forward(201, 0x2,   "Observation[].type",              101).NotANumber(),
    each.Forward(202, 0x8,   "Observation[].value",             102).Unit("of the type"),
    each.Forward(203, 0x8,   "Observation[].residual",          103).Unit("of the type"),
    each.Forward(204, 0x8,   "Observation[].scale factor",      104),
    each.Forward(205, 0x8,   "Observation[].weight",            105),
    each.Forward(206, 0x4,   "Observation[].time out",          106).Unit("the sender's"),
    each.Forward(207, 0x4,   "Observation[].timed out?",        107).NotANumber(),
    each.Forward(208, 0x4,   "Observation[].used in comp?",     108).NotANumber(),
    each.Forward(209, 0x8,   "Observation[].Speed of Sound",    110).Unit("linear unit/s"),
    each.Forward(210, 0x8,   "Observation[].2-way milliseconds", 111).Unit("ms"),
    each.Forward(211, 0x4,   "Observation[].number of holds",   112),
};
// clang-format on

constinit const MemberTable kCompPosnTable = {kRows, &kPosnTable};

}  // namespace
}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CCompPosnMsg, surveymsg::detail::kCompPosnTable)
