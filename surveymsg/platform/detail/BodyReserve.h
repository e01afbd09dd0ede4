#pragma once

#include <surveymsg/platform/String.h>

namespace surveymsg::detail {

/// Lends a body the thread's reserve for as long as this lives, so that a message of the largest size can be
/// written straight into the body's storage, and goes on without the reserve.
///
///     BodyReserve reserve(Body, kCapacity);
///     ... write at reserve.Storage() ...
///     reserve.Keep(length);                    // else the body is empty at the end
///
/// Keeping moves a content of up to 64 KB into the storage that the body had before: writing it again and
/// again needs no heap, and nothing holds 120 KB for 100 bytes. A larger content stays where it is.
class BodyReserve {
public:
    BodyReserve(CString& body, int capacity);
    BodyReserve(const BodyReserve&) = delete;
    BodyReserve& operator=(const BodyReserve&) = delete;
    ~BodyReserve();

    char* Storage() { return body_.GetBuffer(0); }
    /// The body's content is the first `length` bytes of the storage.
    void Keep(int length);
    /// The body's content is what it was before.
    void Restore();

private:
    CString& body_;
    CString other_;  // the body's own storage, while it has the thread's
    bool isKept_ = false;
};

}  // namespace surveymsg::detail
