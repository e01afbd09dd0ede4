#pragma once

#include <exception>
#include <new>

#include <surveymsg/platform/Export.h>
#include <surveymsg/platform/String.h>

/// A stream that cannot be stored or loaded. Thrown by value, caught by reference.
class SURVEYMSG_API CArchiveException : public std::exception {
public:
    enum Cause {
        readOnly = 2,   ///< a value was written to an archive that loads
        endOfFile = 3,  ///< the stream ended before all was read; `m_strFileName` is empty
        writeOnly = 4,  ///< a value was read from an archive that stores
        badSchema = 7,  ///< bytes that a class does not read; `m_strFileName` is the class's name
    };

    explicit CArchiveException(int cause, const char* text = nullptr);
    CArchiveException(const CArchiveException&);
    ~CArchiveException() override;

    const char* what() const noexcept override;

    int m_cause;            ///< one of `Cause`
    CString m_strFileName;  ///< the text of the failure
};

/// Memory, or the room of a fixed file, is at its end.
class SURVEYMSG_API CMemoryException : public std::bad_alloc {
public:
    CMemoryException();
    CMemoryException(const CMemoryException&);
    ~CMemoryException() override;

    const char* what() const noexcept override;
};
