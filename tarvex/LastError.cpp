#include "tarvex/LastError.h"

namespace {

thread_local std::uint32_t lastError = 0;

}  // namespace

std::uint32_t GetLastError() { return lastError; }

void SetLastError(std::uint32_t value) { lastError = value; }
