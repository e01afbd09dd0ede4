#include <surveymsg/platform/MapStringToOb.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include <surveymsg/platform/detail/Memory.h>
#include <surveymsg/platform/detail/SeededHash.h>

namespace {

// Up to here a look-up compares the keys one by one, which is faster than hashing.
constexpr std::size_t kSmall = 8;

// At least two slots a row, so that a probe ends soon.
std::size_t SlotsFor(std::size_t rows) { return std::bit_ceil(rows * 2); }

}  // namespace

// Real hashing starts when the map is indexed. A small one tells keys apart by their ends, where names differ.
std::uint64_t CMapStringToOb::HashOf(std::string_view key) const {
    if (!slots_.empty()) return surveymsg::detail::SeededHash(key);
    std::uint64_t end = 0;
    const std::size_t length = std::min(key.size(), sizeof end);
    std::memcpy(&end, key.data() + key.size() - length, length);
    return end;
}

std::uint32_t CMapStringToOb::Find(std::string_view key, std::uint64_t hash) const {
    if (slots_.empty()) {
        for (std::size_t row = 0; row < rows_.size(); ++row)
            if (rows_[row].hash == hash && rows_[row].key.View() == key) return static_cast<std::uint32_t>(row);
        return kNone;
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t row = slots_[slot];
        if (row == kNone || (rows_[row].hash == hash && rows_[row].key.View() == key)) return row;
    }
}

void CMapStringToOb::Index(std::uint32_t row) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = rows_[row].hash & mask;
    while (slots_[slot] != kNone) slot = (slot + 1) & mask;
    slots_[slot] = row;
}

void CMapStringToOb::Reindex() {
    slots_.reserve(SlotsFor(rows_.size()));  // what may fail comes before the rows change their hashes
    if (slots_.empty())
        for (Row& row : rows_) row.hash = surveymsg::detail::SeededHash(row.key.View());
    slots_.assign(SlotsFor(rows_.size()), kNone);
    for (std::uint32_t row = 0; row < rows_.size(); ++row) Index(row);
}

void CMapStringToOb::Reserve(int count) {
    surveymsg::detail::RaisingMemoryException([&] {
        rows_.reserve(static_cast<std::size_t>(std::max(count, 0)));
        if (rows_.capacity() > kSmall) slots_.reserve(SlotsFor(rows_.capacity()));
    });
}

int CMapStringToOb::Lookup(const CString& key, CObject*& value) const {
    const std::uint32_t row = Find(key.View(), HashOf(key.View()));
    if (row == kNone) return 0;
    value = rows_[row].value;
    return 1;
}

CObject*& CMapStringToOb::operator[](const CString& key) {
    const std::uint64_t hash = HashOf(key.View());
    const std::uint32_t found = Find(key.View(), hash);
    return found != kNone ? rows_[found].value : Insert(CString(key), hash);
}

CObject*& CMapStringToOb::operator[](CString&& key) {
    const std::uint64_t hash = HashOf(key.View());
    const std::uint32_t found = Find(key.View(), hash);
    return found != kNone ? rows_[found].value : Insert(std::move(key), hash);
}

CObject*& CMapStringToOb::Insert(CString&& key, std::uint64_t hash) {
    surveymsg::detail::RaisingMemoryException([&] {
        rows_.push_back({std::move(key), nullptr, hash});
        try {
            if (rows_.size() > kSmall && SlotsFor(rows_.size()) > slots_.size())
                Reindex();
            else if (!slots_.empty())
                Index(static_cast<std::uint32_t>(rows_.size() - 1));
        } catch (...) {
            rows_.pop_back();
            throw;
        }
    });
    return rows_.back().value;
}

int CMapStringToOb::RemoveKey(const CString& key) {
    const std::uint32_t row = Find(key.View(), HashOf(key.View()));
    if (row == kNone) return 0;
    rows_.erase(rows_.begin() + row);
    if (slots_.empty()) return 1;
    std::fill(slots_.begin(), slots_.end(), kNone);
    for (std::uint32_t each = 0; each < rows_.size(); ++each) Index(each);
    return 1;
}

void CMapStringToOb::Clear() {
    constexpr std::size_t kKept = 1024;  // entries whose storage waits for the next use
    rows_.clear();
    slots_.clear();
    if (rows_.capacity() <= kKept) return;
    rows_.shrink_to_fit();
    slots_.shrink_to_fit();
}

// A position is the number of the next row plus one.
POSITION CMapStringToOb::GetStartPosition() const { return rows_.empty() ? nullptr : reinterpret_cast<POSITION>(1); }

void CMapStringToOb::GetNextAssoc(POSITION& position, CString& key, CObject*& value) const {
    const auto row = reinterpret_cast<std::uintptr_t>(position) - 1;
    if (row >= rows_.size()) {  // null, or the map has shrunk since the walk began
        position = nullptr;
        return;
    }
    key = rows_[row].key;
    value = rows_[row].value;
    position = row + 1 < rows_.size() ? reinterpret_cast<POSITION>(row + 2) : nullptr;
}
