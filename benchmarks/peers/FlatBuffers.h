#pragma once

#include <flatbuffers/flatbuffers.h>

#include "peers/PlainPeer.h"

namespace bench {

/// FlatBuffers built from plain structs; decoding verifies the bytes and brings the values into plain structs.
struct FlatBuffersPeer : PlainPeer {
    static constexpr const char* kName = "flatbuffers";
    static constexpr bool kSameBytes = false;

    class Encoder {
    public:
        std::string_view Encode(const Position& message);
        std::string_view Encode(const ComputedPosition& message);
        std::string_view Encode(const MobileTransponder& message);

    private:
        template <class Root>
        std::string_view Finish(Root root);

        flatbuffers::FlatBufferBuilder builder_{EncodingBuffer::kSize};
    };
    static void Decode(const Received& received, Position& message);
    static void Decode(const Received& received, ComputedPosition& message);
    static void Decode(const Received& received, MobileTransponder& message);
};

}  // namespace bench
