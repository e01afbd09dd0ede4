#include <surveymsg/platform/detail/BodyReserve.h>

#include <pthread.h>

#include <new>

namespace surveymsg::detail {

constinit thread_local CString* threadReserve = nullptr;

namespace {

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

void MakeThreadReserve() { threadReserve = threadEnd.Make(); }

}  // namespace surveymsg::detail
