#pragma once

// Packed little-endian values over fixed memory, the least that a careful program would write: a test against
// the end for each run of fixed values and for each text. Both ends are passed and returned by value, so that
// the cursor stays in a register.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace bench::packed {

static_assert(std::endian::native == std::endian::little, "the references copy values as they lie in memory");

[[noreturn]] void RaiseFull();
[[noreturn]] void RaiseShort();

inline constexpr std::uint8_t kLongText = 0xFF;     // a word follows
inline constexpr std::uint16_t kHugeText = 0xFFFF;  // a long follows; one below it is no text

class Writer {
public:
    Writer(unsigned char* begin, std::size_t capacity) : cursor_(begin), limit_(begin + capacity) {}

    template <class... T>
    void Values(const T&... values) {
        Need((sizeof(T) + ...));
        (Put(values), ...);
    }
    void Text(std::string_view text) {
        if (text.size() >= kLongText) return LongText(text);
        Need(1 + text.size());
        Put(static_cast<std::uint8_t>(text.size()));
        PutBytes(text);
    }
    unsigned char* Cursor() const { return cursor_; }

private:
    void Need(std::size_t bytes) {
        if (static_cast<std::size_t>(limit_ - cursor_) < bytes) RaiseFull();
    }
    template <class T>
    void Put(const T& value) {
        std::memcpy(cursor_, &value, sizeof value);
        cursor_ += sizeof value;
    }
    void PutBytes(std::string_view text) {
        std::memcpy(cursor_, text.data(), text.size());
        cursor_ += text.size();
    }
    void LongText(std::string_view text);

    unsigned char* cursor_;
    unsigned char* limit_;
};

class Reader {
public:
    explicit Reader(std::string_view bytes) : cursor_(bytes.data()), limit_(bytes.data() + bytes.size()) {}

    template <class... T>
    void Values(T&... values) {
        Need((sizeof(T) + ...));
        (Take(values), ...);
    }
    /// The view lies in the bytes that are read.
    std::string_view View() {
        std::uint8_t length;
        Values(length);
        return ViewOf(length == kLongText ? LongLength() : length);
    }
    void Text(std::string& text) {
        const std::string_view view = View();
        text.assign(view.data(), view.size());
    }
    void Schema(std::uint8_t known) {
        std::uint8_t schema;
        Values(schema);
        if (schema != known) RaiseShort();
    }
    std::size_t Left() const { return static_cast<std::size_t>(limit_ - cursor_); }

private:
    void Need(std::size_t bytes) const {
        if (Left() < bytes) RaiseShort();
    }
    template <class T>
    void Take(T& value) {
        std::memcpy(&value, cursor_, sizeof value);
        cursor_ += sizeof value;
    }
    std::string_view ViewOf(std::size_t length) {
        Need(length);
        const std::string_view view(cursor_, length);
        cursor_ += length;
        return view;
    }
    std::size_t LongLength();

    const char* cursor_;
    const char* limit_;
};

}  // namespace bench::packed
