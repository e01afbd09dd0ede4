// Key texts: parsed or refused, and what was parsed comes back as it was.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include <surveymsg/outside/Tarvex.h>
#include <surveymsg/surveymsg.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    char buffer[64];
    std::uint32_t needed = 0;
    TvxQueryFormat(4, text.c_str(), static_cast<std::uint32_t>(size), buffer, sizeof buffer, &needed);
    CMsg first, second;
    if (!first.ExtractKeys(text.c_str())) return 0;
    CString again;
    first.CombineKeys(&again);
    if (again.IsEmpty()) return 0;  // more than a message takes
    if (!second.ExtractKeys(static_cast<const char*>(again)) || !(first == second)) std::abort();
    return 0;
}
