#pragma once

#include <cstdint>

#include "surveymsg/outside/FormatRecords.h"

// A format record, one block that means the same wherever it lies:
//
//     head      msgfmt, 16 bytes; its private bytes are kMagic, the byte order and the record's layout
//     extent    Extent, 8 bytes
//     rows      Row, 12 bytes each, in the order of the fields; a structure's rows stand behind its own
//     names     terminated texts; the record's last byte is a terminator
//
// All integers are in the byte order that the head tells, which is also that of the messages.
namespace lumbra {

inline constexpr std::uint8_t kMagic[2] = {'L', 'b'};
inline constexpr std::uint8_t kLittleEndian = 1;
inline constexpr std::uint8_t kBigEndian = 2;
inline constexpr std::uint8_t kLayout = 1;
inline constexpr int kMostLevels = 64;  // structures within structures
inline constexpr std::size_t kLongestName = 255;

struct Extent {
    std::uint16_t recordSize;  ///< bytes of a message
    std::uint16_t rowCount;
    std::uint16_t topSize;  ///< bytes that the fields take
    std::uint16_t reserved;
};
static_assert(sizeof(Extent) == 8);

struct Row {
    std::uint8_t storage;  ///< 1 to 10; there are no closing rows
    std::uint8_t display;
    std::uint16_t count;   ///< elements; 0 for a single value
    std::uint16_t offset;  ///< from the start of the enclosing structure
    std::uint16_t size;    ///< of one element
    std::uint16_t name;    ///< place of the name in the record
    std::uint16_t inside;  ///< rows that a structure encloses, at any depth
};
static_assert(sizeof(Row) == 12);

/// Reads a record that may come from anywhere: sound only if every place, size and nesting in it holds. Of
/// one structure only what it encloses is looked at, so that listing all structures of a record, one after
/// the other, takes time in proportion to its rows and depth.
class Record {
public:
    explicit Record(const msgfmt* format);

    /// Rows [first, end), with those within.
    struct Rows {
        int first = 0;
        int end = 0;
        bool isSound = false;
    };
    Rows All() const;
    /// What the structure in row `opened` encloses.
    Rows Inside(std::uint32_t opened) const;
    Row RowAt(int index) const;
    const char* NameOf(const Row& row) const { return bytes_ + row.name; }

private:
    bool IsSoundBetween(int first, int end, std::uint32_t size, int depth) const;

    const char* bytes_;
    const char* rows_ = nullptr;
    int rowCount_ = 0;  // 0 if the head is not sound
    std::uint32_t size_ = 0;
    std::uint32_t namesAt_ = 0;
    std::uint32_t length_ = 0;
};

std::uint8_t NativeByteOrder();
/// Bytes of one element of a value; 0 for a text, which says so itself, and what is no value.
std::uint16_t SizeOf(std::uint8_t storage);

}  // namespace lumbra
