#pragma once

#include <surveymsg/core/Msg.h>

/// Which interrogation modes apply; any value but 0 means the mode is set.
struct InterrogationModes {
    int CIF = 0;
    int IIF = 0;
    int USBL = 0;
};

/// One acoustic transponder: name, address, its sensors, how it is interrogated and how it takes part in
/// positioning. Its identifier is its bare name, which `GetInstanceIdentifier` does not give.
class SURVEYMSG_API CTransMsg : public CMsg {
public:
    /// Values of `Type`. What `PositioningMethod` means depends on it.
    enum TransponderType : std::int32_t { Compatt = 0, DMT = 1, Hydrophone = 2, MicroNav = 3 };

    CTransMsg();
    ~CTransMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CTransMsg& operator=(CTransMsg& source);

    int GetVersion(CString* out) override;
    int SetInstanceIdentifier() override;  ///< an empty `OldName` clears the old identifier

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    CString Name;
    CString OldName;  ///< `Name` before a rename, or empty
    std::int16_t Address = 0;
    double Depth = 0.0;
    double Pitch = 0.0;
    double Roll = 0.0;
    double Temperature = 0.0;
    double DepthCO = 0.0;        ///< C-O value of `Depth`
    double PitchCO = 0.0;        ///< C-O value of `Pitch`
    double RollCO = 0.0;         ///< C-O value of `Roll`
    double TemperatureCO = 0.0;  ///< C-O value of `Temperature`
    std::int32_t IRF = 0;
    std::int32_t TurnAround = 0;  ///< a count; shown times 62.5
    InterrogationModes InterrogationMode;
    std::int32_t Type = Compatt;  ///< a `TransponderType`
    std::int32_t PositioningMethod = 0;

protected:
    void TakeFields(const CTransMsg& source);
};
