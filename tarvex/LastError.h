#pragma once

#include "surveymsg/outside/Tarvex.h"

namespace tarvex {

/// Notes why a call fails and gives its result, 0.
inline int Fail(TvxError reason) {
    SetLastError(reason);
    return 0;
}

}  // namespace tarvex
