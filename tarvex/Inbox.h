#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "tarvex/Keys.h"

namespace tarvex {

/// One message on its way to a reader: its five keys and its body, in one block.
class Message {
public:
    Message(const Address& address, const void* body, std::uint32_t bodyLength);

    Address Keys() const;
    const char* Body() const { return block_.get() + bodyAt_; }
    std::uint32_t BodyLength() const { return bodyLength_; }
    /// What it costs to keep, with the parts that the allocator and the queue have around it.
    std::size_t Cost() const { return std::size_t{bodyAt_} + bodyLength_ + kAround; }

private:
    static constexpr std::size_t kAround = 64;

    std::unique_ptr<char[]> block_;  // node, task, key, identifier, each terminated; then the body
    std::uint32_t number_;
    std::uint16_t taskAt_;
    std::uint16_t msgKeyAt_;
    std::uint16_t identifierAt_;
    std::uint16_t bodyAt_;
    std::uint32_t bodyLength_;
};

/// The process's queue of unread messages, in the order of their arrival. Bounded: what is refused was
/// never taken, and what was taken is kept until it is read. Any thread may call.
class Inbox {
public:
    static constexpr std::size_t kMostBytes = 256u << 20;

    enum class Found {
        Message,
        Nothing,
        Loss,  ///< messages were lost here; told once
    };

    /// False if the queue is full.
    bool Push(Message message);
    /// Whether half of the queue is free.
    bool HasRoom();
    /// Messages were lost between those in the queue and those to come.
    void NoteLoss();
    /// What is next, after at most `milliseconds`; 0xFFFFFFFF waits for ever.
    Found Wait(std::uint32_t milliseconds);
    /// Hands the oldest message to `take`, which says whether it is done with; if not, it stays.
    Found Read(const std::function<bool(const Message&)>& take);
    /// Drops the messages that `wanted` does not want.
    void Keep(const std::function<bool(const Address&)>& wanted);

private:
    bool IsLossNext() const { return !losses_.empty() && losses_.front() == taken_; }

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<Message> messages_;
    std::uint64_t taken_ = 0;           // messages that have left the queue
    std::deque<std::uint64_t> losses_;  // how many have left when a loss is to be told, ascending
    std::size_t bytes_ = 0;
    int waiting_ = 0;
};

}  // namespace tarvex
