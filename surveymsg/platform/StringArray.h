#pragma once

#include <vector>

#include <surveymsg/platform/String.h>

/// A growing list of texts, which it owns.
class SURVEYMSG_API CStringArray {
public:
    CStringArray();
    CStringArray(const CStringArray& other);
    CStringArray& operator=(const CStringArray& other);
    ~CStringArray();

    int GetSize() const { return static_cast<int>(texts_.size()); }
    /// The text at `index`, which must be below the size.
    const CString& GetAt(int index) const { return texts_[static_cast<std::size_t>(index)]; }
    const CString& operator[](int index) const { return GetAt(index); }
    CString& operator[](int index) { return texts_[static_cast<std::size_t>(index)]; }
    int Add(const CString& text);  ///< appends, gives the new text's index
    void Reserve(int count);       ///< room for `count` texts in all
    void RemoveAll();

private:
    std::vector<CString> texts_;
};
