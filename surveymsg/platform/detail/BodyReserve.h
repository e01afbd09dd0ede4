#pragma once

#include <surveymsg/platform/Exceptions.h>
#include <surveymsg/platform/String.h>

namespace surveymsg::detail {

/// What the thread lends, or null before the first use. A pointer and no object: a destructor here would
/// keep the library in the process as long as the thread lives, and unloading it would retire nothing.
extern constinit thread_local CString* threadReserve;
void MakeThreadReserve();  ///< leaves it null if nothing can be kept for the thread

/// Lends a body the thread's reserve for as long as this lives, so that a message of the largest size can be
/// written straight into the body's storage, and goes on without the reserve.
///
///     BodyReserve reserve(Body, kCapacity);
///     ... write at reserve.Storage() ...
///     reserve.Keep(length);                    // else the body is empty at the end
///
/// Keeping moves a content of up to 16 KB into the storage that the body had before: writing it again and
/// again needs no heap, and nothing holds 120 KB for 100 bytes. A larger content stays where it is.
class BodyReserve {
public:
    BodyReserve(CString& body, int capacity) : body_(body) {
        if (!threadReserve) MakeThreadReserve();
        if (threadReserve) other_.Swap(*threadReserve);
        other_.GetBuffer(capacity);
        body_.Swap(other_);
    }
    BodyReserve(const BodyReserve&) = delete;
    BodyReserve& operator=(const BodyReserve&) = delete;
    ~BodyReserve() {
        if (!isKept_) {
            Restore();
            body_.Empty();
        }
        other_.Empty();
        if (threadReserve) other_.Swap(*threadReserve);
    }

    char* Storage() { return body_.GetBuffer(0); }
    /// The body's content is the first `length` bytes of the storage. Never fails: a message that was read is
    /// the only copy there is.
    void Keep(int length) {
        constexpr int kLittle = 16 * 1024;
        isKept_ = true;
        body_.ReleaseBuffer(length);
        if (length > kLittle) return;
        try {
            other_.Assign(body_, length);
        } catch (const CMemoryException&) {
            return;  // it stays where it is, like a larger one
        }
        body_.Swap(other_);
    }
    /// The body's content is what it was before.
    void Restore() {
        isKept_ = true;
        body_.Swap(other_);
    }

private:
    CString& body_;
    CString other_;  // the body's own storage, while it has the thread's
    bool isKept_ = false;
};

}  // namespace surveymsg::detail
