#pragma once

#include <cstdint>

#include <surveymsg/platform/Exceptions.h>
#include <surveymsg/platform/String.h>

namespace surveymsg::detail {
class Nesting;
class Reader;
class Writer;
}  // namespace surveymsg::detail

/// A file of fixed size in the caller's memory. It never grows.
class SURVEYMSG_API CMemFile {
public:
    /// `buffer` stays the caller's and must outlive the file.
    CMemFile(unsigned char* buffer, unsigned size) : buffer_(buffer), size_(buffer ? size : 0) {}
    unsigned GetPosition() const { return position_; }
    void Flush() {}
    void Close() {
        buffer_ = nullptr;
        size_ = 0;
    }

private:
    friend class CArchive;

    unsigned char* buffer_;
    unsigned size_;
    unsigned position_ = 0;
};

/// A stream of packed little-endian values over a `CMemFile`, in one direction.
///
///     byte    std::uint8_t                    1 byte
///     word    std::uint16_t                   2 bytes
///     long    std::int32_t, std::uint32_t     4 bytes
///     double  double                          8 bytes, the bits of IEEE binary64
///     string  CString                         length prefix, then the bytes, no terminator
///
/// A string's prefix is its length as one byte up to 254; the byte 0xFF and a word up to 65,533;
/// the byte 0xFF, the word 0xFFFF and a long above.
///
/// Values move straight between the file's memory and the fields; nothing is buffered, so the buffer
/// size has no effect. Storing past the end of the file raises `CMemoryException`, loading past it
/// `CArchiveException` with `endOfFile`; the value under way is then left as it was. The file's
/// position is brought up to date by `Close` or the destructor.
class SURVEYMSG_API CArchive {
public:
    enum Mode : unsigned { store = 0, load = 1 };

    CArchive(CMemFile* file, unsigned mode, [[maybe_unused]] int bufferSize = 4096)
        : file_(file),
          cursor_(file ? file->buffer_ + file->position_ : nullptr),
          limit_(file ? file->buffer_ + file->size_ : nullptr),
          loading_((mode & load) != 0) {}
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;
    ~CArchive() { Close(); }

    bool IsStoring() const { return !loading_; }
    bool IsLoading() const { return loading_; }
    void Close() {
        if (file_ && file_->buffer_) file_->position_ = static_cast<unsigned>(cursor_ - file_->buffer_);
        file_ = nullptr;
        cursor_ = limit_ = nullptr;
    }

    CArchive& operator<<(std::uint8_t value);
    CArchive& operator<<(std::uint16_t value);
    CArchive& operator<<(std::int32_t value);
    CArchive& operator<<(std::uint32_t value);
    CArchive& operator<<(double value);
    CArchive& operator<<(const CString& value);
    CArchive& operator>>(std::uint8_t& value);
    CArchive& operator>>(std::uint16_t& value);
    CArchive& operator>>(std::int32_t& value);
    CArchive& operator>>(std::uint32_t& value);
    CArchive& operator>>(double& value);
    CArchive& operator>>(CString& value);

private:
    friend class surveymsg::detail::Nesting;
    friend class surveymsg::detail::Reader;
    friend class surveymsg::detail::Writer;

    CMemFile* file_;
    unsigned char* cursor_;
    unsigned char* limit_;
    surveymsg::detail::Nesting* nesting_ = nullptr;  // the nested messages under way, if any
    bool loading_;
};
