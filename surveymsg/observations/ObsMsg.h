#pragma once

#include <surveymsg/core/Msg.h>

/// One raw measurement, taken at one named thing or between two.
///
/// Its name comes from its type and ends: "A->B" for the types between two things, "A" for the others.
/// Its identifier is the type's text, "/", the name: "Range/A->B", "Depth/A".
class SURVEYMSG_API CObsMsg : public CMsg {
public:
    /// Values of `Type`.
    enum ObservationType : std::uint16_t {
        Range = 1,
        DepthAt = 2,
        EastAt = 3,
        NorthAt = 4,
        PitchAt = 5,
        RollAt = 6,
        HeadingAt = 7,
        XOffset = 8,
        YOffset = 9,
        ZOffset = 10,
        Baseline = 11,
        Bearing = 12,
    };
    /// Bit numbers of `StatusBits`.
    enum StatusBit { StatusTimedOut = 0, StatusUsedInComp = 1 };

    CObsMsg();
    ~CObsMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CObsMsg& operator=(CObsMsg& source);

    int GetVersion(CString* out) override;
    int GetInstanceIdentifier(CString* out) override;
    int SetInstanceIdentifier() override;  ///< also builds `Name` and `OldName`

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    int SetId();                            ///< builds `Name`; 1
    int SetOldId();                         ///< builds `OldName`; 1
    void GetTypeString(CString* out);       ///< text of `Type`; left alone for a type that is none
    void AssignWeight();                    ///< `Weight` takes the value that goes with `Type`
    void SetStatusBit(int bit, int value);  ///< sets bit 0 to 31 for a value of exactly 1, else clears it
    int GetStatusBit(int bit);              ///< 1 if the bit is set, else 0

    CString Name;            ///< derived by `SetId`; does not travel
    CString OldName;         ///< derived by `SetOldId`; does not travel
    std::uint16_t Type = 0;  ///< an `ObservationType`; 0 is none of them
    double Value = 0.0;      ///< the measured value, in the unit of its type
    CString FromName;        ///< the first thing, or the only one
    CString ToName;          ///< the second thing of an observation between two
    CString OldFromName;     ///< `FromName` before a rename, or empty
    CString OldToName;       ///< `ToName` before a rename, or empty
    double Weight = 1.0;
    double ScaleFactor = 1.0;
    double Correction = 0.0;       ///< in the unit of `Value`
    double Residual = 0.0;         ///< in the unit of `Value`
    std::uint32_t TimeOut = 0;     ///< in the sender's unit
    std::uint32_t StatusBits = 0;  ///< flags by `StatusBit`; the others travel along
    double ExtraValue = 0.0;       ///< the program's own; copied, does not travel

protected:
    void TakeFields(const CObsMsg& source);
};
