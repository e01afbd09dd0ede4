#pragma once

#include <string_view>

#include <surveymsg/surveymsg.h>

#include "values/Messages.h"

namespace bench {

/// Which message of the library carries a plain struct.
template <class Plain>
struct SurveymsgMessageOf;
template <>
struct SurveymsgMessageOf<Position> {
    using Type = CPosnMsg;
};
template <>
struct SurveymsgMessageOf<ComputedPosition> {
    using Type = CCompPosnMsg;
};
template <>
struct SurveymsgMessageOf<MobileTransponder> {
    using Type = CMobTransMsg;
};

/// The library itself.
struct SurveymsgPeer {
    static constexpr const char* kName = "surveymsg";
    static constexpr bool kOwnMessages = true;
    static constexpr bool kSameBytes = true;

    template <class Plain>
    using Message = typename SurveymsgMessageOf<Plain>::Type;

    /// What a receive fills: a base message that holds the bytes.
    struct Received {
        explicit Received(std::string_view bytes) { message.Body.Assign(bytes.data(), static_cast<int>(bytes.size())); }
        CMsg message;
    };
    struct Encoder {
        static std::string_view Encode(CMsg& message) {
            message.Encode();
            return message.Body.View();
        }
    };
    static void Decode(Received& received, CMsg& message) { message.Decode(&received.message); }
    template <class Message>
    static void Assign(Message& target, Message& source) {
        target = source;
    }

    static void Fill(const Position& plain, CPosnMsg& message);
    static void Fill(const AcousticObservation& plain, CAcObsMsg& message);
    static void Fill(const ComputedPosition& plain, CCompPosnMsg& message);
    static void Fill(const MobileTransponder& plain, CMobTransMsg& message);
    static void Read(CPosnMsg& message, Position& plain);
    static void Read(CCompPosnMsg& message, ComputedPosition& plain);
    static void Read(CMobTransMsg& message, MobileTransponder& plain);
};

}  // namespace bench
