#include "peers/FlatBuffers.h"

#include <stdexcept>

#include <messages_generated.h>

using flatbuffers::FlatBufferBuilder;
using flatbuffers::Offset;

namespace bench {
namespace {

Offset<flat::Position> Build(FlatBufferBuilder& builder, const Position& p) {
    const auto namePrefix = builder.CreateString(p.namePrefix);
    const auto oldNamePrefix = builder.CreateString(p.oldNamePrefix);
    const auto oldName = builder.CreateString(p.oldName);
    const auto name = builder.CreateString(p.name);
    return flat::CreatePosition(builder, p.time, namePrefix, oldNamePrefix, p.latitude, p.longitude, oldName, name,
                                p.type, p.east, p.north, p.depth, p.pitch, p.roll, p.trueHeading, p.gridHeading,
                                p.convergence);
}

Offset<flat::AcousticObservation> Build(FlatBufferBuilder& builder, const AcousticObservation& o) {
    const auto oldFromName = builder.CreateString(o.oldFromName);
    const auto oldToName = builder.CreateString(o.oldToName);
    const auto fromName = builder.CreateString(o.fromName);
    const auto toName = builder.CreateString(o.toName);
    return flat::CreateAcousticObservation(builder, o.time, o.speedOfSound, o.twoWayMilliseconds, o.holdCount,
                                           o.correction, oldFromName, oldToName, o.type, o.value, o.statusBits,
                                           o.timeOut, fromName, toName, o.weight, o.scaleFactor, o.residual);
}

flat::Sensors Build(const Sensors& s) {
    return {s.depth, s.pitch, s.roll, s.temperature, s.depthCo, s.pitchCo, s.rollCo, s.temperatureCo};
}

Offset<flat::TransponderRange> Build(FlatBufferBuilder& builder, const TransponderRange& r) {
    const auto name = builder.CreateString(r.name);
    const flat::Sensors sensors = Build(r.sensors);
    return flat::CreateTransponderRange(builder, name, r.address, r.range, r.twoWayMs, r.speedOfSound, r.holds,
                                        &sensors);
}

template <class Root>
const Root& Verified(std::string_view bytes) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    flatbuffers::Verifier verifier(data, bytes.size());
    if (!verifier.VerifyBuffer<Root>(nullptr)) throw std::runtime_error("not the bytes of this message");
    return *flatbuffers::GetRoot<Root>(data);
}

void Take(const flatbuffers::String* text, std::string& plain) {
    if (text)
        plain.assign(text->c_str(), text->size());
    else
        plain.clear();
}

void Take(const flat::Sensors* s, Sensors& plain) {
    if (!s) throw std::runtime_error("a part is missing");
    plain = {s->depth(),    s->pitch(),    s->roll(),    s->temperature(),
             s->depth_co(), s->pitch_co(), s->roll_co(), s->temperature_co()};
}

void Take(const flat::Position& m, Position& plain) {
    plain.time = m.time();
    Take(m.name_prefix(), plain.namePrefix);
    Take(m.old_name_prefix(), plain.oldNamePrefix);
    plain.latitude = m.latitude();
    plain.longitude = m.longitude();
    Take(m.old_name(), plain.oldName);
    Take(m.name(), plain.name);
    plain.type = m.type();
    plain.east = m.east();
    plain.north = m.north();
    plain.depth = m.depth();
    plain.pitch = m.pitch();
    plain.roll = m.roll();
    plain.trueHeading = m.true_heading();
    plain.gridHeading = m.grid_heading();
    plain.convergence = m.convergence();
}

void Take(const flat::AcousticObservation& m, AcousticObservation& plain) {
    plain.time = m.time();
    plain.speedOfSound = m.speed_of_sound();
    plain.twoWayMilliseconds = m.two_way_milliseconds();
    plain.holdCount = m.hold_count();
    plain.correction = m.correction();
    Take(m.old_from_name(), plain.oldFromName);
    Take(m.old_to_name(), plain.oldToName);
    plain.type = m.type();
    plain.value = m.value();
    plain.statusBits = m.status_bits();
    plain.timeOut = m.time_out();
    Take(m.from_name(), plain.fromName);
    Take(m.to_name(), plain.toName);
    plain.weight = m.weight();
    plain.scaleFactor = m.scale_factor();
    plain.residual = m.residual();
}

}  // namespace

template <class Root>
std::string_view FlatBuffersPeer::Encoder::Finish(Root root) {
    builder_.Finish(root);
    return {reinterpret_cast<const char*>(builder_.GetBufferPointer()), builder_.GetSize()};
}

std::string_view FlatBuffersPeer::Encoder::Encode(const Position& message) {
    builder_.Clear();
    return Finish(Build(builder_, message));
}

std::string_view FlatBuffersPeer::Encoder::Encode(const ComputedPosition& message) {
    builder_.Clear();
    const auto position = Build(builder_, message.position);
    const auto observations = builder_.CreateVector<Offset<flat::AcousticObservation>>(
        message.observations.size(), [&](std::size_t i) { return Build(builder_, message.observations[i]); });
    return Finish(flat::CreateComputedPosition(builder_, message.standardDeviation, position, observations));
}

std::string_view FlatBuffersPeer::Encoder::Encode(const MobileTransponder& message) {
    builder_.Clear();
    const Interrogation& i = message.interrogation;
    const flat::Interrogation interrogation(i.irf, i.turnAround, i.cif, i.iif, i.usbl, i.type, i.positioningMethod);
    const flat::Sensors sensors = Build(message.sensors);
    const auto ranges = builder_.CreateVector<Offset<flat::TransponderRange>>(
        message.ranges.size(), [&](std::size_t each) { return Build(builder_, message.ranges[each]); });
    const auto name = builder_.CreateString(message.name);
    const auto oldName = builder_.CreateString(message.oldName);
    return Finish(flat::CreateMobileTransponder(builder_, message.time, &interrogation, ranges, name, oldName,
                                                message.address, &sensors));
}

void FlatBuffersPeer::Decode(const Received& received, Position& message) {
    Take(Verified<flat::Position>(received.View()), message);
}

void FlatBuffersPeer::Decode(const Received& received, ComputedPosition& message) {
    const auto& root = Verified<flat::ComputedPosition>(received.View());
    if (!root.position() || !root.observations()) throw std::runtime_error("a part is missing");
    message.standardDeviation = root.standard_deviation();
    Take(*root.position(), message.position);
    message.observations.resize(root.observations()->size());
    for (std::size_t i = 0; i < message.observations.size(); ++i)
        Take(*root.observations()->Get(static_cast<flatbuffers::uoffset_t>(i)), message.observations[i]);
}

void FlatBuffersPeer::Decode(const Received& received, MobileTransponder& message) {
    const auto& root = Verified<flat::MobileTransponder>(received.View());
    if (!root.interrogation() || !root.ranges()) throw std::runtime_error("a part is missing");
    const flat::Interrogation& i = *root.interrogation();
    message.time = root.time();
    message.interrogation = {i.irf(), i.turn_around(), i.cif(), i.iif(), i.usbl(), i.type(), i.positioning_method()};
    message.ranges.resize(root.ranges()->size());
    for (std::size_t each = 0; each < message.ranges.size(); ++each) {
        const flat::TransponderRange& m = *root.ranges()->Get(static_cast<flatbuffers::uoffset_t>(each));
        TransponderRange& range = message.ranges[each];
        Take(m.name(), range.name);
        range.address = m.address();
        range.range = m.range();
        range.twoWayMs = m.two_way_ms();
        range.speedOfSound = m.speed_of_sound();
        range.holds = m.holds();
        Take(m.sensors(), range.sensors);
    }
    Take(root.name(), message.name);
    Take(root.old_name(), message.oldName);
    message.address = root.address();
    Take(root.sensors(), message.sensors);
}

}  // namespace bench
