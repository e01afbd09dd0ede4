#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "tarvex/Bus.h"
#include "tarvex/Identity.h"

namespace tarvex {

/// The pairs that this process has published, with their formats, in order of publishing. Any thread may
/// call.
class Publications {
public:
    struct Pair {
        std::string msgKey;
        std::string identifier;
    };

    explicit Publications(const Identity& identity) : identity_(identity) {}

    /// Adds the pair, or gives a known one another format if there is one.
    void Add(std::string_view msgKey, std::string_view identifier, const msgfmt* format, std::uint16_t formatSize);
    bool Remove(std::string_view msgKey, std::string_view identifier);
    bool HasFormat(std::string_view msgKey, std::string_view identifier) const;
    /// The first format whose pair, sent by this process, matches; empty if there is none.
    std::vector<char> FindFormat(const Address& pattern) const;
    bool HasFormats() const;

private:
    struct Publication {
        Pair pair;
        std::vector<char> format;
    };

    const Publication* Find(std::string_view msgKey, std::string_view identifier) const;

    const Identity& identity_;
    mutable std::mutex mutex_;
    std::vector<Publication> publications_;
};

}  // namespace tarvex
