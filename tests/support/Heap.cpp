#include "support/Heap.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

Heap& TheHeap() {
    static constinit Heap heap;
    return heap;
}

namespace {

[[gnu::noinline]] void* Allocate(std::size_t size) {
    Heap& heap = TheHeap();
    if (heap.left >= 0 && heap.left-- == 0) {
        heap.hasRefused = true;
        return nullptr;
    }
    void* block = std::malloc(size ? size : 1);
    if (!block) return nullptr;
    ++heap.allocations;
    heap.peak = std::max(heap.peak, heap.live += malloc_usable_size(block));
    return block;
}

[[gnu::noinline]] void Release(void* block) {
    if (block) TheHeap().live -= malloc_usable_size(block);
    std::free(block);
}

}  // namespace

#define VISIBLE __attribute__((visibility("default"), noinline))

VISIBLE void* operator new(std::size_t size) {
    void* block = Allocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}
VISIBLE void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
VISIBLE void* operator new[](std::size_t size) { return operator new(size); }
VISIBLE void operator delete(void* block) noexcept { Release(block); }
VISIBLE void operator delete(void* block, std::size_t) noexcept { Release(block); }
VISIBLE void operator delete[](void* block) noexcept { Release(block); }
VISIBLE void operator delete[](void* block, std::size_t) noexcept { Release(block); }
