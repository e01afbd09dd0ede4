#pragma once

#include <surveymsg/core/Msg.h>

/// The standard COP parameters: one single thing on the bus, whose identifier is its own key. `AllocMsg`
/// does not make it.
class SURVEYMSG_API CCopMsg : public CMsg {
public:
    CCopMsg();
    ~CCopMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CCopMsg& operator=(CCopMsg& source);  ///< the one way in which `NmeaChecksum` passes on

    int GetVersion(CString* out) override;
    int GetInstanceIdentifier(CString* out) override;
    int SetInstanceIdentifier() override;

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    void UpdateTime() override;  ///< `LocalTime` follows the clock too; `Send` does not call this

    std::uint32_t EventCounter = 0;
    std::uint8_t NmeaChecksum = 0;  ///< in memory only, does not travel
    double TimeZoneOffset = 0.0;    ///< seconds, what is added to `MsgTime` to get `LocalTime`
    double LocalTime;               ///< seconds since 1980-01-06, offset included
};
