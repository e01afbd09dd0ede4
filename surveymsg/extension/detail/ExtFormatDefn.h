#pragma once

#include <cstdlib>
#include <memory>

#include <surveymsg/outside/FormatRecords.h>
#include <surveymsg/platform/MapStringToOb.h>

struct FreesBlock {
    void operator()(void* block) const { std::free(block); }
};

/// One value field of a format, at any depth.
class CExtFieldDefn : public CObject {
public:
    msguser Field{};  ///< its description; `Offset` is measured from the start of the message
};

/// One format as the cache keeps it: the record and its value fields, flat and in order. It owns both.
class CExtFormatDefn : public CObject {
public:
    CExtFormatDefn() = default;
    CExtFormatDefn(const CExtFormatDefn&) = delete;
    CExtFormatDefn& operator=(const CExtFormatDefn&) = delete;
    ~CExtFormatDefn() override {
        for (int i = 0; i < Fields.GetCount(); ++i) delete Fields.GetAt(i);
    }

    const CExtFieldDefn& FieldAt(int index) const { return *static_cast<CExtFieldDefn*>(Fields.GetAt(index)); }
    /// Path of structure names and the field's own, joined by ".", with "[]" for an array.
    const CString& NameAt(int index) const { return Fields.GetKeyAt(index); }

    std::unique_ptr<msgfmt, FreesBlock> Format;  ///< a heap block; the fields' names point into it
    CMapStringToOb Fields;                       ///< name to `CExtFieldDefn`
    CString Version;
    std::size_t Bytes = 0;  ///< of memory, roughly, once it is whole

    // While the tree is built: what the record may still list, and how deep the walk is. A record that
    // lists more than it says, or structures inside themselves, is not sound.
    int entriesLeft = 0;
    int depth = 0;
    bool sound = true;
};
