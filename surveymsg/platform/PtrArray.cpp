#include <surveymsg/platform/PtrArray.h>

#include <algorithm>

#include <surveymsg/platform/detail/Memory.h>

CPtrArray::CPtrArray() = default;
CPtrArray::CPtrArray(const CPtrArray& other) { *this = other; }
CPtrArray& CPtrArray::operator=(const CPtrArray& other) {
    surveymsg::detail::RaisingMemoryException([&] { slots_ = other.slots_; });
    return *this;
}
CPtrArray::~CPtrArray() = default;

int CPtrArray::Add(void* pointer) {
    surveymsg::detail::RaisingMemoryException([&] { slots_.push_back(pointer); });
    return GetSize() - 1;
}

void CPtrArray::SetAtGrow(int index, void* pointer) {
    if (index < 0) return;
    if (index >= GetSize()) SetSize(index + 1);
    slots_[static_cast<std::size_t>(index)] = pointer;
}

void CPtrArray::SetSize(int size) {
    surveymsg::detail::RaisingMemoryException(
        [&] { slots_.resize(static_cast<std::size_t>(std::max(size, 0)), nullptr); });
}

void CPtrArray::Reserve(int count) {
    surveymsg::detail::RaisingMemoryException([&] { slots_.reserve(static_cast<std::size_t>(std::max(count, 0))); });
}

void CPtrArray::RemoveAll() { slots_.clear(); }
