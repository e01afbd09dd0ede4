// From a table of field rows to a format record.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

#include "lumbra/Record.h"
#include "surveymsg/outside/Lumbra.h"

namespace lumbra {
namespace {

constexpr std::uint32_t kMost = std::numeric_limits<std::uint16_t>::max();
constexpr char kVersion[8] = "1.0";

// What the next format is built from; each thread defines its own.
thread_local std::uint32_t alignment = alignof(double);
thread_local const msguser* definedRows = nullptr;
thread_local int definedCount = 0;

std::uint32_t RoundUp(std::uint32_t place, std::uint32_t to) { return (place + to - 1) / to * to; }

// Lays out rows as a compiler lays out a struct, and gathers them with their names.
class Layout {
public:
    bool Run(const msguser* rows, int count) {
        levels_.push_back({});
        for (int i = 0; i < count; ++i)
            if (!(rows[i].Storage == MsgStorageClose ? Close() : Add(rows[i]))) return false;
        return levels_.size() == 1 && !rows_.empty();
    }
    std::uint32_t Size() const { return RoundUp(levels_.front().end, levels_.front().alignment); }
    const std::vector<Row>& Rows() const { return rows_; }
    const std::vector<std::string_view>& Names() const { return names_; }

private:
    struct Level {
        std::uint32_t end = 0;        // of the fields so far, from the structure's start
        std::uint32_t alignment = 1;  // the strictest of them
        std::size_t row = 0;          // the structure's own
    };

    bool Add(const msguser& row) {
        if (!row.Name || strnlen(row.Name, kLongestName + 1) > kLongestName || rows_.size() >= kMost) return false;
        rows_.push_back({row.Storage, row.Display, row.Count, 0, 0, 0, 0});
        names_.emplace_back(row.Name);
        if (row.Storage == MsgStorageOpen) {
            if (levels_.size() > static_cast<std::size_t>(kMostLevels)) return false;
            levels_.push_back({0, 1, rows_.size() - 1});
            return true;
        }
        const bool isText = row.Storage == MsgStorageText;
        const std::uint32_t size = isText ? row.Size : SizeOf(row.Storage);
        // Bytes and words stand at their own size in every record.
        const std::uint32_t strictest = isText ? 1 : size <= 2 ? size : std::min(size, alignment);
        return size > 0 && Place(rows_.back(), size, strictest);
    }

    bool Close() {
        if (levels_.size() < 2) return false;
        const Level closed = levels_.back();
        levels_.pop_back();
        Row& row = rows_[closed.row];
        row.inside = static_cast<std::uint16_t>(rows_.size() - 1 - closed.row);
        if (row.count <= 1) row.count = 0;  // a structure is an array from two elements on
        return closed.end > 0 && Place(row, RoundUp(closed.end, closed.alignment), closed.alignment);
    }

    bool Place(Row& row, std::uint32_t size, std::uint32_t strictest) {
        Level& level = levels_.back();
        const std::uint32_t offset = RoundUp(level.end, strictest);
        const std::uint64_t end = offset + std::uint64_t{size} * std::max<std::uint32_t>(row.count, 1);
        if (size > kMost || end > kMost) return false;
        row.offset = static_cast<std::uint16_t>(offset);
        row.size = static_cast<std::uint16_t>(size);
        level.end = static_cast<std::uint32_t>(end);
        level.alignment = std::max(level.alignment, strictest);
        return true;
    }

    std::vector<Level> levels_;
    std::vector<Row> rows_;
    std::vector<std::string_view> names_;
};

// The record as one heap block; null if it would be too long, or memory is at its end.
msgfmt* Assemble(const Layout& layout, std::uint32_t recordSize) {
    const std::size_t rowsAt = sizeof(msgfmt) + sizeof(Extent);
    std::size_t length = rowsAt + layout.Rows().size() * sizeof(Row);
    for (const std::string_view name : layout.Names()) length += name.size() + 1;
    if (length > kMost) return nullptr;
    auto* format = static_cast<msgfmt*>(std::calloc(1, length));
    if (!format) return nullptr;
    const auto rowCount = static_cast<std::uint16_t>(layout.Rows().size());
    std::copy(std::begin(kMagic), std::end(kMagic), format->Private);
    format->Private[2] = NativeByteOrder();
    format->Private[3] = kLayout;
    std::memcpy(format->Version, kVersion, sizeof format->Version);
    format->Length = static_cast<std::uint16_t>(length);
    format->FieldCount = rowCount;
    char* bytes = reinterpret_cast<char*>(format);
    const Extent extent{static_cast<std::uint16_t>(recordSize), rowCount, static_cast<std::uint16_t>(layout.Size()), 0};
    std::memcpy(bytes + sizeof(msgfmt), &extent, sizeof extent);
    std::size_t name = rowsAt + rowCount * sizeof(Row);
    for (std::size_t i = 0; i < rowCount; ++i) {
        Row row = layout.Rows()[i];
        row.name = static_cast<std::uint16_t>(name);
        std::memcpy(bytes + rowsAt + i * sizeof row, &row, sizeof row);
        name += layout.Names()[i].copy(bytes + name, kLongestName) + 1;  // the block is zero: terminated
    }
    return format;
}

msgfmt* Build(std::uint32_t recordSize, std::uint32_t& used) try {
    Layout layout;
    if (!definedRows || recordSize > kMost || !layout.Run(definedRows, definedCount)) return nullptr;
    used = layout.Size();
    return used <= recordSize ? Assemble(layout, recordSize) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

}  // namespace
}  // namespace lumbra

int LmbSetAlignment(int alignment) {
    if (alignment != 1 && alignment != 2 && alignment != 4 && alignment != 8) return 0;
    lumbra::alignment = static_cast<std::uint32_t>(alignment);
    return 1;
}

int LmbDefineFields(const msguser* rows, int count) {
    if (!rows || count <= 0) return 0;
    lumbra::definedRows = rows;
    lumbra::definedCount = count;
    return 1;
}

int LmbBuildFormat(uint32_t recordSize, msgfmt** format, uint32_t* scratch) {
    if (!format) return 1;
    std::uint32_t used = 0;
    *format = lumbra::Build(recordSize, used);
    if (scratch) *scratch = used;
    return *format ? 0 : 1;
}
