#include <surveymsg/platform/String.h>

#include <pthread.h>

#include <algorithm>
#include <climits>
#include <new>
#include <utility>

#include <surveymsg/platform/Exceptions.h>

namespace {

// A reserve from here on is lent by the thread rather than allocated for the text.
constexpr std::uint32_t kLargeReserve = 16 * 1024;

// Null if memory is at its end.
char* TryAllocate(std::uint32_t capacity) {
    return static_cast<char*>(::operator new (std::size_t{capacity} + 1, std::nothrow));
}

char* Allocate(std::uint32_t capacity) {
    char* storage = TryAllocate(capacity);
    if (!storage) throw CMemoryException();
    return storage;
}

void Release(char* storage) { ::operator delete(storage); }

struct Block {
    char* storage = nullptr;
    std::uint32_t capacity = 0;
};

// What a thread keeps between two uses of a large reserve: the reserve itself, and the storage that
// the text had before and will want back. So encoding into a `Body` again and again needs no heap.
struct Lent {
    Block large;
    Block small;

    void Drop() {
        Drop(large);
        Drop(small);
    }
    static void Drop(Block& block) {
        Release(block.storage);
        block = {};
    }
    // Keeps `block` in `place` until the thread ends, or frees it if a block of at least that size waits there already.
    static void Keep(Block& place, Block block) {
        if (block.capacity > place.capacity && IsDroppedWithThread()) std::swap(place, block);
        Release(block.storage);
    }
    static bool IsDroppedWithThread();
    static Block Take(Block& place, std::uint32_t capacity) {
        if (place.capacity < capacity) return {};
        return std::exchange(place, Block{});
    }
};

thread_local Lent lent;

// Ends what a thread keeps. An object with a destructor would do so too, but would keep the library in the
// process as long as the thread lives, and unloading it would retire nothing.
class ThreadEnd {
public:
    ThreadEnd() : exists_(pthread_key_create(&key_, [](void* kept) { static_cast<Lent*>(kept)->Drop(); }) == 0) {}
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        lent.Drop();
        if (exists_) pthread_key_delete(key_);
        exists_ = false;
    }
    bool Covers(Lent* kept) const { return exists_ && pthread_setspecific(key_, kept) == 0; }

private:
    pthread_key_t key_{};
    bool exists_;
};

ThreadEnd threadEnd;

bool Lent::IsDroppedWithThread() { return threadEnd.Covers(&lent); }

}  // namespace

void CString::FreeHeap() { Release(heap_); }

void CString::Swap(CString& other) noexcept {
    char bytes[sizeof inline_];
    std::memcpy(bytes, inline_, sizeof bytes);
    std::memcpy(inline_, other.inline_, sizeof bytes);
    std::memcpy(other.inline_, bytes, sizeof bytes);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
}

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
    const Block old{IsInline() ? nullptr : heap_, IsInline() ? 0 : capacity_};
    Block grown;
    if (capacity >= kLargeReserve) grown = Lent::Take(lent.large, capacity);
    if (!grown.storage) grown = {Allocate(capacity), capacity};
    std::memcpy(grown.storage, Data(), std::size_t{length_} + 1);
    if (capacity >= kLargeReserve && old.storage && old.capacity < kLargeReserve)
        Lent::Keep(lent.small, old);
    else
        Release(old.storage);
    heap_ = grown.storage;
    capacity_ = grown.capacity;
}

void CString::ShrinkTo(std::uint32_t length) {
    const Block reserve{heap_, capacity_};
    if (length <= kInlineLength) {
        std::memcpy(inline_, reserve.storage, length);
        capacity_ = kInlineLength;
    } else {
        Block fitting = Lent::Take(lent.small, length);
        if (!fitting.storage) fitting = {TryAllocate(length), length};
        if (!fitting.storage) return;  // the reserve serves as well
        std::memcpy(fitting.storage, reserve.storage, length);
        heap_ = fitting.storage;
        capacity_ = fitting.capacity;
    }
    Lent::Keep(lent.large, reserve);
}

char* CString::GetBuffer(int minimum) {
    if (minimum > 0 && static_cast<std::uint32_t>(minimum) > capacity_) Grow(static_cast<std::uint32_t>(minimum));
    return Data();
}

void CString::ReleaseBuffer(int length) {
    std::uint32_t stored;
    if (length < 0) {
        const void* end = std::memchr(Data(), '\0', std::size_t{capacity_} + 1);
        stored = end ? static_cast<std::uint32_t>(static_cast<const char*>(end) - Data()) : capacity_;
    } else {
        stored = std::min(static_cast<std::uint32_t>(length), capacity_);
    }
    if (capacity_ >= kLargeReserve && stored < capacity_ / 8) ShrinkTo(stored);
    SetLength(stored);
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
