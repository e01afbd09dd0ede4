#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <surveymsg/platform/Export.h>

/// A text with a stored length. Any byte value is kept, zero included; copying and comparing go by the
/// stored length, and a terminator always stands behind the last byte. Up to 31 characters live inside
/// the object: the keys and names of real messages need no heap.
///
/// Running out of memory raises `CMemoryException` and leaves the text as it was.
class SURVEYMSG_API CString {
public:
    CString() noexcept { inline_[0] = '\0'; }
    CString(const char* text) : CString() { Assign(text, LengthOf(text)); }  ///< null gives empty
    CString(const char* text, int length) : CString() { Assign(text, length); }
    CString(const CString& other) : CString() { Assign(other.Data(), other.GetLength()); }
    CString(CString&& other) noexcept : CString() { Swap(other); }
    ~CString() { Free(); }

    CString& operator=(const CString& other) {
        Assign(other.Data(), other.GetLength());
        return *this;
    }
    CString& operator=(CString&& other) noexcept {
        Swap(other);
        return *this;
    }
    CString& operator=(const char* text) {
        Assign(text, LengthOf(text));
        return *this;
    }

    int GetLength() const { return static_cast<int>(length_); }
    bool IsEmpty() const { return length_ == 0; }
    void Empty() { SetLength(0); }  ///< keeps the storage

    operator const char*() const { return Data(); }
    char operator[](int index) const { return Data()[index]; }
    void SetAt(int index, char character) { Data()[index] = character; }
    std::string_view View() const { return {Data(), length_}; }

    CString Left(int count) const;            ///< the first `count` characters, or all there are
    CString Mid(int first) const;             ///< all from `first` on
    CString Mid(int first, int count) const;  ///< at most `count` from `first` on
    int Find(const char* text) const;         ///< place of the first occurrence, -1 if there is none

    CString& operator+=(const CString& other) { return Append(other.Data(), other.GetLength()); }
    CString& operator+=(const char* text) { return Append(text, LengthOf(text)); }
    CString& Append(const char* text, int length);
    /// The text becomes `length` bytes from `text`, which may lie inside this text.
    void Assign(const char* text, int length) {
        if (static_cast<std::uint32_t>(length) > capacity_) return AssignGrown(text, length);
        if (length > 0) std::memmove(Data(), text, static_cast<std::size_t>(length));
        SetLength(length < 0 ? 0 : static_cast<std::uint32_t>(length));
    }

    /// Storage for at least `minimum` characters and a terminator, holding the present text; what lies
    /// behind the text has no defined content: it costs no filling. `ReleaseBuffer` must follow before the
    /// text is used again.
    char* GetBuffer(int minimum) {
        if (minimum > 0 && static_cast<std::uint32_t>(minimum) > capacity_) Grow(static_cast<std::uint32_t>(minimum));
        return Data();
    }
    /// The text becomes `length` characters of storage for the caller to fill at once.
    char* SetBuffer(int length) {
        if (static_cast<std::uint32_t>(length) > capacity_) GetBuffer(length);
        SetLength(static_cast<std::uint32_t>(length));
        return Data();
    }
    /// Ends `GetBuffer`: the text has `length` characters, or, for -1, those up to the first
    /// terminator. A length above the storage means all of the storage.
    void ReleaseBuffer(int length = -1) {
        const auto stored = length < 0 ? LengthToTerminator() : static_cast<std::uint32_t>(length);
        SetLength(stored < capacity_ ? stored : capacity_);
    }

    void Swap(CString& other) noexcept {
        // In the sizes in which the parts were written: a wider read has to wait for their stores.
        SwapBytes<sizeof length_>(&length_, &other.length_);
        SwapBytes<sizeof capacity_>(&capacity_, &other.capacity_);
        SwapBytes<sizeof heap_>(inline_, other.inline_);
        SwapBytes<sizeof inline_ - sizeof heap_>(inline_ + sizeof heap_, other.inline_ + sizeof heap_);
    }

    /// Characters that need no heap.
    static constexpr int kInlineLength = 31;

private:
    static int LengthOf(const char* text) { return text ? static_cast<int>(std::strlen(text)) : 0; }
    template <std::size_t N>
    static void SwapBytes(void* a, void* b) {
        char bytes[N];
        std::memcpy(bytes, a, N);
        std::memcpy(a, b, N);
        std::memcpy(b, bytes, N);
    }
    bool IsInline() const { return capacity_ == kInlineLength; }
    char* Data() { return IsInline() ? inline_ : heap_; }
    const char* Data() const { return IsInline() ? inline_ : heap_; }
    void SetLength(std::uint32_t length) {
        length_ = length;
        Data()[length] = '\0';
    }
    void Free() {
        if (!IsInline()) FreeHeap();
    }
    void FreeHeap();
    void AssignGrown(const char* text, int length);
    void Grow(std::uint32_t capacity);
    std::uint32_t LengthToTerminator() const;

    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = kInlineLength;  // characters, without the terminator
    union {
        char inline_[kInlineLength + 1];
        char* heap_;
    };
};

inline bool operator==(const CString& a, const CString& b) { return a.View() == b.View(); }
inline bool operator!=(const CString& a, const CString& b) { return a.View() != b.View(); }
inline bool operator<(const CString& a, const CString& b) { return a.View() < b.View(); }

inline std::string_view ViewOf(const char* text) { return text ? std::string_view(text) : std::string_view(); }
inline bool operator==(const CString& a, const char* b) { return a.View() == ViewOf(b); }
inline bool operator==(const char* a, const CString& b) { return ViewOf(a) == b.View(); }
inline bool operator!=(const CString& a, const char* b) { return a.View() != ViewOf(b); }
inline bool operator!=(const char* a, const CString& b) { return ViewOf(a) != b.View(); }
inline bool operator<(const CString& a, const char* b) { return a.View() < ViewOf(b); }
inline bool operator<(const char* a, const CString& b) { return ViewOf(a) < b.View(); }

SURVEYMSG_API CString operator+(const CString& a, const CString& b);
SURVEYMSG_API CString operator+(const CString& a, const char* b);
SURVEYMSG_API CString operator+(const char* a, const CString& b);
