#include <surveymsg/core/detail/Clock.h>

#include <dlfcn.h>

#include <chrono>

namespace surveymsg::detail {
namespace {

using TimeService = double (*)();

// The service is optional: it is looked for once and kept for the life of the process.
TimeService BindTimeService() {
    void* library = dlopen("libTime.so", RTLD_NOW | RTLD_LOCAL);
    return library ? reinterpret_cast<TimeService>(dlsym(library, "timeGetSeconds")) : nullptr;
}

// The load that the thread is in, if any, and the time that its objects are made with.
thread_local bool isLoading = false;
thread_local double loadTime = 0.0;  // 0: not read yet

}  // namespace

LoadScope::LoadScope() : outer_(isLoading) {
    if (!outer_) loadTime = 0.0;
    isLoading = true;
}

LoadScope::~LoadScope() { isLoading = outer_; }

double ConstructionTime() {
    if (!isLoading) return Now();
    if (loadTime == 0.0) loadTime = Now();
    return loadTime;
}

double Now() {
    static const TimeService service = BindTimeService();
    if (service) return service();
    const auto sinceUnix = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(sinceUnix).count();
    const auto seconds = milliseconds / 1000;
    return static_cast<double>(seconds) + static_cast<double>(milliseconds % 1000) * 0.001 - kUnixEpochOffset;
}

}  // namespace surveymsg::detail
