#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>

#include "tarvex/MessageQueue.h"

namespace tarvex {

/// The process's queue of unread messages, in the order of their arrival. Bounded: what is refused was
/// never taken, and what was taken is kept until it is read. Any thread may call.
class Inbox {
public:
    static constexpr std::size_t kMostBytes = 256u << 20;  // of memory

    enum class Found {
        Message,
        Nothing,
        Loss,  ///< messages were lost here; told once
    };

    /// Wakes nobody: who pushes does, at the latest when nothing more is to come. False if the queue is full.
    bool Push(const Address& address, const void* body, std::uint32_t bodyLength);
    /// Whether a thread waits.
    bool IsAwaited() const { return waiting_.load(std::memory_order_relaxed) > 0; }
    /// Wakes the threads that wait.
    void Wake() {
        if (IsAwaited()) arrived_.notify_all();
    }
    /// Whether half of the queue is free.
    bool HasRoom();
    /// Messages were lost between those in the queue and those to come. Needs no memory.
    void NoteLoss();
    /// What is next, after at most `milliseconds`; 0xFFFFFFFF waits for ever.
    Found Wait(std::uint32_t milliseconds);
    /// Hands the oldest message to `take`, which says whether it is done with; if not, it stays.
    Found Read(const std::function<bool(const Message&)>& take);
    /// Drops the messages that `wanted` does not want. Needs no memory.
    void Keep(const std::function<bool(const Address&)>& wanted);

private:
    Found Look();

    std::mutex mutex_;
    std::condition_variable arrived_;
    MessageQueue queue_;
    std::atomic<int> waiting_ = 0;
};

}  // namespace tarvex
