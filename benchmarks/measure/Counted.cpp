#include "measure/Measure.h"

namespace bench {
namespace {

constexpr std::size_t kWarmUp = 64;

}  // namespace
}  // namespace bench

// Not inlined and not a C++ name, so that a counter finds it.
extern "C" __attribute__((noinline)) void MeasuredLoop(const bench::Loop& loop, std::size_t iterations) {
    loop(iterations);
}

void bench::RunCounted(const Case& counted, std::size_t iterations) {
    const Loop loop = counted.prepare();
    loop(kWarmUp);
    MeasuredLoop(loop, iterations);
}
