#pragma once

#include "peers/PlainPeer.h"
#include "references/Hand.h"

namespace bench {

struct HandPeer : PlainPeer {
    static constexpr const char* kName = "hand";
    static constexpr bool kOwnMessages = true;  // its plain structs are what the others are compared with
    static constexpr bool kSameBytes = true;

    class Encoder {
    public:
        template <class Plain>
        std::string_view Encode(const Plain& message) {
            return buffer_.View(hand::Encode(message, buffer_.Data(), shares::kCapacity));
        }

    private:
        EncodingBuffer buffer_;
    };
    template <class Plain>
    static void Decode(const Received& received, Plain& message) {
        hand::Decode(received.View(), message);
    }
    template <class Plain>
    static void Assign(Plain& target, const Plain& source) {
        target = source;
    }
};

}  // namespace bench
