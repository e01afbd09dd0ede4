#include "measure/HeapCalls.h"

#include <cerrno>

namespace {

std::size_t calls = 0;  // the operations run in one thread

}  // namespace

std::size_t bench::HeapCalls() { return calls; }

// The program's own functions stand before those of the C library for every library in the process, and count
// before they pass the call on. What they give is freed by the C library itself.
#define BENCH_COUNTED extern "C" __attribute__((visibility("default")))

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

BENCH_COUNTED void* malloc(std::size_t size) {
    ++calls;
    return __libc_malloc(size);
}

BENCH_COUNTED void* calloc(std::size_t count, std::size_t size) {
    ++calls;
    return __libc_calloc(count, size);
}

BENCH_COUNTED void* realloc(void* block, std::size_t size) {
    ++calls;
    return __libc_realloc(block, size);
}

BENCH_COUNTED void* memalign(std::size_t alignment, std::size_t size) {
    ++calls;
    return __libc_memalign(alignment, size);
}

BENCH_COUNTED void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

BENCH_COUNTED int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
