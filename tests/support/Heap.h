#pragma once

// The heap of a test program, counted: what is allocated by operator new, how often, and which allocation is
// refused. Linked into a program, it stands in front of the standard library's for all libraries.

#include <cstddef>

struct Heap {
    std::size_t live = 0;  ///< bytes
    std::size_t peak = 0;  ///< the most that were live at once; a test may set it back
    long allocations = 0;  ///< since the start
    long left = -1;        ///< allocations until one is refused; negative: none is
    bool hasRefused = false;
};

Heap& TheHeap();
