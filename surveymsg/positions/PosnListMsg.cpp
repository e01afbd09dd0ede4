#include <surveymsg/positions/PosnListMsg.h>

#include <surveymsg/core/detail/Assign.h>
#include <surveymsg/core/detail/MemberTable.h>
#include <surveymsg/core/detail/Share.h>

CPosnListMsg::CPosnListMsg() { MsgKey = "STX~PosnList"; }

CPosnListMsg::~CPosnListMsg() = default;

CPosnListMsg& CPosnListMsg::operator=(CPosnListMsg& source) {
    CMsg::operator=(source);
    return *this;
}

void CPosnListMsg::Copy(const CPosnListMsg& source) {
    Name = source.Name;
    PositionNames = source.PositionNames;
}

void CPosnListMsg::Serialize(CArchive& ar) {
    surveymsg::detail::SerializeShare(ar, {"CPosnListMsg", 1}, [this](auto& wire, int) {
        std::int32_t count = PositionNames.GetSize();
        wire.String(Name);
        wire.String(OldName);
        wire.Longs(count);
        if constexpr (surveymsg::detail::Loads<decltype(wire)>) {
            PositionNames.RemoveAll();
            if (count > 0) PositionNames.Reserve(wire.AtMost(count, 1));
            for (CString text; count > 0; --count) {
                wire.String(text);
                PositionNames.Add(text);
            }
        } else {
            for (int i = 0; i < count; ++i) wire.String(PositionNames[i]);
        }
    });
    CMsg::Serialize(ar);
}

int CPosnListMsg::GetVersion(CString* out) { return surveymsg::detail::GiveVersion(out); }

int CPosnListMsg::GetInstanceIdentifier(CString* out) { return surveymsg::detail::BuildIdentifier(*this, out); }

int CPosnListMsg::SetInstanceIdentifier() {
    InstanceIdentifier = Name;
    OldInstanceIdentifier = OldName;
    return 1;
}

// The class has no members of its own.
SURVEYMSG_MEMBERS_BY_TABLE(CPosnListMsg, surveymsg::detail::kMsgTable)
