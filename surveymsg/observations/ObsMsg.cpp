#include <surveymsg/observations/ObsMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/observations/detail/ObsTable.h>

namespace {

// How the name before a rename is made from the old ends.
enum class OldNameForm { OneEnd, BothEnds };

struct TypeRow {
    std::string_view text;  // empty: the type has none
    bool twoEnds;           // the name is "from->to"
    OldNameForm oldName;
    double weight;
};

// clang-format off
constexpr TypeRow kTypes[] = {
    {"",         false, OldNameForm::OneEnd,   1.0},     // 0, and every number beyond the table
    {"Range",    true,  OldNameForm::BothEnds, 1.0},
    {"Depth",    false, OldNameForm::OneEnd,   1.0},
    {"East",     false, OldNameForm::OneEnd,   1.0},
    {"North",    false, OldNameForm::OneEnd,   1.0},
    {"Pitch",    false, OldNameForm::OneEnd,   0.5},
    {"Roll",     false, OldNameForm::OneEnd,   0.5},
    {"Heading",  false, OldNameForm::OneEnd,   0.5},
    {"X Offset", true,  OldNameForm::OneEnd,   1.0},
    {"Y Offset", true,  OldNameForm::OneEnd,   1.0},
    {"Z Offset", true,  OldNameForm::OneEnd,   1.0},
    {"Baseline", true,  OldNameForm::BothEnds, 2500.0},
    {"Bearing",  true,  OldNameForm::OneEnd,   0.5},
};
// clang-format on

const TypeRow& RowOf(std::uint16_t type) { return kTypes[type < std::size(kTypes) ? type : 0]; }

constexpr int kStatusBitCount = 32;

bool IsStatusBit(int bit) { return bit >= 0 && bit < kStatusBitCount; }

constexpr std::string_view kArrow = "->";
constexpr std::string_view kSlash = "/";

}  // namespace

using surveymsg::detail::Join;

CObsMsg::CObsMsg() { MsgKey = "RAW~Observation"; }

CObsMsg::~CObsMsg() = default;

CObsMsg& CObsMsg::operator=(CObsMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] { TakeFields(source); });
}

void CObsMsg::TakeFields(const CObsMsg& source) {
    Name = source.Name;
    OldName = source.OldName;
    Type = source.Type;
    Value = source.Value;
    FromName = source.FromName;
    ToName = source.ToName;
    OldFromName = source.OldFromName;
    OldToName = source.OldToName;
    Weight = source.Weight;
    ScaleFactor = source.ScaleFactor;
    Correction = source.Correction;
    Residual = source.Residual;
    TimeOut = source.TimeOut;
    StatusBits = source.StatusBits;
    ExtraValue = source.ExtraValue;
}

void CObsMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CObsMsg", 3}, [this](auto& wire, int schema) {
        if (schema >= 3) wire.Doubles(Correction);
        if (schema >= 2) {
            wire.String(OldFromName);
            wire.String(OldToName);
        }
        wire.Word(Type);
        wire.Doubles(Value);
        wire.Longs(StatusBits, TimeOut);
        wire.String(FromName);
        wire.String(ToName);
        wire.Doubles(Weight, ScaleFactor, Residual);
    });
    CMsg::Serialize(ar);
}

int CObsMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CObsMsg::GetInstanceIdentifier(CString* out) { return surveymsg::detail::BuildIdentifier(*this, out); }

int CObsMsg::SetId() {
    if (RowOf(Type).twoEnds)
        Join(Name, FromName, kArrow, ToName);
    else
        Name = FromName;
    return 1;
}

int CObsMsg::SetOldId() {
    if (OldFromName.IsEmpty() && OldToName.IsEmpty())
        OldName.Empty();
    else if (RowOf(Type).oldName == OldNameForm::OneEnd)
        OldName = OldFromName;
    else
        Join(OldName, OldFromName.IsEmpty() ? FromName : OldFromName, kArrow, OldToName.IsEmpty() ? ToName : OldToName);
    return 1;
}

int CObsMsg::SetInstanceIdentifier() {
    const std::string_view type = RowOf(Type).text;
    SetId();
    Join(InstanceIdentifier, type, kSlash, Name);
    SetOldId();
    if (!OldName.IsEmpty()) Join(OldInstanceIdentifier, type, kSlash, OldName);
    return 1;
}

void CObsMsg::GetTypeString(CString* out) {
    const std::string_view text = RowOf(Type).text;
    if (out && !text.empty()) out->Assign(text.data(), static_cast<int>(text.size()));
}

void CObsMsg::AssignWeight() { Weight = RowOf(Type).weight; }

void CObsMsg::SetStatusBit(int bit, int value) {
    if (!IsStatusBit(bit)) return;
    const std::uint32_t mask = std::uint32_t{1} << bit;
    StatusBits = value == 1 ? StatusBits | mask : StatusBits & ~mask;
}

int CObsMsg::GetStatusBit(int bit) { return IsStatusBit(bit) ? static_cast<int>(StatusBits >> bit & 1u) : 0; }

namespace surveymsg::detail {
namespace {

bool NameText(CObsMsg& observation, CString& out) {
    if (observation.Name.IsEmpty()) observation.SetId();
    out = observation.Name;
    return true;
}

bool TypeText(CObsMsg& observation, CString& out) {
    observation.GetTypeString(&out);
    return true;
}

bool TimedOutText(CObsMsg& observation, CString& out) {
    out = observation.GetStatusBit(CObsMsg::StatusTimedOut) ? "TIMED OUT" : "OK";
    return true;
}

bool UsedText(CObsMsg& observation, CString& out) {
    out = observation.GetStatusBit(CObsMsg::StatusUsedInComp) ? "USED" : "NOT USED";
    return true;
}

// clang-format off
constexpr RowsOf<CObsMsg> row;
constexpr Member kRows[] = {
    row(100, "Name",          &CObsMsg::Name).Reads<NameText>().CopiedAsText(),
    row(101, "Type",          &CObsMsg::Type).Reads<TypeText>().NotANumber(),
    row(102, "Value",         &CObsMsg::Value).Unit("of the type"),
    row(103, "Residual",      &CObsMsg::Residual).Unit("of the type"),
    row(104, "ScaleFactor",   &CObsMsg::ScaleFactor),
    row(105, "Weight",        &CObsMsg::Weight),
    row(106, "Time Out",      &CObsMsg::TimeOut).Unit("the sender's"),
    row(107, "Timed out?",    &CObsMsg::StatusBits).Reads<TimedOutText>(),
    row(108, "Used in comp?", &CObsMsg::StatusBits).Reads<UsedText>(),
    row(109, "Correction",    &CObsMsg::Correction).Unit("of the type"),
};
// clang-format on

}  // namespace

constinit const MemberTable kObsTable = {kRows, &kMsgTable};

}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CObsMsg, surveymsg::detail::kObsTable)
