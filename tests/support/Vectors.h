#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <surveymsg/surveymsg.h>

/// One file of `tests/vectors`: a stream by the byte, and what a message holds that was loaded from it.
struct Vector {
    struct MemberText {
        std::uint16_t id;
        std::uint16_t index;
        std::string text;
    };
    std::string name;
    std::string className;
    bool newest = false;  // what storing the message gives again
    std::string bytes;
    std::vector<MemberText> members;
    std::string identifier;
    std::string oldIdentifier;
};

inline void PrintTo(const Vector& vector, std::ostream* out) { *out << vector.name; }

/// All of them, by name.
const std::vector<Vector>& AllVectors();

std::unique_ptr<CMsg> MakeByClass(const std::string& className);

CString ToBody(const std::string& bytes);
