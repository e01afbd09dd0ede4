#include "demo/LibraryFailure.h"

#include <surveymsg/outside/Tarvex.h>

#include <cstdint>
#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace demo {
namespace {

const char* TextOf(std::uint32_t reason) {
    switch (reason) {
        case TvxErrorTooLong:
            return ": a key or a body is too long";
        case TvxErrorQueueFull:
            return ": a queue that nobody reads is full";
        case TvxErrorNoMemory:
            return ": memory is at its end";
        case TvxErrorNotConnected:
            return ": the bus cannot be reached";
        default:
            return "";
    }
}

}  // namespace

void FailOnBus(const std::string& what) {
    const std::uint32_t reason = GetLastError();
    char code[32];
    std::snprintf(code, sizeof code, " (error 0x%08lX)", static_cast<unsigned long>(reason));
    throw LibraryFailure(what + TextOf(reason) + code);
}

}  // namespace demo
