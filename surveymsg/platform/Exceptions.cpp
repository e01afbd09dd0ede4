#include <surveymsg/platform/Exceptions.h>

CArchiveException::CArchiveException(int cause, const char* text) : m_cause(cause), m_strFileName(text) {}
CArchiveException::CArchiveException(const CArchiveException&) = default;
CArchiveException::~CArchiveException() = default;

const char* CArchiveException::what() const noexcept {
    switch (m_cause) {
        case readOnly:
            return "archive: written while loading";
        case endOfFile:
            return "archive: end of data";
        case writeOnly:
            return "archive: read while storing";
        case badSchema:
            return "archive: bytes of an unknown schema";
        default:
            return "archive: failed";
    }
}

CMemoryException::CMemoryException() = default;
CMemoryException::CMemoryException(const CMemoryException&) = default;
CMemoryException::~CMemoryException() = default;

const char* CMemoryException::what() const noexcept { return "out of memory"; }
