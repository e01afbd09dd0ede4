#pragma once

// The two directions of an archive, with the same operations, so that one list of fields serves both.
// The cursor lives in the reader or writer while a class's fields go by, and a run of fixed fields is
// tested against the end of the file once.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include <surveymsg/platform/Archive.h>

namespace surveymsg::detail {

[[noreturn]] void RaiseEndOfFile();
[[noreturn]] void RaiseFull();

inline constexpr unsigned char kLongString = 0xFF;    // a word follows
inline constexpr std::uint16_t kWideString = 0xFFFE;  // never written; a stream of another kind of text
inline constexpr std::uint16_t kHugeString = 0xFFFF;  // a long follows

template <class T>
void SwapOnBigEndian(T& bits) {
    if constexpr (std::endian::native == std::endian::big) {
        auto* bytes = reinterpret_cast<unsigned char*>(&bits);
        for (std::size_t i = 0; i < sizeof(T) / 2; ++i) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
    }
}

template <class T>
using BitsOf = std::conditional_t<
    sizeof(T) == 8, std::uint64_t,
    std::conditional_t<sizeof(T) == 4, std::uint32_t, std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;

class Writer {
public:
    explicit Writer(CArchive& archive) : archive_(archive), cursor_(archive.cursor_), limit_(archive.limit_) {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { archive_.cursor_ = cursor_; }

    static constexpr bool kLoads = false;

    void Byte(std::uint8_t value) { Fixed(value); }
    template <class T>
    void Word(T value) {
        static_assert(sizeof(T) == 2);
        Fixed(value);
    }
    template <class... T>
    void Longs(T... values) {
        static_assert(((sizeof(T) == 4) && ...));
        Fixed(values...);
    }
    template <class... T>
    void Doubles(T... values) {
        static_assert((std::is_same_v<T, double> && ...));
        Fixed(values...);
    }
    /// A field by the primitive that goes with its type.
    template <class T>
    void Field(const T& field) {
        if constexpr (std::is_same_v<T, CString>)
            String(field);
        else
            Fixed(field);
    }
    void String(const CString& text) {
        const auto length = static_cast<std::uint32_t>(text.GetLength());
        if (length < kLongString) {
            Need(1 + length);
            *cursor_++ = static_cast<unsigned char>(length);
        } else {
            LongPrefix(length);
        }
        std::memcpy(cursor_, static_cast<const char*>(text), length);
        cursor_ += length;
    }

private:
    void Need(std::uint64_t bytes) {
        if (static_cast<std::uint64_t>(limit_ - cursor_) < bytes) RaiseFull();
    }
    template <class T>
    void Put(T value) {
        auto bits = std::bit_cast<BitsOf<T>>(value);
        SwapOnBigEndian(bits);
        std::memcpy(cursor_, &bits, sizeof bits);
        cursor_ += sizeof bits;
    }
    template <class... T>
    void Fixed(T... values) {
        Need((sizeof(T) + ...));
        (Put(values), ...);
    }
    void LongPrefix(std::uint32_t length) {
        if (length < kWideString) {
            Need(std::uint64_t{3} + length);
            Put(kLongString);
            Put(static_cast<std::uint16_t>(length));
        } else {
            Need(std::uint64_t{7} + length);
            Put(kLongString);
            Put(kHugeString);
            Put(length);
        }
    }

    CArchive& archive_;
    unsigned char* cursor_;
    unsigned char* limit_;
};

class Reader {
public:
    explicit Reader(CArchive& archive) : archive_(archive), cursor_(archive.cursor_), limit_(archive.limit_) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { archive_.cursor_ = cursor_; }

    static constexpr bool kLoads = true;

    void Byte(std::uint8_t& value) { Fixed(value); }
    template <class T>
    void Word(T& value) {
        static_assert(sizeof(T) == 2);
        Fixed(value);
    }
    template <class... T>
    void Longs(T&... values) {
        static_assert(((sizeof(T) == 4) && ...));
        Fixed(values...);
    }
    template <class... T>
    void Doubles(T&... values) {
        static_assert((std::is_same_v<T, double> && ...));
        Fixed(values...);
    }
    /// A field by the primitive that goes with its type.
    template <class T>
    void Field(T& field) {
        if constexpr (std::is_same_v<T, CString>)
            String(field);
        else
            Fixed(field);
    }
    /// A length is believed only as far as bytes are left.
    void String(CString& text) {
        Need(1);
        std::uint32_t length = *cursor_;
        std::uint64_t prefix = 1;
        if (length == kLongString) length = LongPrefix(prefix);
        Need(prefix + length);
        text.Assign(reinterpret_cast<const char*>(cursor_ + prefix), static_cast<int>(length));
        cursor_ += prefix + length;
    }

    /// `count` elements, but no more than the bytes that are left can hold: what may be reserved for them.
    int AtMost(std::int32_t count, std::size_t bytesEach) const {
        return static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(count), Left() / bytesEach));
    }

private:
    std::size_t Left() const { return static_cast<std::size_t>(limit_ - cursor_); }

    void Need(std::uint64_t bytes) const {
        if (Left() < bytes) RaiseEndOfFile();
    }
    template <class T>
    void Get(T& value) {
        BitsOf<T> bits;
        std::memcpy(&bits, cursor_, sizeof bits);
        SwapOnBigEndian(bits);
        value = std::bit_cast<T>(bits);
        cursor_ += sizeof bits;
    }
    template <class... T>
    void Fixed(T&... values) {
        if (Left() >= (sizeof(T) + ...)) [[likely]] {
            (Get(values), ...);
        } else {
            ((Need(sizeof(T)), Get(values)), ...);  // what is there still arrives
        }
    }
    std::uint32_t LongPrefix(std::uint64_t& prefix) const;

    CArchive& archive_;
    unsigned char* cursor_;
    unsigned char* limit_;
};

/// Whether a list of fields runs for loading.
template <class Wire>
inline constexpr bool Loads = std::remove_reference_t<Wire>::kLoads;

}  // namespace surveymsg::detail
