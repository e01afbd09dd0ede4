#pragma once

#include "peers/PlainPeer.h"
#include "references/Floor.h"

namespace bench {

/// Which message of the floor carries a plain struct.
template <class Plain>
struct FloorMessageOf;
template <>
struct FloorMessageOf<Position> {
    using Type = floor_::PositionMessage;
};
template <>
struct FloorMessageOf<ComputedPosition> {
    using Type = floor_::ComputedPositionMessage;
};
template <>
struct FloorMessageOf<MobileTransponder> {
    using Type = floor_::MobileTransponderMessage;
};

struct FloorPeer {
    static constexpr const char* kName = "floor";
    static constexpr bool kOwnMessages = true;
    static constexpr bool kSameBytes = true;

    template <class Plain>
    using Message = typename FloorMessageOf<Plain>::Type;
    using Received = ReceivedBytes;

    struct Encoder {
        static std::string_view Encode(floor_::Message& message) {
            message.Encode();
            return message.body;
        }
    };
    static void Decode(const Received& received, floor_::Message& message) { message.Decode(received.View()); }
    static void Assign(floor_::Message& target, floor_::Message& source) { target = source; }

    static void Fill(const Position& plain, floor_::PositionMessage& message);
    static void Fill(const AcousticObservation& plain, floor_::ObservationMessage& message);
    static void Fill(const ComputedPosition& plain, floor_::ComputedPositionMessage& message);
    static void Fill(const MobileTransponder& plain, floor_::MobileTransponderMessage& message);
    static void Read(const floor_::PositionMessage& message, Position& plain);
    static void Read(const floor_::ComputedPositionMessage& message, ComputedPosition& plain);
    static void Read(const floor_::MobileTransponderMessage& message, MobileTransponder& plain);
};

}  // namespace bench
