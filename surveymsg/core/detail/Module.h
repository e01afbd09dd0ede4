#pragma once

#include <surveymsg/platform/MapStringToOb.h>

namespace surveymsg::detail {

/// What the library keeps for the whole process, from load to unload. Unguarded: a program keeps message
/// operations to one thread at a time.
class Module {
public:
    Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Withdraws every published pair from the bus, then releases the formats.
    ~Module();

    CMapStringToOb PublishedMap;  ///< "key/identifier" to the `PublishedKey` of the pair, owned
    CMapStringToOb FormatCache;   ///< format key text to definition tree, owned
};

/// The message key of a published pair. Its length tells where the identifier starts in the map's key,
/// since either may hold a "/".
class PublishedKey : public CObject {
public:
    explicit PublishedKey(const CString& key) : MsgKey(key) {}
    CString MsgKey;
};

extern Module module;

}  // namespace surveymsg::detail
