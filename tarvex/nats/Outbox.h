#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <set>
#include <string_view>

#include "tarvex/Spool.h"

namespace tarvex {

/// Messages that were accepted and may have to be sent again, in their order, numbered from 1. A message
/// leaves when the server is known to have it and has had the time to pass it on. Bounded. Not for several
/// threads at once.
class Outbox {
public:
    static constexpr std::size_t kMostBytes = 64u << 20;
    static constexpr std::size_t kMostKept = 4u << 20;  // of confirmed ones

    using Tag = std::array<char, 8>;  // of the caller
    struct Entry {
        std::uint64_t number;
        const char* subject;  ///< terminated, as is `keys`, which may be empty
        const char* keys;
        const char* body;
        std::uint32_t bodyLength;
        Tag tag;
    };

    /// Whether a message of this many bytes can be added; confirmed ones make room.
    bool MakeRoomFor(std::size_t bytes);
    /// The entry points into the outbox, which keeps its place. Raises `std::bad_alloc`, and is unchanged.
    Entry Add(std::string_view subject, std::string_view keys, const void* body, std::uint32_t bodyLength,
              const Tag& tag);

    /// The server has all messages up to this one, at `now`.
    void Confirm(std::uint64_t number, std::int64_t now);
    /// The server will never take this one: it is passed over, and counts as confirmed when those before it do.
    /// Raises `std::bad_alloc`, and is unchanged.
    void GiveUp(std::uint64_t number);
    /// Lets confirmed messages go that had `kept` of time. They are not sent again.
    void Release(std::int64_t now, std::int64_t kept);

    std::uint64_t LastNumber() const { return last_; }
    std::uint64_t Confirmed() const { return confirmed_; }
    std::uint64_t Unconfirmed() const { return last_ - confirmed_; }
    std::size_t UnconfirmedBytes() const { return bytes_ - confirmedBytes_; }

    /// The message with the lowest number that is not below `number` and has neither been released nor given up.
    class Cursor {
    public:
        bool AtEnd() const { return block_ == outbox_->spool_.Blocks().size(); }
        Entry Get() const;
        void Next();

    private:
        friend class Outbox;
        void Step();
        void PassGivenUp();
        const Outbox* outbox_;
        std::size_t block_;
        std::size_t at_;
    };
    Cursor From(std::uint64_t number) const;

private:
    struct Head {
        std::uint64_t number;
        Tag tag;
        std::uint32_t bodyLength;
        std::uint32_t subjectLength;
        std::uint32_t keysLength;
        std::uint32_t size;  // of all, head included
    };
    struct Mark {
        std::uint64_t number;
        std::int64_t time;
    };

    static Head HeadAt(const char* place);
    static Entry Read(const char* place);
    static std::uint64_t LastOf(const Spool::Block& block) { return HeadAt(block.Last()).number; }
    bool IsConfirmed(const Spool::Block& block) const { return LastOf(block) <= confirmed_; }
    void DropFirst();

    Spool spool_;
    std::deque<Mark> marks_;
    std::uint64_t last_ = 0;
    std::uint64_t confirmed_ = 0;
    std::uint64_t released_ = 0;
    std::set<std::uint64_t> givenUp_;  // all above those confirmed
    std::size_t bytes_ = 0;            // used, in all blocks
    std::size_t confirmedBytes_ = 0;   // used, in blocks that are confirmed whole
};

}  // namespace tarvex
