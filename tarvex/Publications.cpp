#include "tarvex/Publications.h"

#include <algorithm>

namespace tarvex {

const Publications::Publication* Publications::Find(std::string_view msgKey, std::string_view identifier) const {
    const auto found = std::find_if(publications_.begin(), publications_.end(), [&](const Publication& each) {
        return each.pair.msgKey == msgKey && each.pair.identifier == identifier;
    });
    return found == publications_.end() ? nullptr : &*found;
}

void Publications::Add(std::string_view msgKey, std::string_view identifier, const msgfmt* format,
                       std::uint16_t formatSize) {
    const auto* bytes = reinterpret_cast<const char*>(format);
    std::vector<char> record(bytes, bytes + formatSize);
    const std::lock_guard lock(mutex_);
    const Publication* known = Find(msgKey, identifier);
    if (!known)
        publications_.push_back({{std::string(msgKey), std::string(identifier)}, std::move(record)});
    else if (format)  // a send that announces the pair again has nothing to say about its format
        publications_[static_cast<std::size_t>(known - publications_.data())].format = std::move(record);
}

bool Publications::Remove(std::string_view msgKey, std::string_view identifier) {
    const std::lock_guard lock(mutex_);
    const Publication* known = Find(msgKey, identifier);
    if (!known) return false;
    publications_.erase(publications_.begin() + (known - publications_.data()));
    return true;
}

bool Publications::HasFormat(std::string_view msgKey, std::string_view identifier) const {
    const std::lock_guard lock(mutex_);
    const Publication* known = Find(msgKey, identifier);
    return known && !known->format.empty();
}

std::vector<char> Publications::FindFormat(const Address& pattern) const {
    const std::lock_guard lock(mutex_);
    for (const Publication& each : publications_)
        if (!each.format.empty() && Matches(pattern, identity_.Sends(each.pair.msgKey, each.pair.identifier)))
            return each.format;
    return {};
}

bool Publications::HasFormats() const {
    const std::lock_guard lock(mutex_);
    return std::any_of(publications_.begin(), publications_.end(),
                       [](const Publication& each) { return !each.format.empty(); });
}

}  // namespace tarvex
