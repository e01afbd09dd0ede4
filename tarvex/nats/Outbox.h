#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

namespace tarvex {

/// Messages that were accepted and may have to be sent again, in their order, numbered from 1. A message
/// leaves when the server is known to have it and has had the time to pass it on. Bounded. Not for several
/// threads at once.
class Outbox {
public:
    static constexpr std::size_t kMostBytes = 64u << 20;
    static constexpr std::size_t kMostKept = 4u << 20;  // of confirmed ones

    struct Entry {
        std::uint64_t number;
        const char* subject;  ///< terminated, as is `keys`, which may be empty
        const char* keys;
        const char* body;
        std::uint32_t bodyLength;
    };

    /// Whether a message of this many bytes can be added; confirmed ones make room.
    bool MakeRoomFor(std::size_t bytes);
    /// The entry points into the outbox, which keeps its place. Raises `std::bad_alloc`, and is unchanged.
    Entry Add(std::string_view subject, std::string_view keys, const void* body, std::uint32_t bodyLength);
    /// Takes back the one just added.
    void RemoveLast();

    /// The server has all messages up to this one, at `now`.
    void Confirm(std::uint64_t number, std::int64_t now);
    /// Lets confirmed messages go that had `kept` of time.
    void Release(std::int64_t now, std::int64_t kept);

    std::uint64_t LastNumber() const { return last_; }
    std::uint64_t Confirmed() const { return confirmed_; }
    std::uint64_t Unconfirmed() const { return last_ - confirmed_; }
    std::size_t UnconfirmedBytes() const { return bytes_ - confirmedBytes_; }

    /// The message with the lowest number that is not below `number`.
    class Cursor {
    public:
        bool AtEnd() const { return block_ == outbox_->blocks_.size(); }
        Entry Get() const;
        void Next();

    private:
        friend class Outbox;
        const Outbox* outbox_;
        std::size_t block_;
        std::size_t at_;
    };
    Cursor From(std::uint64_t number) const;

private:
    // Many small messages share one block of memory; blocks are used again.
    static constexpr std::size_t kBlockBytes = 256u << 10;
    struct Block {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
        std::size_t used = 0;
        std::size_t lastAt = 0;
        std::uint64_t last = 0;
    };
    struct Head {
        std::uint64_t number;
        std::uint32_t bodyLength;
        std::uint32_t subjectLength;
        std::uint32_t keysLength;
        std::uint32_t size;  // of all, head included
    };
    struct Mark {
        std::uint64_t number;
        std::int64_t time;
    };

    static std::size_t SizeOf(std::size_t subject, std::size_t keys, std::size_t body);
    static Entry Read(const char* head);
    void AddBlock(std::size_t size);
    void DropFirst();
    bool IsConfirmed(const Block& block) const { return block.last <= confirmed_; }

    std::deque<Block> blocks_;
    std::vector<Block> spare_;
    std::deque<Mark> marks_;
    std::uint64_t last_ = 0;
    std::uint64_t confirmed_ = 0;
    std::size_t bytes_ = 0;           // used, in all blocks
    std::size_t confirmedBytes_ = 0;  // used, in blocks that are confirmed whole
};

}  // namespace tarvex
