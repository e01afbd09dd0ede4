#pragma once

#include <memory>

#include <surveymsg/core/Msg.h>

class CExtFormatDefn;

/// A message whose layout is known only at run time. `Body` is the raw record; the members come from the
/// format that its publisher gave to the bus, and read and write `Body` in place.
///
/// `AllocMsg` makes one from a format key. The members answer once `GetMemberDefinitions` has run; their
/// ids start at 100 in the order of the fields, and "[]" marks a field that is an array. A member that
/// reaches past the end of `Body` gives 0 and touches nothing.
class SURVEYMSG_API CExtMsg : public CMsg {
public:
    CExtMsg();
    ~CExtMsg() override;
    void Serialize(CArchive& ar) override;  ///< nothing: the record travels as it stands

    using CMsg::operator=;
    CExtMsg& operator=(CExtMsg& source);  ///< takes record, format and members

    int GetVersion(CString* out) override;             ///< the format's version
    int GetInstanceIdentifier(CString* out) override;  ///< 0 if it is empty; none is built

    using CMsg::FormatString;
    /// Rows live as long as this object's table does: until the object goes or another is assigned to it.
    int GetMemberDefinitions(CPtrArray* rows) override;
    int FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) override;
    int MemberCopy(std::uint16_t id, std::uint16_t index, void* out) override;
    int GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) override;
    int SetMemberValue(std::uint16_t id, std::uint16_t index, double value) override;

    /// Sets the five keys from the key text `key` and finds its format in `cache`, or fetches it from the
    /// bus and enters it there. A record that is not sound gives 0, with the cache as it was, and so does one that
    /// is not there once 64 MiB of formats are.
    int GetMsgFmt(CString key, CMapStringToOb& cache);

    CExtFormatDefn* FormatRoot = nullptr;             ///< the format, owned by the cache
    std::unique_ptr<MemberDefinition[]> MemberTable;  ///< this object's rows, closed by a row of zeros

protected:
    /// Builds the definitions of `format` below `parent` (null: the top) into `FormatRoot`.
    int BuildDefn(msgfmt* format, msguser* parent, CString prefix, int base);

private:
    void BuildTable();
    const msguser* FindField(std::uint16_t id, std::uint16_t index) const;
    char* ElementAt(const msguser& field, std::uint16_t index, std::size_t size);

    const CExtFormatDefn* tableFormat_ = nullptr;  // the format that `MemberTable` was built from
};
