#include <surveymsg/platform/MapStringToOb.h>

#include <algorithm>
#include <bit>

#include <surveymsg/platform/detail/Memory.h>
#include <surveymsg/platform/detail/SeededHash.h>

namespace {

// Up to here a look-up compares the keys one by one, which is faster than hashing.
constexpr std::size_t kSmall = 8;

// At least two slots a row, so that a probe ends soon.
std::size_t SlotsFor(std::size_t rows) { return std::bit_ceil(rows * 2); }

}  // namespace

CMapStringToOb::CMapStringToOb() = default;
CMapStringToOb::~CMapStringToOb() = default;

std::uint32_t CMapStringToOb::Find(std::string_view key) const {
    if (slots_.empty()) {
        for (std::size_t row = 0; row < rows_.size(); ++row)
            if (rows_[row].key.View() == key) return static_cast<std::uint32_t>(row);
        return kNone;
    }
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t slot = surveymsg::detail::SeededHash(key) & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t row = slots_[slot];
        if (row == kNone || rows_[row].key.View() == key) return row;
    }
}

void CMapStringToOb::Index(std::uint32_t row) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = surveymsg::detail::SeededHash(rows_[row].key.View()) & mask;
    while (slots_[slot] != kNone) slot = (slot + 1) & mask;
    slots_[slot] = row;
}

void CMapStringToOb::Reindex() {
    if (rows_.size() <= kSmall) return slots_.clear();
    slots_.assign(SlotsFor(rows_.size()), kNone);
    for (std::uint32_t row = 0; row < rows_.size(); ++row) Index(row);
}

void CMapStringToOb::Reserve(int count) {
    rows_.reserve(static_cast<std::size_t>(std::max(count, 0)));
    if (rows_.capacity() > kSmall) slots_.reserve(SlotsFor(rows_.capacity()));
}

int CMapStringToOb::Lookup(const CString& key, CObject*& value) const {
    const std::uint32_t row = Find(key.View());
    if (row == kNone) return 0;
    value = rows_[row].value;
    return 1;
}

CObject*& CMapStringToOb::operator[](const CString& key) {
    const std::uint32_t found = Find(key.View());
    if (found != kNone) return rows_[found].value;
    const bool grows = rows_.size() + 1 > kSmall && SlotsFor(rows_.size() + 1) > slots_.size();
    surveymsg::detail::RaisingMemoryException([&] {
        rows_.push_back({key, nullptr});
        try {
            if (grows)
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
    const std::uint32_t row = Find(key.View());
    if (row == kNone) return 0;
    rows_.erase(rows_.begin() + row);
    if (slots_.empty()) return 1;
    std::fill(slots_.begin(), slots_.end(), kNone);
    for (std::uint32_t each = 0; each < rows_.size(); ++each) Index(each);
    return 1;
}

void CMapStringToOb::RemoveAll() {
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
