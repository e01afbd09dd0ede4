#pragma once

#include <surveymsg/core/Msg.h>

/// A target as seen from a reference position. The class carries the figures and computes none of them.
///
/// Its identifier is "reference->name", with a prefix and "/" in front if it has one. After a change of
/// one part fill that part's old field; the next `Send` retires the old identifier.
class SURVEYMSG_API CTargMsg : public CMsg {
public:
    CTargMsg();
    ~CTargMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CTargMsg& operator=(CTargMsg& source);

    int GetVersion(CString* out) override;
    int GetInstanceIdentifier(CString* out) override;
    int SetInstanceIdentifier() override;  ///< with no old field set the old identifier is cleared

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    CString Name;
    CString NamePrefix;            ///< qualifier in front of the identifier, or empty
    CString ReferencePosition;     ///< name of the position that the target is measured from
    double DeltaX = 0.0;           ///< offset, survey's linear unit
    double DeltaY = 0.0;           ///< offset, survey's linear unit
    double DeltaZ = 0.0;           ///< offset, survey's linear unit
    double RangeToTarget = 0.0;    ///< survey's linear unit
    double BearingToTarget = 0.0;  ///< degrees
    CString OldName;               ///< before a change, or empty
    CString OldNamePrefix;         ///< before a change, or empty
    CString OldReferencePosition;  ///< before a change, or empty
};
