#include "tarvex/Inbox.h"

#include <chrono>

namespace tarvex {

bool Inbox::Push(const Address& address, const void* body, std::uint32_t bodyLength) {
    const std::lock_guard lock(mutex_);
    if (queue_.MemoryWith(address, bodyLength) > kMostBytes) return false;
    queue_.Push(address, body, bodyLength);
    return true;
}

bool Inbox::HasRoom() {
    const std::lock_guard lock(mutex_);
    return queue_.Memory() <= kMostBytes / 2;
}

void Inbox::NoteLoss() {
    {
        const std::lock_guard lock(mutex_);
        queue_.NoteLoss();
    }
    Wake();
}

// Wants the mutex.
Inbox::Found Inbox::Look() {
    if (queue_.TakeLoss()) return Found::Loss;
    return queue_.HasMessage() ? Found::Message : Found::Nothing;
}

Inbox::Found Inbox::Wait(std::uint32_t milliseconds) {
    constexpr std::uint32_t kForEver = 0xFFFFFFFF;
    std::unique_lock lock(mutex_);
    const auto arrived = [this] { return !queue_.IsEmpty(); };
    if (milliseconds != 0 && !arrived()) {
        ++waiting_;
        if (milliseconds == kForEver)
            arrived_.wait(lock, arrived);
        else
            arrived_.wait_for(lock, std::chrono::milliseconds(milliseconds), arrived);
        --waiting_;
    }
    return Look();
}

Inbox::Found Inbox::Read(const std::function<bool(const Message&)>& take) {
    const std::lock_guard lock(mutex_);
    const Found found = Look();
    if (found == Found::Message && take(queue_.Oldest())) queue_.RemoveOldest();
    return found;
}

void Inbox::Keep(const std::function<bool(const Address&)>& wanted) {
    const std::lock_guard lock(mutex_);
    queue_.Keep(wanted);
}

}  // namespace tarvex
