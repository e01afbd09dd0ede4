#pragma once

#include "peers/PlainPeer.h"

namespace bench {

/// Fast-CDR over plain structs.
struct FastCdrPeer : PlainPeer {
    static constexpr const char* kName = "fastcdr";
    static constexpr bool kSameBytes = false;

    class Encoder {
    public:
        std::string_view Encode(const Position& message);
        std::string_view Encode(const ComputedPosition& message);
        std::string_view Encode(const MobileTransponder& message);

    private:
        EncodingBuffer buffer_;
    };
    static void Decode(const Received& received, Position& message);
    static void Decode(const Received& received, ComputedPosition& message);
    static void Decode(const Received& received, MobileTransponder& message);
};

}  // namespace bench
