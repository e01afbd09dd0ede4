#pragma once

#include <array>
#include <string>
#include <string_view>

#include "tarvex/nats/Subjects.h"

namespace tarvex {

/// The keys behind the subjects that came of late: messages come again and again under the same ones.
class Senders {
public:
    explicit Senders(const Subjects& subjects) : subjects_(subjects) {}

    struct Known {
        Address address;
        std::string sender;   ///< `Subjects::SenderOf`
        std::string subject;  ///< empty for none
        std::string text;     ///< what the address points into
    };
    /// The keys of a message, valid until the next call; null if it is none of the bus's. `keys` is its header,
    /// or null.
    const Known* Find(std::string_view subject, const char* keys);

private:
    const Subjects& subjects_;
    std::array<Known, 64> known_;
    Known* latest_ = known_.data();
};

}  // namespace tarvex
