#pragma once

#include "peers/PlainPeer.h"

namespace bench {

/// Cap'n Proto built from plain structs; decoding brings the values into plain structs.
struct CapnProtoPeer : PlainPeer {
    static constexpr const char* kName = "capnproto";
    static constexpr bool kSameBytes = false;

    class Encoder {
    public:
        std::string_view Encode(const Position& message);
        std::string_view Encode(const ComputedPosition& message);
        std::string_view Encode(const MobileTransponder& message);

    private:
        EncodingBuffer segment_;  // all zero between two messages
        EncodingBuffer bytes_;
    };
    static void Decode(const Received& received, Position& message);
    static void Decode(const Received& received, ComputedPosition& message);
    static void Decode(const Received& received, MobileTransponder& message);
};

}  // namespace bench
