#pragma once

#include <cstdint>
#include <string>

#include "surveymsg/outside/Tarvex.h"

namespace bus {

// The bus's calls in the short form that most tests want: the empty identifier, any sender.

inline int Send(const std::string& key, const std::string& body) {
    return TvxSend(key.c_str(), "", body.data(), static_cast<std::uint32_t>(body.size()));
}

inline int Subscribe(const std::string& key) { return TvxSubscribe("*", "*", 0, key.c_str(), "*", 0, 0); }

/// The body of the next message; "nothing" if there is none in time, or if the bus has to tell something else.
inline std::string Read(std::uint32_t wait = 5000) {
    char texts[4][1001];
    static char body[1310720];
    std::uint32_t number = 0, length = 0;
    TvxWait(wait);
    const int result = TvxRead(texts[0], 1001, texts[1], 1001, &number, texts[2], 1001, texts[3], 1001, nullptr, body,
                               sizeof body, &length);
    return result ? std::string(body, length) : "nothing";
}

inline bool FailedWith(int result, TvxError reason) { return result == 0 && GetLastError() == reason; }

}  // namespace bus
