#pragma once

// A printf template taken apart, and the rendering of one conversion.

#include <cstdint>
#include <string>
#include <string_view>

#include <surveymsg/platform/String.h>

namespace surveymsg::detail {

/// A text under construction: short ones need no heap.
class TextBuffer {
public:
    void Append(std::string_view text) {
        if (spilled_.empty() && text.size() <= sizeof short_ - length_) {
            text.copy(short_ + length_, text.size());
            length_ += text.size();
        } else {
            Spill(text);
        }
    }
    void Append(std::size_t count, char character);
    std::string_view View() const { return spilled_.empty() ? std::string_view(short_, length_) : spilled_; }
    /// `out` takes the text up to its first zero byte.
    void MoveTo(CString& out) const;

private:
    void Spill(std::string_view text);

    char short_[400];
    std::size_t length_ = 0;
    std::string spilled_;
};

/// One printf conversion, without its length modifier: the value's type is known.
struct Conversion {
    bool leftAligned = false;
    bool zeroFilled = false;
    bool alternate = false;
    char sign = '\0';  // '+' or ' ' in front of what is not negative
    int width = 0;
    int precision = -1;  // -1: not given
    char type = '\0';    // '\0': the template has no conversion

    bool IsFloat() const {
        switch (type) {
            case 'f':
            case 'F':
            case 'e':
            case 'E':
            case 'g':
            case 'G':
            case 'a':
            case 'A':
                return true;
            default:
                return false;
        }
    }
    bool IsInteger() const {
        switch (type) {
            case 'd':
            case 'i':
            case 'u':
            case 'x':
            case 'X':
            case 'o':
            case 'c':
                return true;
            default:
                return false;
        }
    }
    bool IsNumber() const { return IsFloat() || IsInteger(); }
};

/// Reads a conversion at `text`, which points behind its '%'; gives the place behind it, or null if it is
/// none: unended, a star, more than three digits, an unknown type.
const char* ParseConversion(const char* text, Conversion& conversion);

/// A template split at its one conversion.
struct Template {
    std::string_view head;
    Conversion conversion;
    std::string_view tail;
};

/// False if there is more than one conversion or one that cannot be read.
bool ParseTemplate(const char* format, Template& parsed);

void AppendLiteral(TextBuffer& out, std::string_view literal);  ///< "%%" gives "%"
void AppendNumber(TextBuffer& out, const Conversion& conversion, double value);
/// The same; gives the number that was printed, rounded as it reads.
double AppendRounded(TextBuffer& out, const Conversion& conversion, double value);
void AppendInteger(TextBuffer& out, const Conversion& conversion, std::int64_t value, bool is32Bits);
void AppendText(TextBuffer& out, const Conversion& conversion, std::string_view text);

}  // namespace surveymsg::detail
