#include "peers/Floor.h"

namespace bench {

void FloorPeer::Fill(const Position& plain, floor_::PositionMessage& message) {
    message.fields = plain;
    message.time = plain.time;
}

void FloorPeer::Fill(const AcousticObservation& plain, floor_::ObservationMessage& message) {
    message.fields = plain;
    message.time = plain.time;
}

void FloorPeer::Fill(const ComputedPosition& plain, floor_::ComputedPositionMessage& message) {
    Fill(plain.position, message);
    message.standardDeviation = plain.standardDeviation;
    for (const AcousticObservation& observation : plain.observations) {
        floor_::ObservationMessage added;
        Fill(observation, added);
        message.AddDependency(added);
    }
}

void FloorPeer::Fill(const MobileTransponder& plain, floor_::MobileTransponderMessage& message) {
    message.fields = plain;
    message.fields.ranges.clear();
    message.time = plain.time;
    for (const TransponderRange& range : plain.ranges)
        message.ranges.emplace_back(std::make_unique<floor_::MobileTransponderMessage::Range>())->fields = range;
}

void FloorPeer::Read(const floor_::PositionMessage& message, Position& plain) {
    plain = message.fields;
    plain.time = message.time;
}

void FloorPeer::Read(const floor_::ComputedPositionMessage& message, ComputedPosition& plain) {
    Read(message, plain.position);
    plain.standardDeviation = message.standardDeviation;
    plain.observations.clear();
    for (std::size_t i = 0; i < message.nested.Count(); ++i) {
        const auto* nested = static_cast<const floor_::ObservationMessage*>(message.nested.At(i));
        plain.observations.push_back(nested->fields);
        plain.observations.back().time = nested->time;
    }
}

void FloorPeer::Read(const floor_::MobileTransponderMessage& message, MobileTransponder& plain) {
    plain = message.fields;
    plain.time = message.time;
    for (const auto& range : message.ranges) plain.ranges.push_back(range->fields);
}

}  // namespace bench
