#pragma once

#include <cstdint>
#include <vector>

#include <surveymsg/platform/Object.h>
#include <surveymsg/platform/String.h>

struct PositionTag;
using POSITION = PositionTag*;  ///< a place in a walk over a map; null ends the walk

/// A map from text to object. It does not own the objects.
///
/// Entries come out in the order in which their keys were first inserted; a key that is removed and
/// added again comes last. The `index`-th entry is one array access away. Look-up stays fast whatever
/// keys a sender chooses: the hash of each process is its own.
class SURVEYMSG_API CMapStringToOb {
public:
    CMapStringToOb() = default;
    CMapStringToOb(const CMapStringToOb&) = delete;
    CMapStringToOb& operator=(const CMapStringToOb&) = delete;
    ~CMapStringToOb() = default;

    int GetCount() const { return static_cast<int>(rows_.size()); }
    bool IsEmpty() const { return rows_.empty(); }
    int Lookup(const CString& key, CObject*& value) const;  ///< 1 if found; else `value` is left as it was
    CObject*& operator[](const CString& key);               ///< inserts the key with null if it is new
    CObject*& operator[](CString&& key);                    ///< the same; a new key is moved in
    int RemoveKey(const CString& key);                      ///< 1 if there was one
    void RemoveAll() {
        if (rows_.capacity() > 0) Clear();
    }
    POSITION GetStartPosition() const;
    void GetNextAssoc(POSITION& position, CString& key, CObject*& value) const;

    CObject* GetAt(int index) const { return rows_[static_cast<std::size_t>(index)].value; }
    const CString& GetKeyAt(int index) const { return rows_[static_cast<std::size_t>(index)].key; }
    void Reserve(int count);  ///< room for `count` entries in all

private:
    struct Row {
        CString key;
        CObject* value;
        std::uint64_t hash;  // of the key; a cheap one until the map is indexed
    };
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    std::uint64_t HashOf(std::string_view key) const;
    std::uint32_t Find(std::string_view key, std::uint64_t hash) const;
    void Index(std::uint32_t row);
    void Reindex();
    void Clear();
    CObject*& Insert(CString&& key, std::uint64_t hash);

    std::vector<Row> rows_;
    std::vector<std::uint32_t> slots_;  // row numbers by hash, open addressing; empty while the map is small
};
