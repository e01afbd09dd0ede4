#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace tarvex {

/// Memory for records of any length, in their order: many small ones share a block, and blocks are used again. Not
/// for several threads at once.
class Spool {
public:
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
        std::size_t used = 0;
        std::size_t lastAt = 0;  ///< where its last record begins

        char* Last() const { return bytes.get() + lastAt; }
    };

    /// What a record of this many bytes takes, so that the next one is aligned.
    static constexpr std::size_t Rounded(std::size_t size) { return (size + kAlign - 1) & ~(kAlign - 1); }

    /// Room for a record of a rounded size, behind all others; no block in front of its own is empty. Raises
    /// `std::bad_alloc`, and is unchanged.
    char* Add(std::size_t size);
    /// With all its records.
    void RemoveFirstBlock();
    /// Removes all records, and keeps the last block for the next ones.
    void Clear();

    const std::deque<Block>& Blocks() const { return blocks_; }
    /// Bytes of the blocks that hold records; with another record of this size.
    std::size_t Memory() const { return memory_; }
    std::size_t MemoryWith(std::size_t size) const { return memory_ + (Fits(size) ? 0 : BlockFor(size)); }

private:
    static constexpr std::size_t kAlign = 8;
    static constexpr std::size_t kBlockBytes = 256u << 10;
    static constexpr std::size_t kMostSpare = 32;

    static std::size_t BlockFor(std::size_t size) { return size > kBlockBytes ? size : kBlockBytes; }
    bool Fits(std::size_t size) const { return !blocks_.empty() && blocks_.back().size - blocks_.back().used >= size; }
    void AddBlock(std::size_t size);
    void RemoveBlock(std::deque<Block>::iterator block);

    std::deque<Block> blocks_;
    std::vector<Block> spare_;
    std::size_t memory_ = 0;
};

}  // namespace tarvex
