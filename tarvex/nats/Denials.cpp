#include "tarvex/nats/Denials.h"

#include <algorithm>

namespace tarvex {

bool Denials::Add(std::string_view text) {
    const std::size_t start = text.find('"');
    if (text.find("ermissions Violation") == std::string_view::npos || start == std::string_view::npos) return false;
    const std::string_view subject = text.substr(start + 1);
    const std::size_t end = subject.find_first_of("\"\\");
    const bool isWhole = end != std::string_view::npos && subject[end] == '"';
    const std::lock_guard lock(mutex_);
    if (subjects_.size() + beginnings_.size() >= kMost) {
        subjects_.clear();
        beginnings_.clear();
    }
    any_ = true;
    return (isWhole ? subjects_ : beginnings_).emplace(subject.substr(0, end)).second;
}

void Denials::Clear() {
    const std::lock_guard lock(mutex_);
    any_ = false;
    subjects_.clear();
    beginnings_.clear();
}

bool Denials::Find(std::string_view subject) const {
    const std::lock_guard lock(mutex_);
    return subjects_.contains(subject) ||
           std::any_of(beginnings_.begin(), beginnings_.end(),
                       [&](const std::string& beginning) { return subject.starts_with(beginning); });
}

}  // namespace tarvex
