#pragma once

#include <cstdint>
#include <functional>

#include "tarvex/Keys.h"
#include "tarvex/Spool.h"

namespace tarvex {

/// One message on its way to a reader: its five keys and its body, in one piece of the queue's memory.
class Message {
public:
    static std::size_t SizeOf(const Address& address, std::uint32_t bodyLength);
    /// Writes one to memory of that size.
    static Message& Write(char* place, const Address& address, const void* body, std::uint32_t bodyLength);

    Address Keys() const;
    const char* Body() const { return Text() + bodyAt_; }
    std::uint32_t BodyLength() const { return bodyLength_; }

private:
    friend class MessageQueue;

    Message(const Address& address, std::uint32_t bodyLength);
    // Node, task, key, identifier, each terminated; then the body.
    const char* Text() const { return reinterpret_cast<const char*>(this) + sizeof *this; }
    std::size_t Size() const { return Spool::Rounded(sizeof *this + bodyAt_ + bodyLength_); }

    std::uint32_t number_;
    std::uint32_t bodyLength_;
    std::uint16_t taskAt_;
    std::uint16_t msgKeyAt_;
    std::uint16_t identifierAt_;
    std::uint16_t bodyAt_;
    // The queue's own.
    bool isAfterLoss_ = false;
    bool isDropped_ = false;
};

/// Messages in order, and the places where some were lost. Not for several threads at once.
class MessageQueue {
public:
    /// Raises `std::bad_alloc`, and is unchanged.
    void Push(const Address& address, const void* body, std::uint32_t bodyLength);
    /// Messages were lost behind all that are here. Needs no memory.
    void NoteLoss() { endsInLoss_ = true; }

    /// Whether there is no message, and no loss to tell.
    bool IsEmpty() const { return count_ == 0 && !endsInLoss_; }
    bool HasMessage() const { return count_ > 0; }
    /// Whether a loss is next; told once.
    bool TakeLoss();
    const Message& Oldest() const { return First(); }
    void RemoveOldest();
    /// Drops the messages that `wanted` does not want. Needs no memory.
    void Keep(const std::function<bool(const Address&)>& wanted);

    /// Bytes of memory in use.
    std::size_t Memory() const { return spool_.Memory(); }
    std::size_t MemoryWith(const Address& address, std::uint32_t bodyLength) const {
        return spool_.MemoryWith(Message::SizeOf(address, bodyLength));
    }

private:
    Message& First() const;
    void PassFirst();
    void PassDropped();

    Spool spool_;
    std::size_t firstAt_ = 0;  // in the first block
    std::size_t count_ = 0;
    bool endsInLoss_ = false;
};

}  // namespace tarvex
