// From a format record, which comes from outside, to the cached tree of its fields.

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include <surveymsg/extension/ExtMsg.h>
#include <surveymsg/extension/detail/ExtFormatDefn.h>
#include <surveymsg/outside/Lumbra.h>
#include <surveymsg/outside/Tarvex.h>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

constexpr int kQuerySelector = 4;
constexpr std::uint32_t kFirstBuffer = 1024;
constexpr std::uint32_t kLargestRecord = std::numeric_limits<std::uint16_t>::max();
constexpr int kMostQueries = 4;  // a record whose size keeps growing between two queries is let go
constexpr int kMostLevels = 64;  // structures within structures
constexpr int kLongestName = 1023;
// Bytes of all formats in a cache. Nothing leaves it, and a sender can name a new key text with every message.
constexpr std::size_t kMostCached = 64u << 20;
constexpr std::size_t kFieldBytes = 160;  // of a field and its entry in the map, without a long name
constexpr int kMostFields = std::numeric_limits<std::uint16_t>::max() - 100;  // ids are 16 bits, from 100

using Block = std::unique_ptr<msgfmt, FreesBlock>;

Block Allocate(std::uint32_t size) { return Block(static_cast<msgfmt*>(std::calloc(1, size))); }

// The record that the bus has for a key text; null if it has none or none that fits.
Block QueryFormat(const CString& key, std::uint32_t& length) {
    std::uint32_t size = kFirstBuffer;
    for (int query = 0; query < kMostQueries; ++query) {
        Block buffer = Allocate(size);
        if (!buffer) return nullptr;
        length = 0;
        if (TvxQueryFormat(kQuerySelector, key, static_cast<std::uint32_t>(key.GetLength()) + 1, buffer.get(), size,
                           &length))
            return length <= size ? std::move(buffer) : nullptr;
        if ((GetLastError() & TvxErrorTooSmall) != TvxErrorTooSmall || length <= size || length > kLargestRecord)
            return nullptr;
        size = length;
    }
    return nullptr;
}

// What can be told from the head alone; the rest is the record format library's to check.
bool HasSoundHead(const msgfmt& format, std::uint32_t length) {
    return length >= sizeof format && format.Length >= sizeof format && format.Length <= length &&
           std::memchr(format.Version, '\0', sizeof format.Version);
}

bool IsFull(const CMapStringToOb& cache) {
    std::size_t bytes = 0;
    for (int i = 0; i < cache.GetCount(); ++i) bytes += static_cast<const CExtFormatDefn*>(cache.GetAt(i))->Bytes;
    return bytes >= kMostCached;
}

bool IsStructure(const msguser& field) { return field.Storage == MsgStorageOpen || field.Storage == MsgStorageClose; }

}  // namespace

int CExtMsg::GetMsgFmt(CString key, CMapStringToOb& cache) {
    ExtractKeys(key);
    CObject* cached = nullptr;
    if (cache.Lookup(key, cached)) {
        FormatRoot = static_cast<CExtFormatDefn*>(cached);
        return 1;
    }
    if (IsFull(cache)) return 0;
    std::uint32_t length = 0;
    Block format = QueryFormat(key, length);
    if (!format || !HasSoundHead(*format, length)) return 0;
    FormatRoot = nullptr;
    try {
        if (!BuildDefn(format.get(), nullptr, CString(), 0)) return 0;
    } catch (const std::bad_alloc&) {
        FormatRoot = nullptr;  // what there was of it has gone
        throw CMemoryException();
    }
    std::unique_ptr<CExtFormatDefn> root(std::exchange(FormatRoot, nullptr));
    root->Format = std::move(format);
    if (!root->sound || root->Fields.IsEmpty()) return 0;
    root->Bytes += sizeof(CExtFormatDefn) + std::max(length, kFirstBuffer) + static_cast<std::size_t>(key.GetLength());
    CObject*& place = cache[key];
    place = FormatRoot = root.release();
    return 1;
}

int CExtMsg::BuildDefn(msgfmt* format, msguser* parent, CString prefix, int base) {
    if (!format) return 0;
    std::unique_ptr<CExtFormatDefn> made;  // freed unless the top has fields
    if (!parent) {
        made = std::make_unique<CExtFormatDefn>();
        made->Version = format->Version;
        made->entriesLeft = format->FieldCount;
        FormatRoot = made.get();
    } else {
        if (!prefix.IsEmpty()) prefix += ".";
        prefix += parent->Name;
        if (prefix.GetLength() > kLongestName) FormatRoot->sound = false;
    }
    CExtFormatDefn& root = *FormatRoot;
    std::vector<msguser> listing(format->FieldCount);
    int count = 0;
    if (!listing.empty()) LmbListFields(format, parent, listing.data(), format->FieldCount, &count);
    if (count <= 0) {
        if (made) FormatRoot = nullptr;
        return 0;
    }
    if (count > root.entriesLeft || ++root.depth > kMostLevels) root.sound = false;
    root.entriesLeft -= count;
    if (made) root.Fields.Reserve(count);  // exact for a flat format
    for (int i = 0; i < count && root.sound; ++i) {
        msguser& field = listing[static_cast<std::size_t>(i)];
        const int offset = base + field.Offset;
        if (!field.Name || offset > std::numeric_limits<std::uint16_t>::max()) {
            root.sound = false;
        } else if (IsStructure(field)) {
            BuildDefn(format, &field, prefix, offset);
        } else {
            CString name = prefix;
            if (!prefix.IsEmpty()) name += ".";
            name += field.Name;
            if (field.Count > 0) name += "[]";
            if (name.GetLength() > kLongestName || root.Fields.GetCount() >= kMostFields) {
                root.sound = false;
                break;
            }
            root.Bytes += kFieldBytes + static_cast<std::size_t>(name.GetLength());
            auto leaf = std::make_unique<CExtFieldDefn>();
            leaf->Field = field;
            leaf->Field.Offset = static_cast<std::uint16_t>(offset);
            CObject*& place = root.Fields[name];
            delete place;  // the later one of two fields with one name stands
            place = leaf.release();
        }
    }
    --root.depth;
    static_cast<void>(made.release());  // `FormatRoot` has it
    return 1;
}
