#pragma once

#include <cstdint>

/// One row of a class's member table. `CMsg::GetMemberDefinitions` lists pointers to such rows.
struct MemberDefinition {
    std::uint16_t Id;     ///< the number that the member operations take; never 0
    std::uint16_t Width;  ///< the most bytes that `MemberCopy` writes: 1, 2, 4, 8, 12, or 256 for a text
    const char* Label;    ///< name for people; "[]" in it marks one value for each element of a list
};
