#pragma once

#include <surveymsg/observations/ObsMsg.h>

/// An observation made by acoustic ranging. It starts as a "Range".
class SURVEYMSG_API CAcObsMsg : public CObsMsg {
public:
    CAcObsMsg();
    ~CAcObsMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CAcObsMsg& operator=(CAcObsMsg& source);

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    double SpeedOfSound = 0.0;        ///< in the survey's linear unit per second
    double TwoWayMilliseconds = 0.0;  ///< two-way travel time in milliseconds
    std::uint32_t HoldCount = 0;
};
