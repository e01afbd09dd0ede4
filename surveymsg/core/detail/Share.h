#pragma once

// A class's share of the stream: its schema byte and its fields, told once for both directions.
//
//     void CAcObsMsg::Serialize(CArchive& ar) {
//         SerializeShare(ar, {"CAcObsMsg", 1}, [this](auto& wire, int) {
//             wire.Doubles(SpeedOfSound, TwoWayMilliseconds);
//             wire.Longs(HoldCount);
//         });
//         CObsMsg::Serialize(ar);
//     }

#include <surveymsg/platform/detail/Wire.h>

namespace surveymsg::detail {

[[noreturn]] void RaiseBadSchema(const char* className);

struct Schema {
    const char* className;
    std::uint8_t newest;  ///< what is written; 1 and all between are read
};

/// Writes the newest schema, or reads the one that is there, and runs `fields(wire, schema)` for it.
/// `prepare` runs on loading, between reading the schema byte and judging it.
template <class Fields, class Prepare>
void SerializeShare(CArchive& ar, Schema known, Fields&& fields, Prepare&& prepare) {
    if (ar.IsStoring()) {
        Writer wire(ar);
        wire.Byte(known.newest);
        fields(wire, known.newest);
    } else {
        Reader wire(ar);
        std::uint8_t schema = 0;
        wire.Byte(schema);
        prepare();
        if (schema < 1 || schema > known.newest) RaiseBadSchema(known.className);
        fields(wire, schema);
    }
}

template <class Fields>
void SerializeShare(CArchive& ar, Schema known, Fields&& fields) {
    SerializeShare(ar, known, fields, [] {});
}

}  // namespace surveymsg::detail
