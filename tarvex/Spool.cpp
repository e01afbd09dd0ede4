#include "tarvex/Spool.h"

#include <utility>

namespace tarvex {

char* Spool::Add(std::size_t size) {
    if (!Fits(size)) {
        AddBlock(BlockFor(size));
        // The block that was kept for the next records, and is too small for this one.
        if (blocks_.size() > 1 && blocks_[blocks_.size() - 2].used == 0) RemoveBlock(blocks_.end() - 2);
    }
    Block& block = blocks_.back();
    block.lastAt = block.used;
    block.used += size;
    return block.Last();
}

void Spool::RemoveFirstBlock() { RemoveBlock(blocks_.begin()); }

void Spool::RemoveBlock(std::deque<Block>::iterator block) {
    memory_ -= block->size;
    block->used = 0;
    if (block->size == kBlockBytes && spare_.size() < kMostSpare) spare_.push_back(std::move(*block));
    blocks_.erase(block);
}

void Spool::Clear() {
    while (blocks_.size() > 1) RemoveFirstBlock();
    if (!blocks_.empty()) blocks_.front().used = 0;
}

void Spool::AddBlock(std::size_t size) {
    spare_.reserve(kMostSpare);  // so that none is lost when one comes back
    Block block;
    if (size == kBlockBytes && !spare_.empty()) {
        block = std::move(spare_.back());
        spare_.pop_back();
    } else {
        block.size = size;
        block.bytes.reset(new char[size]);
    }
    blocks_.push_back(std::move(block));
    memory_ += size;
}

}  // namespace tarvex
