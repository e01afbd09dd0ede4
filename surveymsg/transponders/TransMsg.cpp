#include <surveymsg/transponders/TransMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/transponders/detail/TransTable.h>
#include <surveymsg/transponders/detail/TransponderTexts.h>

CTransMsg::CTransMsg() { MsgKey = "PRX~StaticTransponder"; }

CTransMsg::~CTransMsg() = default;

CTransMsg& CTransMsg::operator=(CTransMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] { TakeFields(source); });
}

void CTransMsg::TakeFields(const CTransMsg& source) {
    Name = source.Name;
    OldName = source.OldName;
    Address = source.Address;
    Depth = source.Depth;
    Pitch = source.Pitch;
    Roll = source.Roll;
    Temperature = source.Temperature;
    DepthCO = source.DepthCO;
    PitchCO = source.PitchCO;
    RollCO = source.RollCO;
    TemperatureCO = source.TemperatureCO;
    IRF = source.IRF;
    TurnAround = source.TurnAround;
    InterrogationMode = source.InterrogationMode;
    Type = source.Type;
    PositioningMethod = source.PositioningMethod;
}

void CTransMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CTransMsg", 2}, [this](auto& wire, int schema) {
        if (schema >= 2) surveymsg::detail::InterrogationFields(wire, *this);
        wire.String(Name);
        wire.String(OldName);
        wire.Word(Address);
        wire.Doubles(Depth, Pitch, Roll, Temperature, DepthCO, PitchCO, RollCO, TemperatureCO);
    });
    CMsg::Serialize(ar);
}

int CTransMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CTransMsg::SetInstanceIdentifier() {
    InstanceIdentifier = Name;
    OldInstanceIdentifier = OldName;
    return 1;
}

namespace surveymsg::detail {
namespace {

bool IrfForm(CTransMsg& m, const char* /*format*/, CString& out) { return !IsInterrogated(m.Type, out); }

bool ModeForm(CTransMsg& m, const char* /*format*/, CString& out) {
    if (IsInterrogated(m.Type, out)) ModeText(m.InterrogationMode, out);
    return true;
}

bool TurnAroundForm(CTransMsg& m, const char* format, CString& out) {
    if (IsInterrogated(m.Type, out)) TurnAroundText(m.TurnAround, format, out);
    return true;
}

bool MethodForm(CTransMsg& m, const char* /*format*/, CString& out) {
    MethodText(m.Type, m.PositioningMethod, out);
    return true;
}

bool TypeForm(CTransMsg& m, const char* /*format*/, CString& out) {
    TypeText(m.Type, out);
    return true;
}

// clang-format off
constexpr RowsOf<CTransMsg> row;
constexpr Member kRows[] = {
    row(100, "Name",               &CTransMsg::Name),
    row(101, "Address",            &CTransMsg::Address),
    row(102, "Depth",              &CTransMsg::Depth),
    row(103, "Pitch",              &CTransMsg::Pitch),
    row(104, "Roll",               &CTransMsg::Roll),
    row(105, "Temperature",        &CTransMsg::Temperature),
    row(106, "Depth C-O",          &CTransMsg::DepthCO),
    row(107, "Pitch C-O",          &CTransMsg::PitchCO),
    row(108, "Roll C-O",           &CTransMsg::RollCO),
    row(109, "Temperature C-O",    &CTransMsg::TemperatureCO),
    row(110, "IRF",                &CTransMsg::IRF).Forms<IrfForm>(),
    row.Block<&CTransMsg::InterrogationMode>(112, "Interrogation Mode").Forms<ModeForm>(),
    row(111, "Turn Around",        &CTransMsg::TurnAround).Forms<TurnAroundForm>().Unit("count of 62.5"),
    row(113, "Positioning Method", &CTransMsg::PositioningMethod).Forms<MethodForm>().NotANumber(),
    row(114, "Type",               &CTransMsg::Type).Forms<TypeForm>().NotANumber(),
};
// clang-format on

}  // namespace

constinit const MemberTable kTransTable = {kRows, &kMsgTable};

}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CTransMsg, surveymsg::detail::kTransTable)
