#include <surveymsg/records/CopMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/MemberTable.h>
#include <surveymsg/core/detail/Share.h>
#include <surveymsg/core/detail/ValueText.h>

CCopMsg::CCopMsg() : LocalTime(MsgTime) { MsgKey = "Standard COP Parameters"; }

CCopMsg::~CCopMsg() = default;

CCopMsg& CCopMsg::operator=(CCopMsg& source) {
    return surveymsg::detail::AssignMessage(*this, source, Owns(source), [&] {
        EventCounter = source.EventCounter;
        NmeaChecksum = source.NmeaChecksum;
        TimeZoneOffset = source.TimeZoneOffset;
        LocalTime = source.LocalTime;
    });
}

void CCopMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CCopMsg", 2}, [this](auto& wire, int schema) {
        if (schema >= 2) wire.Doubles(TimeZoneOffset, LocalTime);
        wire.Longs(EventCounter);
    });
    CMsg::Serialize(ar);
}

int CCopMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CCopMsg::GetInstanceIdentifier(CString* out) { return surveymsg::detail::BuildIdentifier(*this, out); }

int CCopMsg::SetInstanceIdentifier() {
    InstanceIdentifier = MsgKey;
    return 1;
}

void CCopMsg::UpdateTime() {
    CMsg::UpdateTime();
    LocalTime = TimeZoneOffset + MsgTime;
}

namespace surveymsg::detail {
namespace {

bool ChecksumForm(CCopMsg& m, const char* /*format*/, CString& out) {
    FormatNumber(out, "%02X", std::int32_t{m.NmeaChecksum});
    return true;
}

// clang-format off
constexpr RowsOf<CCopMsg> row;
constexpr Member kRows[] = {
    row(100, "Event Counter",    &CCopMsg::EventCounter),
    row(101, "NMEA Checksum",    &CCopMsg::NmeaChecksum).Forms<ChecksumForm>(),
    row(102, "Time Zone Offset", &CCopMsg::TimeZoneOffset).Unit("s"),
    row(103, "Local Time",       &CCopMsg::LocalTime).Time(),
};
// clang-format on

constinit const MemberTable kCopTable = {kRows, &kMsgTable};

}  // namespace
}  // namespace surveymsg::detail

SURVEYMSG_MEMBERS_BY_TABLE(CCopMsg, surveymsg::detail::kCopTable)
