#pragma once

#include <string_view>

#include <surveymsg/core/Msg.h>

namespace surveymsg::detail {

/// The assignment of a class: through the encoding, then field by field, which also takes what does not
/// travel. `owns` says that `target` owns `source`, which then has to be read before anything is released.
template <class Message, class TakeFields>
Message& AssignMessage(Message& target, Message& source, bool owns, TakeFields&& takeFields) {
    if (owns) {
        Message kept;
        kept = source;
        return target = kept;
    }
    static_cast<CMsg&>(target) = source;
    takeFields();
    return target;
}

inline std::string_view PartOf(const CString& text) { return text.View(); }
inline std::string_view PartOf(std::string_view text) { return text; }

/// `out` becomes the parts one behind the other; none of them may lie in `out`.
template <class... Parts>
void Join(CString& out, const Parts&... parts) {
    char* place = out.SetBuffer(static_cast<int>((PartOf(parts).size() + ...)));
    ((place += PartOf(parts).copy(place, PartOf(parts).size())), ...);
}

/// What `GetInstanceIdentifier` does in a class that has an identifier: build it if need be, hand it out.
inline int BuildIdentifier(CMsg& message, CString* out) {
    if (!out) return 0;
    if (message.InstanceIdentifier.IsEmpty()) message.SetInstanceIdentifier();
    *out = message.InstanceIdentifier;
    return 1;
}

/// What `GetVersion` does in every class with a fixed layout.
inline int GiveVersion(CString* out) {
    if (!out) return 0;
    *out = "1.0.0.0";
    return 1;
}

}  // namespace surveymsg::detail

/// The member operations of a class: each asks the class's table, which goes on to its base's.
#define SURVEYMSG_MEMBERS_BY_TABLE(Class, table)                                                       \
    int Class::GetMemberDefinitions(CPtrArray* rows) { return table.List(rows); }                      \
    int Class::FormatString(std::uint16_t id, std::uint16_t index, const char* format, CString* out) { \
        return table.Format(*this, id, index, format, out);                                            \
    }                                                                                                  \
    int Class::MemberCopy(std::uint16_t id, std::uint16_t index, void* out) {                          \
        return table.Copy(*this, id, index, out);                                                      \
    }                                                                                                  \
    int Class::GetMemberValue(std::uint16_t id, std::uint16_t index, double* out) {                    \
        return table.Get(*this, id, index, out);                                                       \
    }                                                                                                  \
    int Class::SetMemberValue(std::uint16_t id, std::uint16_t index, double value) {                   \
        return table.Set(*this, id, index, value);                                                     \
    }
