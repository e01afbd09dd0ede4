#include <surveymsg/platform/String.h>

#include <algorithm>
#include <climits>
#include <new>

#include <surveymsg/platform/Exceptions.h>

namespace {

char* Allocate(std::uint32_t capacity) {
    void* storage = ::operator new (std::size_t{capacity} + 1, std::nothrow);
    if (!storage) throw CMemoryException();
    return static_cast<char*>(storage);
}

}  // namespace

void CString::FreeHeap() { ::operator delete(heap_); }

void CString::AssignGrown(const char* text, int length) {
    if (length <= 0) return Empty();
    char* storage = Allocate(static_cast<std::uint32_t>(length));
    std::memcpy(storage, text, static_cast<std::size_t>(length));  // before the old storage goes: `text` may be in it
    Free();
    heap_ = storage;
    capacity_ = static_cast<std::uint32_t>(length);
    SetLength(capacity_);
}

void CString::Grow(std::uint32_t capacity) {
    char* storage = Allocate(capacity);
    std::memcpy(storage, Data(), std::size_t{length_} + 1);
    Free();
    heap_ = storage;
    capacity_ = capacity;
}

std::uint32_t CString::LengthToTerminator() const {
    const void* end = std::memchr(Data(), '\0', std::size_t{capacity_} + 1);
    return end ? static_cast<std::uint32_t>(static_cast<const char*>(end) - Data()) : capacity_;
}

CString& CString::Append(const char* text, int length) {
    if (length <= 0) return *this;
    const auto added = static_cast<std::uint32_t>(length);
    if (added > static_cast<std::uint32_t>(INT_MAX) - length_) throw CMemoryException();
    if (length_ + added <= capacity_) {
        std::memmove(Data() + length_, text, added);
        SetLength(length_ + added);
        return *this;
    }
    const std::uint32_t doubled = capacity_ > INT_MAX / 2 ? INT_MAX : capacity_ * 2;
    const std::uint32_t capacity = std::max(length_ + added, doubled);
    char* storage = Allocate(capacity);
    std::memcpy(storage, Data(), length_);
    std::memcpy(storage + length_, text, added);  // before the old storage goes: `text` may be in it
    Free();
    heap_ = storage;
    capacity_ = capacity;
    SetLength(length_ + added);
    return *this;
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    first = std::clamp(first, 0, GetLength());
    return {Data() + first, std::clamp(count, 0, GetLength() - first)};
}

int CString::Find(const char* text) const {
    const std::size_t place = View().find(ViewOf(text));
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

CString operator+(const CString& a, const CString& b) {
    CString sum;
    sum.GetBuffer(a.GetLength() + b.GetLength());
    sum += a;
    sum += b;
    return sum;
}

CString operator+(const CString& a, const char* b) { return CString(a) += b; }

CString operator+(const char* a, const CString& b) { return CString(a) += b; }
