#include <surveymsg/platform/StringArray.h>

CStringArray::CStringArray() = default;
CStringArray::CStringArray(const CStringArray& other) = default;
CStringArray& CStringArray::operator=(const CStringArray& other) = default;
CStringArray::~CStringArray() = default;

int CStringArray::Add(const CString& text) {
    texts_.push_back(text);
    return GetSize() - 1;
}

void CStringArray::Reserve(int count) { texts_.reserve(static_cast<std::size_t>(count)); }

void CStringArray::RemoveAll() { texts_.clear(); }
