#pragma once

#include <cstddef>

namespace bench {

/// Calls of malloc, calloc, realloc and their aligned kin in the whole process since its start; `new` comes down
/// to them.
std::size_t HeapCalls();

}  // namespace bench
