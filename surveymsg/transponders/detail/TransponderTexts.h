#pragma once

#include <surveymsg/platform/String.h>
#include <surveymsg/transponders/TransMsg.h>

// The text forms that a transponder's type decides. They serve the transponder itself and the records of
// a mobile one's list.
namespace surveymsg::detail {

/// False, with "n/a" in `out`, unless interrogation applies to the type.
bool IsInterrogated(std::int32_t type, CString& out);
/// The modes that are set, joined by "/".
void ModeText(const InterrogationModes& modes, CString& out);
/// A count of turn-around, by the number rule on what it stands for.
void TurnAroundText(std::int32_t count, const char* format, CString& out);
/// Left alone for a type, or a method under it, that has no text.
void TypeText(std::int32_t type, CString& out);
void MethodText(std::int32_t type, std::int32_t method, CString& out);

/// The seven integers that travel together.
template <class Wire>
void InterrogationFields(Wire& wire, CTransMsg& m) {
    wire.Longs(m.IRF, m.TurnAround, m.InterrogationMode.CIF, m.InterrogationMode.IIF, m.InterrogationMode.USBL, m.Type,
               m.PositioningMethod);
}

}  // namespace surveymsg::detail
