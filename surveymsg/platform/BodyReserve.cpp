#include <surveymsg/platform/detail/BodyReserve.h>

#include <pthread.h>

#include <new>

namespace surveymsg::detail {
namespace {

// What the thread lends, or null before the first use. A pointer and no object: a destructor here would keep
// the library in the process as long as the thread lives, and unloading it would retire nothing.
thread_local CString* threadReserve = nullptr;

class ThreadEnd {
public:
    ThreadEnd() : exists_(pthread_key_create(&key_, [](void* kept) { Drop(static_cast<CString*>(kept)); }) == 0) {}
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        if (exists_) pthread_key_delete(key_);
        exists_ = false;
        Drop(threadReserve);
    }
    // What ends with the thread; null if nothing can be kept for it.
    CString* Make() const {
        if (!exists_) return nullptr;
        auto* made = new (std::nothrow) CString;
        if (made && pthread_setspecific(key_, made) == 0) return made;
        delete made;
        return nullptr;
    }

private:
    static void Drop(CString* kept) {
        delete kept;
        threadReserve = nullptr;
    }

    pthread_key_t key_{};
    bool exists_;
};

ThreadEnd threadEnd;

}  // namespace

BodyReserve::BodyReserve(CString& body, int capacity) : body_(body) {
    if (!threadReserve) threadReserve = threadEnd.Make();
    if (threadReserve) other_.Swap(*threadReserve);
    other_.GetBuffer(capacity);
    body_.Swap(other_);
}

void BodyReserve::Keep(int length) {
    constexpr int kLittle = 64 * 1024;
    isKept_ = true;
    body_.ReleaseBuffer(length);
    if (length > kLittle) return;
    other_.Assign(body_, length);
    body_.Swap(other_);
}

void BodyReserve::Restore() {
    isKept_ = true;
    body_.Swap(other_);
}

BodyReserve::~BodyReserve() {
    if (!isKept_) {
        Restore();
        body_.Empty();
    }
    other_.Empty();
    if (threadReserve) other_.Swap(*threadReserve);
}

}  // namespace surveymsg::detail
