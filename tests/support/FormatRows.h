#pragma once

#include <surveymsg/outside/FormatRecords.h>

// Rows of a table for the record format library.

inline msguser Field(int storage, const char* name, int count = 0, int size = 0, int display = 0) {
    return {static_cast<std::uint8_t>(storage),
            static_cast<std::uint8_t>(display),
            static_cast<std::uint16_t>(count),
            name,
            0,
            static_cast<std::uint16_t>(size),
            0};
}

inline constexpr msguser kClose = {MsgStorageClose, 0, 0, nullptr, 0, 0, 0};
