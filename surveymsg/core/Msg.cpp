#include <surveymsg/core/Msg.h>

#include <surveymsg/core/detail/Clock.h>

CMsg::CMsg() : MsgTime(surveymsg::detail::ConstructionTime()) {}

CMsg::~CMsg() { RemoveAllMsgDependencies(); }

CMsg& CMsg::operator=(CMsg& source) {
    source.Encode();
    return *this << source;
}

CMsg& CMsg::operator<<(const CMsg& source) {
    MsgTime = source.MsgTime;
    InstanceIdentifier = source.InstanceIdentifier;
    SourceNode = source.SourceNode;
    SourceTask = source.SourceTask;
    MsgKey = source.MsgKey;
    SourceNumber = source.SourceNumber;
    Body = source.Body;
    BodyIsKeyText = source.BodyIsKeyText;
    Decode();
    return *this;
}

int CMsg::operator==(const CMsg& other) const {
    return InstanceIdentifier == other.InstanceIdentifier && SourceNode == other.SourceNode &&
           SourceTask == other.SourceTask && MsgKey == other.MsgKey && SourceNumber == other.SourceNumber;
}

int CMsg::GetVersion(CString* /*out*/) { return 0; }

int CMsg::GetInstanceIdentifier(CString* /*out*/) { return 0; }

int CMsg::SetInstanceIdentifier() { return 0; }

double CMsg::TimeGetSeconds() { return surveymsg::detail::Now(); }

void CMsg::UpdateTime() { MsgTime = TimeGetSeconds(); }

double CMsg::Age() { return TimeGetSeconds() - MsgTime; }
