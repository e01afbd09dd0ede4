#include "tarvex/nats/Outbox.h"

#include <algorithm>
#include <cstring>

namespace tarvex {

bool Outbox::MakeRoomFor(std::size_t bytes) {
    while (bytes_ + bytes > kMostBytes && !spool_.Blocks().empty() && IsConfirmed(spool_.Blocks().front())) DropFirst();
    return bytes_ + bytes <= kMostBytes;
}

Outbox::Entry Outbox::Add(std::string_view subject, std::string_view keys, const void* body, std::uint32_t bodyLength,
                          const Tag& tag) {
    const std::size_t size = Spool::Rounded(sizeof(Head) + subject.size() + 1 + keys.size() + 1 + bodyLength);
    const std::size_t blocks = spool_.Blocks().size();
    char* const place = spool_.Add(size);
    const Spool::Block& block = spool_.Blocks().back();
    // A block that was confirmed as a whole no longer is.
    if (spool_.Blocks().size() == blocks && last_ <= confirmed_) confirmedBytes_ -= block.used - size;
    const Head head{last_ + 1,
                    tag,
                    bodyLength,
                    static_cast<std::uint32_t>(subject.size()),
                    static_cast<std::uint32_t>(keys.size()),
                    static_cast<std::uint32_t>(size)};
    std::memcpy(place, &head, sizeof head);
    char* at = place + sizeof head;
    at += subject.copy(at, subject.size());
    *at++ = '\0';
    at += keys.copy(at, keys.size());
    *at++ = '\0';
    if (bodyLength > 0) std::memcpy(at, body, bodyLength);
    ++last_;
    bytes_ += size;
    return Read(place);
}

Outbox::Head Outbox::HeadAt(const char* place) {
    Head head;
    std::memcpy(&head, place, sizeof head);
    return head;
}

Outbox::Entry Outbox::Read(const char* place) {
    const Head head = HeadAt(place);
    const char* const subject = place + sizeof head;
    const char* const keys = subject + head.subjectLength + 1;
    return {head.number, subject, keys, keys + head.keysLength + 1, head.bodyLength, head.tag};
}

void Outbox::Confirm(std::uint64_t number, std::int64_t now) {
    for (auto next = givenUp_.begin(); next != givenUp_.end() && *next <= number + 1; next = givenUp_.erase(next))
        number = std::max(number, *next);
    if (number <= confirmed_) return;
    for (const Spool::Block& block : spool_.Blocks()) {
        const std::uint64_t last = LastOf(block);
        if (last > number) break;
        if (last > confirmed_) confirmedBytes_ += block.used;
    }
    confirmed_ = number;
    marks_.push_back({number, now});
    while (confirmedBytes_ > kMostKept) DropFirst();
}

void Outbox::GiveUp(std::uint64_t number) {
    if (number <= confirmed_) return;
    givenUp_.insert(number);
    Confirm(confirmed_, 0);
}

void Outbox::Release(std::int64_t now, std::int64_t kept) {
    for (; !marks_.empty() && marks_.front().time + kept <= now; marks_.pop_front()) released_ = marks_.front().number;
    while (!spool_.Blocks().empty() && LastOf(spool_.Blocks().front()) <= released_) DropFirst();
}

void Outbox::DropFirst() {
    const std::size_t used = spool_.Blocks().front().used;
    bytes_ -= used;
    confirmedBytes_ -= used;
    spool_.RemoveFirstBlock();
}

Outbox::Cursor Outbox::From(std::uint64_t number) const {
    number = std::max(number, released_ + 1);
    Cursor cursor;
    cursor.outbox_ = this;
    cursor.block_ = 0;
    cursor.at_ = 0;
    while (!cursor.AtEnd() && LastOf(spool_.Blocks()[cursor.block_]) < number) ++cursor.block_;
    while (!cursor.AtEnd() && cursor.Get().number < number) cursor.Step();
    cursor.PassGivenUp();
    return cursor;
}

Outbox::Entry Outbox::Cursor::Get() const { return Read(outbox_->spool_.Blocks()[block_].bytes.get() + at_); }

void Outbox::Cursor::Next() {
    Step();
    PassGivenUp();
}

void Outbox::Cursor::PassGivenUp() {
    if (outbox_->givenUp_.empty()) return;
    while (!AtEnd() && outbox_->givenUp_.contains(Get().number)) Step();
}

void Outbox::Cursor::Step() {
    const Spool::Block& block = outbox_->spool_.Blocks()[block_];
    at_ += HeadAt(block.bytes.get() + at_).size;
    if (at_ < block.used) return;
    ++block_;
    at_ = 0;
}

}  // namespace tarvex
