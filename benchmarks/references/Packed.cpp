#include "references/Packed.h"

#include <stdexcept>

namespace bench::packed {

void RaiseFull() { throw std::length_error("the memory is full"); }

void RaiseShort() { throw std::runtime_error("not the bytes of this message"); }

void Writer::LongText(std::string_view text) {
    if (text.size() < kHugeText - 1u) {
        Values(kLongText, static_cast<std::uint16_t>(text.size()));
    } else {
        Values(kLongText, kHugeText, static_cast<std::uint32_t>(text.size()));
    }
    Need(text.size());
    PutBytes(text);
}

std::size_t Reader::LongLength() {
    std::uint16_t word;
    Values(word);
    if (word == kHugeText - 1u) RaiseShort();
    if (word != kHugeText) return word;
    std::uint32_t length;
    Values(length);
    return length;
}

}  // namespace bench::packed
