#pragma once

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace tarvex {

/// The subjects that the server has told this program it may not use. Any thread may call.
class Denials {
public:
    /// A text of the server: Permissions Violation for Publish to "the subject". The client cuts it, and what cannot
    /// be printed stands in it otherwise: then all subjects that begin so are denied. False if it is no such text, or
    /// known.
    bool Add(std::string_view text);
    /// A new connection may permit what the last one did not.
    void Clear();
    bool Has(std::string_view subject) const { return any_.load(std::memory_order_relaxed) && Find(subject); }

private:
    static constexpr std::size_t kMost = 4096;  // then they are learnt anew

    bool Find(std::string_view subject) const;

    std::atomic<bool> any_ = false;
    mutable std::mutex mutex_;
    std::set<std::string, std::less<>> subjects_;
    std::set<std::string, std::less<>> beginnings_;
};

}  // namespace tarvex
