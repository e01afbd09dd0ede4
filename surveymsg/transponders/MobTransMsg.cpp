#include <surveymsg/transponders/MobTransMsg.h>

#include <memory>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/transponders/detail/TransTable.h>
#include <surveymsg/transponders/detail/TransponderTexts.h>

namespace {

constexpr std::size_t kLeastRangeBytes = 94;  // a range without a name

CTransRange* RangeIn(const CPtrArray& ranges, int index) { return static_cast<CTransRange*>(ranges.GetAt(index)); }

}  // namespace

CMobTransMsg::CMobTransMsg() { MsgKey = "PRX~MobileTransponder"; }

CMobTransMsg::~CMobTransMsg() { ClearRanges(); }

CMobTransMsg& CMobTransMsg::operator=(CMobTransMsg& source) {
    CMsg::operator=(source);
    return *this;
}

void CMobTransMsg::Serialize(CArchive& ar) {
    std::int32_t count = 0;
    for (int i = 0; i < Ranges.GetSize(); ++i) count += RangeIn(Ranges, i) != nullptr;
    surveymsg::detail::SerializeShare(ar, {"CMobTransMsg", 2}, [&](auto& wire, int schema) {
        if (schema >= 2) surveymsg::detail::InterrogationFields(wire, *this);
        if constexpr (surveymsg::detail::Loads<decltype(wire)>) ClearRanges();
        wire.Longs(count);
        if constexpr (surveymsg::detail::Loads<decltype(wire)>) {
            if (count > 0) Ranges.Reserve(wire.AtMost(count, kLeastRangeBytes));
        }
    });
    if (ar.IsStoring()) {
        for (int i = 0; i < Ranges.GetSize(); ++i)
            if (CTransRange* range = RangeIn(Ranges, i)) range->Serialize(ar);
    } else {
        for (; count > 0; --count) {
            auto range = std::make_unique<CTransRange>();
            range->Serialize(ar);
            Ranges.Add(range.get());
            static_cast<void>(range.release());
        }
    }
    CTransMsg::Serialize(ar);
}

int CMobTransMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

CTransRange* CMobTransMsg::GetRange(int index) { return RangeIn(Ranges, index); }

void CMobTransMsg::ClearRanges() {
    for (int i = 0; i < Ranges.GetSize(); ++i) delete RangeIn(Ranges, i);
    Ranges.RemoveAll();
}

namespace surveymsg::detail {
namespace {

// Past the last range there is nothing to do, and that is no failure.
CMsg* RangeAt(CMsg& owner, std::uint16_t index, int& /*result*/) {
    return RangeIn(static_cast<CMobTransMsg&>(owner).Ranges, index);
}

bool IrfForm(CTransRange& m, const char* /*format*/, CString& out) { return !IsInterrogated(m.RangeType, out); }

bool ModeForm(CTransRange& m, const char* /*format*/, CString& out) {
    if (IsInterrogated(m.RangeType, out)) ModeText(m.RangeInterrogationMode, out);
    return true;
}

bool TurnAroundForm(CTransRange& m, const char* format, CString& out) {
    if (IsInterrogated(m.RangeType, out)) TurnAroundText(m.RangeTurnAround, format, out);
    return true;
}

bool MethodForm(CTransRange& m, const char* /*format*/, CString& out) {
    MethodText(m.RangeType, m.RangePositioningMethod, out);
    return true;
}

bool TypeForm(CTransRange& m, const char* /*format*/, CString& out) {
    TypeText(m.RangeType, out);
    return true;
}

// clang-format off
constexpr RowsOf<CTransRange> each{RangeAt};
constexpr Member kRows[] = {
    each(203, "Transponder[].Name",            &CTransRange::RangeName),
    each(204, "Transponder[].Address",         &CTransRange::RangeAddress),
    each(199, "Transponder[].Range",           &CTransRange::Range),
    each(200, "Transponder[].2-Way Ms",        &CTransRange::TwoWayMs).Unit("ms"),
    each(201, "Transponder[].Speed of Sound",  &CTransRange::SpeedOfSound),
    each(202, "Transponder[].Number of Holds", &CTransRange::NumberOfHolds),
    each(205, "Transponder[].Depth",           &CTransRange::RangeDepth),
    each(206, "Transponder[].Pitch",           &CTransRange::RangePitch),
    each(207, "Transponder[].Roll",            &CTransRange::RangeRoll),
    each(208, "Transponder[].Temperature",     &CTransRange::RangeTemperature),
    each(209, "Transponder[].Depth C-O",       &CTransRange::RangeDepthCO),
    each(210, "Transponder[].Pitch C-O",       &CTransRange::RangePitchCO),
    each(211, "Transponder[].Roll C-O",        &CTransRange::RangeRollCO),
    each(212, "Transponder[].Temperature C-O", &CTransRange::RangeTemperatureCO),
    // What does not travel has a text, for elements that this process has filled, and nothing else.
    each(213, "Transponder[].IRF",             &CTransRange::RangeIRF).Forms<IrfForm>().NotANumber().NotCopied(),
    each.Block<&CTransRange::RangeInterrogationMode>(215, "Transponder[].Interrogation Mode")
        .Width(4).Forms<ModeForm>().NotCopied(),
    each(214, "Transponder[].Turn Around",     &CTransRange::RangeTurnAround)
        .Forms<TurnAroundForm>().NotANumber().NotCopied().Unit("count of 62.5"),
    each(216, "Transponder[].Positioning Method", &CTransRange::RangePositioningMethod)
        .Forms<MethodForm>().NotANumber().NotCopied(),
    each(217, "Transponder[].Type",            &CTransRange::RangeType).Forms<TypeForm>().NotANumber().NotCopied(),
};
// clang-format on

constinit const MemberTable kMobTransTable = {kRows, &kTransTable};

}  // namespace
}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CMobTransMsg, surveymsg::detail::kMobTransTable)
