#include "peers/FastCdr.h"

#include <fastcdr/Cdr.h>

using eprosima::fastcdr::Cdr;
using eprosima::fastcdr::FastBuffer;

namespace bench {
namespace {

// The fields of a struct for both directions, as the generated code of a data distribution service lists them.
template <class Archive, class... Fields>
void All(Archive&& one, Fields&... fields) {
    (one(fields), ...);
}

template <class One, class P>
void FieldsOfPosition(One& one, P& p) {
    All(one, p.time, p.namePrefix, p.oldNamePrefix, p.latitude, p.longitude, p.oldName, p.name, p.type, p.east, p.north,
        p.depth, p.pitch, p.roll, p.trueHeading, p.gridHeading, p.convergence);
}

template <class One, class O>
void FieldsOfObservation(One& one, O& o) {
    All(one, o.time, o.speedOfSound, o.twoWayMilliseconds, o.holdCount, o.correction, o.oldFromName, o.oldToName,
        o.type, o.value, o.statusBits, o.timeOut, o.fromName, o.toName, o.weight, o.scaleFactor, o.residual);
}

template <class One, class S>
void FieldsOfSensors(One& one, S& s) {
    All(one, s.depth, s.pitch, s.roll, s.temperature, s.depthCo, s.pitchCo, s.rollCo, s.temperatureCo);
}

template <class One, class I>
void FieldsOfInterrogation(One& one, I& i) {
    All(one, i.irf, i.turnAround, i.cif, i.iif, i.usbl, i.type, i.positioningMethod);
}

template <class One, class R>
void FieldsOfRange(One& one, R& r) {
    All(one, r.name, r.address, r.range, r.twoWayMs, r.speedOfSound, r.holds);
    FieldsOfSensors(one, r.sensors);
}

template <class One, class M>
void FieldsOfMobile(One& one, M& m) {
    All(one, m.time);
    FieldsOfInterrogation(one, m.interrogation);
    All(one, m.name, m.oldName, m.address);
    FieldsOfSensors(one, m.sensors);
}

auto Storing(Cdr& cdr) {
    return [&cdr](const auto& field) { cdr << field; };
}

auto Loading(Cdr& cdr) {
    return [&cdr](auto& field) { cdr >> field; };
}

template <class Element>
void LoadCount(Cdr& cdr, std::vector<Element>& elements, std::size_t most) {
    std::uint32_t count = 0;
    cdr >> count;
    elements.resize(std::min<std::size_t>(count, most));
}

template <class Store>
std::string_view Stored(EncodingBuffer& buffer, Store&& store) {
    FastBuffer fast(buffer.Chars(), EncodingBuffer::kSize);
    Cdr cdr(fast);
    store(cdr);
    return buffer.View(cdr.getSerializedDataLength());
}

template <class Load>
void Loaded(std::string_view bytes, Load&& load) {
    FastBuffer fast(const_cast<char*>(bytes.data()), bytes.size());
    Cdr cdr(fast);
    load(cdr);
}

}  // namespace

std::string_view FastCdrPeer::Encoder::Encode(const Position& message) {
    return Stored(buffer_, [&](Cdr& cdr) {
        auto one = Storing(cdr);
        FieldsOfPosition(one, message);
    });
}

std::string_view FastCdrPeer::Encoder::Encode(const ComputedPosition& message) {
    return Stored(buffer_, [&](Cdr& cdr) {
        auto one = Storing(cdr);
        one(message.standardDeviation);
        FieldsOfPosition(one, message.position);
        one(static_cast<std::uint32_t>(message.observations.size()));
        for (const AcousticObservation& observation : message.observations) FieldsOfObservation(one, observation);
    });
}

std::string_view FastCdrPeer::Encoder::Encode(const MobileTransponder& message) {
    return Stored(buffer_, [&](Cdr& cdr) {
        auto one = Storing(cdr);
        FieldsOfMobile(one, message);
        one(static_cast<std::uint32_t>(message.ranges.size()));
        for (const TransponderRange& range : message.ranges) FieldsOfRange(one, range);
    });
}

void FastCdrPeer::Decode(const Received& received, Position& message) {
    Loaded(received.View(), [&](Cdr& cdr) {
        auto one = Loading(cdr);
        FieldsOfPosition(one, message);
    });
}

void FastCdrPeer::Decode(const Received& received, ComputedPosition& message) {
    Loaded(received.View(), [&](Cdr& cdr) {
        auto one = Loading(cdr);
        one(message.standardDeviation);
        FieldsOfPosition(one, message.position);
        LoadCount(cdr, message.observations, received.View().size());
        for (AcousticObservation& observation : message.observations) FieldsOfObservation(one, observation);
    });
}

void FastCdrPeer::Decode(const Received& received, MobileTransponder& message) {
    Loaded(received.View(), [&](Cdr& cdr) {
        auto one = Loading(cdr);
        FieldsOfMobile(one, message);
        LoadCount(cdr, message.ranges, received.View().size());
        for (TransponderRange& range : message.ranges) FieldsOfRange(one, range);
    });
}

}  // namespace bench
