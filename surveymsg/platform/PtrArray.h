#pragma once

#include <vector>

#include <surveymsg/platform/Export.h>

/// A growing row of pointers, which it does not own. Slots that growing creates are null; an index
/// outside the array reads as null.
class SURVEYMSG_API CPtrArray {
public:
    CPtrArray();
    CPtrArray(const CPtrArray& other);
    CPtrArray& operator=(const CPtrArray& other);
    ~CPtrArray();

    int GetSize() const { return static_cast<int>(slots_.size()); }
    void* GetAt(int index) const { return Holds(index) ? slots_[static_cast<std::size_t>(index)] : nullptr; }
    void* operator[](int index) const { return GetAt(index); }
    /// The slot itself, for assignment; `index` must be below the size.
    void*& operator[](int index) { return slots_[static_cast<std::size_t>(index)]; }
    int Add(void* pointer);                    ///< appends, gives the new slot's index
    void SetAtGrow(int index, void* pointer);  ///< the array grows to hold `index`; a negative one does nothing
    void SetSize(int size);
    void Reserve(int count);  ///< room for `count` slots in all
    void RemoveAll();

private:
    bool Holds(int index) const { return index >= 0 && index < GetSize(); }

    std::vector<void*> slots_;
};
