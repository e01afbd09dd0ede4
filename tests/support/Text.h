#pragma once

// Short ways to look at a message through its member protocol.

#include <string>
#include <vector>

#include <surveymsg/surveymsg.h>

inline std::string Text(const CString& text) { return std::string(text.View()); }

inline constexpr const char* kUntouched = "(untouched)";

/// What `FormatString` writes; `kUntouched` if it leaves the text alone, "(0)" if it gives 0.
inline std::string Format(CMsg& message, std::uint16_t id, const char* format = nullptr, std::uint16_t index = 0) {
    CString out(kUntouched);
    return message.FormatString(id, index, format, &out) ? Text(out) : "(0)";
}

inline std::string Identifier(CMsg& message) {
    message.SetInstanceIdentifier();
    return Text(message.InstanceIdentifier);
}

inline std::vector<const MemberDefinition*> Rows(CMsg& message) {
    CPtrArray rows;
    message.GetMemberDefinitions(&rows);
    std::vector<const MemberDefinition*> result;
    for (int i = 0; i < rows.GetSize(); ++i) result.push_back(static_cast<const MemberDefinition*>(rows[i]));
    return result;
}

/// The raw bytes that `MemberCopy` writes into a buffer of `room` bytes of 0xEE.
inline std::string Copied(CMsg& message, std::uint16_t id, std::uint16_t index = 0, std::size_t room = 256) {
    std::string buffer(room, '\xEE');
    if (!message.MemberCopy(id, index, buffer.data())) return "(0)";
    return buffer;
}
