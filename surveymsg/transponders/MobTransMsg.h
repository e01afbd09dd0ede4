#pragma once

#include <surveymsg/transponders/TransRange.h>

/// A mobile transponder with the ranges to others. The inherited fields describe the mobile one itself;
/// its members 199 to 217 reach into the list by index.
class SURVEYMSG_API CMobTransMsg : public CTransMsg {
public:
    CMobTransMsg();
    ~CMobTransMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CMobTransMsg& operator=(CMobTransMsg& source);  ///< the ranges are copied, but for what does not travel

    int GetVersion(CString* out) override;

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    void ClearRanges();  ///< deletes every element and empties the list

    /// Pointers to `CTransRange`, made with `new` and owned by this message once they are in the list.
    CPtrArray Ranges;

protected:
    CTransRange* GetRange(int index);  ///< null past the last; still owned by this message
};
