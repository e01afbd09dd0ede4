#pragma once

#include <new>

#include <surveymsg/platform/Exceptions.h>

namespace surveymsg::detail {

/// Runs `work`; whatever runs out of memory in it, the caller sees the platform's failure.
template <class Work>
auto RaisingMemoryException(Work&& work) {
    try {
        return work();
    } catch (const CMemoryException&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw CMemoryException();
    }
}

/// Runs a member operation, which never raises anything: 0 if memory ends.
template <class Work>
int ZeroWithoutMemory(Work&& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

}  // namespace surveymsg::detail
