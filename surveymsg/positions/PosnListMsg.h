#pragma once

#include <surveymsg/core/Msg.h>

/// A named list of texts, the names of positions. Its identifier is its name.
class SURVEYMSG_API CPosnListMsg : public CMsg {
public:
    CPosnListMsg();
    ~CPosnListMsg() override;
    void Serialize(CArchive& ar) override;

    using CMsg::operator=;
    CPosnListMsg& operator=(CPosnListMsg& source);

    int GetVersion(CString* out) override;
    int GetInstanceIdentifier(CString* out) override;
    int SetInstanceIdentifier() override;  ///< an empty `OldName` clears the old identifier

    using CMsg::FormatString;
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    virtual void Copy(const CPosnListMsg& source);  ///< takes `Name` and the texts, nothing else

    CString Name;
    CString OldName;  ///< `Name` before a rename, or empty
    CStringArray PositionNames;
};
