#pragma once

// Text forms of single values. A format comes from a tool's user and is not trusted: it is taken apart
// here and never reaches printf as it stands. What does not fit the value is replaced by the default.
// `out` may be the text that `format` or the value was taken from.

#include <cstdint>
#include <string_view>

#include <surveymsg/platform/String.h>

namespace surveymsg::detail {

/// Number rule: a printf template with one number conversion; default "%f" or "%d". Width and precision
/// have at most three digits, and the value is converted to what the conversion wants.
void FormatNumber(CString& out, const char* format, double value);
void FormatNumber(CString& out, const char* format, std::int32_t value);
/// "%d" shows the bits as a signed number; "%u", "%x" and the conversions of doubles the value itself.
void FormatNumber(CString& out, const char* format, std::uint32_t value);

/// Text rule: a printf template with one "%s"; default "%s". The text counts up to its first zero byte.
void FormatText(CString& out, const char* format, std::string_view text);

/// Angle rule: a degree format if there is a degree token in it, else the number rule.
void FormatAngle(CString& out, const char* format, double value);
bool HoldsDegreeToken(const char* format);
void FormatDegreeText(CString& out, const char* format, double value);

/// strftime in UTC of seconds since 1980-01-06, whole seconds, at most 79 characters. False with an
/// empty `out` if nothing comes out, or the time is outside 1970 to 2038.
bool FormatCalendar(CString& out, const char* format, double time);

/// `value` truncated toward zero; 0 if it is no number or beyond 64 bits.
std::int64_t ToInteger(double value);

}  // namespace surveymsg::detail
