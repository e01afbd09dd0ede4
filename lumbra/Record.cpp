#include "lumbra/Record.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace lumbra {

std::uint8_t NativeByteOrder() { return std::endian::native == std::endian::little ? kLittleEndian : kBigEndian; }

std::uint16_t SizeOf(std::uint8_t storage) {
    constexpr std::uint16_t kSizes[] = {0, 0, 1, 1, 2, 2, 4, 4, 4, 8};
    return storage < std::size(kSizes) ? kSizes[storage] : 0;
}

Record::Record(const msgfmt* format) : bytes_(reinterpret_cast<const char*>(format)) {
    constexpr std::uint32_t kRowsAt = sizeof(msgfmt) + sizeof(Extent);
    if (!format || !std::equal(std::begin(kMagic), std::end(kMagic), format->Private)) return;
    if (format->Private[2] != NativeByteOrder() || format->Private[3] != kLayout) return;
    if (!std::memchr(format->Version, '\0', sizeof format->Version)) return;
    length_ = format->Length;
    if (length_ <= kRowsAt || bytes_[length_ - 1] != '\0') return;
    Extent extent;
    std::memcpy(&extent, bytes_ + sizeof(msgfmt), sizeof extent);
    namesAt_ = kRowsAt + extent.rowCount * static_cast<std::uint32_t>(sizeof(Row));
    if (namesAt_ >= length_ || extent.rowCount != format->FieldCount || extent.topSize > extent.recordSize) return;
    rows_ = bytes_ + kRowsAt;
    rowCount_ = extent.rowCount;
    size_ = extent.topSize;
}

Record::Rows Record::All() const { return {0, rowCount_, rowCount_ > 0 && IsSoundBetween(0, rowCount_, size_, 0)}; }

Record::Rows Record::Inside(std::uint32_t opened) const {
    if (opened >= static_cast<std::uint32_t>(rowCount_)) return {};
    const int first = static_cast<int>(opened) + 1;
    const Row row = RowAt(first - 1);
    const int end = first + row.inside;
    if (row.storage != MsgStorageOpen || end > rowCount_) return {};
    return {first, end, IsSoundBetween(first, end, row.size, 1)};
}

Row Record::RowAt(int index) const {
    Row row;
    std::memcpy(&row, rows_ + static_cast<std::size_t>(index) * sizeof row, sizeof row);
    return row;
}

// The rows of one structure of `size` bytes, and those within.
bool Record::IsSoundBetween(int first, int end, std::uint32_t size, int depth) const {
    if (depth > kMostLevels) return false;
    for (int i = first; i < end; ++i) {
        const Row row = RowAt(i);
        if (row.storage < MsgStorageText || row.storage > MsgStorageOpen || row.size == 0) return false;
        const std::uint16_t fixed = SizeOf(row.storage);
        if (fixed != 0 && row.size != fixed) return false;
        const std::uint32_t elements = std::max<std::uint32_t>(row.count, 1);
        if (std::uint64_t{row.offset} + std::uint64_t{elements} * row.size > size) return false;
        if (row.name < namesAt_ || row.name >= length_) return false;
        if (strnlen(NameOf(row), kLongestName + 1) > kLongestName) return false;
        if (row.storage != MsgStorageOpen) {
            if (row.inside != 0) return false;
            continue;
        }
        if (row.inside > end - i - 1 || !IsSoundBetween(i + 1, i + 1 + row.inside, row.size, depth + 1)) return false;
        i += row.inside;
    }
    return true;
}

}  // namespace lumbra
