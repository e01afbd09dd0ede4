#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "references/Shares.h"
#include "values/Messages.h"

namespace bench {

/// Encoded bytes as a receiver holds them, aligned for peers that read them in place.
class ReceivedBytes {
public:
    explicit ReceivedBytes(std::string_view bytes)
        : words_(bytes.size() / sizeof(std::uint64_t) + 1), size_(bytes.size()) {
        std::memcpy(words_.data(), bytes.data(), bytes.size());
    }
    std::string_view View() const { return {reinterpret_cast<const char*>(words_.data()), size_}; }
    const std::uint64_t* Words() const { return words_.data(); }

private:
    std::vector<std::uint64_t> words_;
    std::size_t size_;
};

/// Memory that an encoder writes to again and again; larger than any message here in any encoding.
class EncodingBuffer {
public:
    static constexpr std::size_t kSize = 2 * shares::kCapacity;

    unsigned char* Data() { return bytes_.data(); }
    char* Chars() { return reinterpret_cast<char*>(bytes_.data()); }
    std::string_view View(std::size_t size) { return {Chars(), size}; }

private:
    std::vector<unsigned char> bytes_ = std::vector<unsigned char>(kSize);
};

/// A peer that has no message objects of its own: the program holds plain structs.
struct PlainPeer {
    static constexpr bool kOwnMessages = false;
    using Received = ReceivedBytes;

    template <class Plain>
    using Message = Plain;

    template <class Plain>
    static void Fill(const Plain& plain, Plain& message) {
        message = plain;
    }
    template <class Plain>
    static void Read(const Plain& message, Plain& plain) {
        plain = message;
    }
};

}  // namespace bench
