#include <surveymsg/platform/StringArray.h>

#include <algorithm>

#include <surveymsg/platform/detail/Memory.h>

CStringArray::CStringArray() = default;
CStringArray::CStringArray(const CStringArray& other) { *this = other; }
CStringArray& CStringArray::operator=(const CStringArray& other) {
    surveymsg::detail::RaisingMemoryException([&] { texts_ = other.texts_; });
    return *this;
}
CStringArray::~CStringArray() = default;

int CStringArray::Add(const CString& text) {
    surveymsg::detail::RaisingMemoryException([&] { texts_.push_back(text); });
    return GetSize() - 1;
}

void CStringArray::Reserve(int count) {
    surveymsg::detail::RaisingMemoryException([&] { texts_.reserve(static_cast<std::size_t>(std::max(count, 0))); });
}

void CStringArray::RemoveAll() {
    constexpr std::size_t kKept = 1024;  // texts whose storage waits for the next use
    texts_.clear();
    if (texts_.capacity() > kKept) texts_.shrink_to_fit();
}
