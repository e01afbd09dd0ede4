#include "tarvex/nats/Outbox.h"

#include <algorithm>
#include <cstring>

namespace tarvex {

std::size_t Outbox::SizeOf(std::size_t subject, std::size_t keys, std::size_t body) {
    constexpr std::size_t kAlign = alignof(Head);
    return (sizeof(Head) + subject + 1 + keys + 1 + body + kAlign - 1) & ~(kAlign - 1);
}

bool Outbox::MakeRoomFor(std::size_t bytes) {
    while (bytes_ + bytes > kMostBytes && !blocks_.empty() && IsConfirmed(blocks_.front())) DropFirst();
    return bytes_ + bytes <= kMostBytes;
}

void Outbox::AddBlock(std::size_t size) {
    if (size <= kBlockBytes && !spare_.empty()) {
        blocks_.push_back(std::move(spare_.back()));
        spare_.pop_back();
        return;
    }
    Block block;
    block.size = std::max(size, kBlockBytes);
    block.bytes.reset(new char[block.size]);
    blocks_.push_back(std::move(block));
}

Outbox::Entry Outbox::Add(std::string_view subject, std::string_view keys, const void* body, std::uint32_t bodyLength) {
    const std::size_t size = SizeOf(subject.size(), keys.size(), bodyLength);
    if (blocks_.empty() || blocks_.back().size - blocks_.back().used < size) AddBlock(size);
    Block& block = blocks_.back();
    if (IsConfirmed(block)) confirmedBytes_ -= block.used;  // it no longer is, as a whole
    char* const place = block.bytes.get() + block.used;
    const Head head{last_ + 1, bodyLength, static_cast<std::uint32_t>(subject.size()),
                    static_cast<std::uint32_t>(keys.size()), static_cast<std::uint32_t>(size)};
    std::memcpy(place, &head, sizeof head);
    char* at = place + sizeof head;
    at += subject.copy(at, subject.size());
    *at++ = '\0';
    at += keys.copy(at, keys.size());
    *at++ = '\0';
    if (bodyLength > 0) std::memcpy(at, body, bodyLength);
    block.lastAt = block.used;
    block.used += size;
    block.last = ++last_;
    bytes_ += size;
    return Read(place);
}

void Outbox::RemoveLast() {
    Block& block = blocks_.back();
    bytes_ -= block.used - block.lastAt;
    block.used = block.lastAt;
    block.last = --last_;
    if (IsConfirmed(block)) confirmedBytes_ += block.used;
    if (block.used == 0) blocks_.pop_back();
}

Outbox::Entry Outbox::Read(const char* place) {
    Head head;
    std::memcpy(&head, place, sizeof head);
    const char* const subject = place + sizeof head;
    const char* const keys = subject + head.subjectLength + 1;
    return {head.number, subject, keys, keys + head.keysLength + 1, head.bodyLength};
}

void Outbox::Confirm(std::uint64_t number, std::int64_t now) {
    if (number <= confirmed_) return;
    for (const Block& block : blocks_) {
        if (block.last > number) break;
        if (block.last > confirmed_) confirmedBytes_ += block.used;
    }
    confirmed_ = number;
    marks_.push_back({number, now});
    while (confirmedBytes_ > kMostKept) DropFirst();
}

void Outbox::Release(std::int64_t now, std::int64_t kept) {
    std::uint64_t old = 0;
    for (; !marks_.empty() && marks_.front().time + kept <= now; marks_.pop_front()) old = marks_.front().number;
    while (!blocks_.empty() && blocks_.front().last <= old) DropFirst();
}

void Outbox::DropFirst() {
    Block block = std::move(blocks_.front());
    blocks_.pop_front();
    bytes_ -= block.used;
    confirmedBytes_ -= block.used;
    block.used = 0;
    if (block.size == kBlockBytes && spare_.size() < kMostKept / kBlockBytes) spare_.push_back(std::move(block));
}

Outbox::Cursor Outbox::From(std::uint64_t number) const {
    Cursor cursor;
    cursor.outbox_ = this;
    cursor.block_ = 0;
    cursor.at_ = 0;
    while (!cursor.AtEnd() && blocks_[cursor.block_].last < number) ++cursor.block_;
    while (!cursor.AtEnd() && cursor.Get().number < number) cursor.Next();
    return cursor;
}

Outbox::Entry Outbox::Cursor::Get() const { return Read(outbox_->blocks_[block_].bytes.get() + at_); }

void Outbox::Cursor::Next() {
    const Block& block = outbox_->blocks_[block_];
    Head head;
    std::memcpy(&head, block.bytes.get() + at_, sizeof head);
    at_ += head.size;
    if (at_ < block.used) return;
    ++block_;
    at_ = 0;
}

}  // namespace tarvex
