#include "peers/Protobuf.h"

namespace bench {
namespace {

template <class Message>
void PutSensors(const Sensors& sensors, Message& message) {
    message.set_depth(sensors.depth);
    message.set_pitch(sensors.pitch);
    message.set_roll(sensors.roll);
    message.set_temperature(sensors.temperature);
    message.set_depth_co(sensors.depthCo);
    message.set_pitch_co(sensors.pitchCo);
    message.set_roll_co(sensors.rollCo);
    message.set_temperature_co(sensors.temperatureCo);
}

template <class Message>
Sensors SensorsOf(const Message& message) {
    return {message.depth(),    message.pitch(),    message.roll(),    message.temperature(),
            message.depth_co(), message.pitch_co(), message.roll_co(), message.temperature_co()};
}

}  // namespace

void ProtobufPeer::Fill(const Position& plain, proto::Position& message) {
    message.set_time(plain.time);
    message.set_name_prefix(plain.namePrefix);
    message.set_old_name_prefix(plain.oldNamePrefix);
    message.set_latitude(plain.latitude);
    message.set_longitude(plain.longitude);
    message.set_old_name(plain.oldName);
    message.set_name(plain.name);
    message.set_type(plain.type);
    message.set_east(plain.east);
    message.set_north(plain.north);
    message.set_depth(plain.depth);
    message.set_pitch(plain.pitch);
    message.set_roll(plain.roll);
    message.set_true_heading(plain.trueHeading);
    message.set_grid_heading(plain.gridHeading);
    message.set_convergence(plain.convergence);
}

void ProtobufPeer::Read(const proto::Position& message, Position& plain) {
    plain.time = message.time();
    plain.namePrefix = message.name_prefix();
    plain.oldNamePrefix = message.old_name_prefix();
    plain.latitude = message.latitude();
    plain.longitude = message.longitude();
    plain.oldName = message.old_name();
    plain.name = message.name();
    plain.type = static_cast<std::uint16_t>(message.type());
    plain.east = message.east();
    plain.north = message.north();
    plain.depth = message.depth();
    plain.pitch = message.pitch();
    plain.roll = message.roll();
    plain.trueHeading = message.true_heading();
    plain.gridHeading = message.grid_heading();
    plain.convergence = message.convergence();
}

void ProtobufPeer::Fill(const AcousticObservation& plain, proto::AcousticObservation& message) {
    message.set_time(plain.time);
    message.set_speed_of_sound(plain.speedOfSound);
    message.set_two_way_milliseconds(plain.twoWayMilliseconds);
    message.set_hold_count(plain.holdCount);
    message.set_correction(plain.correction);
    message.set_old_from_name(plain.oldFromName);
    message.set_old_to_name(plain.oldToName);
    message.set_type(plain.type);
    message.set_value(plain.value);
    message.set_status_bits(plain.statusBits);
    message.set_time_out(plain.timeOut);
    message.set_from_name(plain.fromName);
    message.set_to_name(plain.toName);
    message.set_weight(plain.weight);
    message.set_scale_factor(plain.scaleFactor);
    message.set_residual(plain.residual);
}

void ProtobufPeer::Fill(const ComputedPosition& plain, proto::ComputedPosition& message) {
    message.set_standard_deviation(plain.standardDeviation);
    Fill(plain.position, *message.mutable_position());
    for (const AcousticObservation& observation : plain.observations) Fill(observation, *message.add_observations());
}

void ProtobufPeer::Read(const proto::ComputedPosition& message, ComputedPosition& plain) {
    plain.standardDeviation = message.standard_deviation();
    Read(message.position(), plain.position);
    plain.observations.clear();
    for (const proto::AcousticObservation& m : message.observations())
        plain.observations.push_back({m.time(), m.speed_of_sound(), m.two_way_milliseconds(), m.hold_count(),
                                      m.correction(), m.old_from_name(), m.old_to_name(),
                                      static_cast<std::uint16_t>(m.type()), m.value(), m.status_bits(), m.time_out(),
                                      m.from_name(), m.to_name(), m.weight(), m.scale_factor(), m.residual()});
}

void ProtobufPeer::Fill(const MobileTransponder& plain, proto::MobileTransponder& message) {
    message.set_time(plain.time);
    proto::Interrogation& interrogation = *message.mutable_interrogation();
    interrogation.set_irf(plain.interrogation.irf);
    interrogation.set_turn_around(plain.interrogation.turnAround);
    interrogation.set_cif(plain.interrogation.cif);
    interrogation.set_iif(plain.interrogation.iif);
    interrogation.set_usbl(plain.interrogation.usbl);
    interrogation.set_type(plain.interrogation.type);
    interrogation.set_positioning_method(plain.interrogation.positioningMethod);
    for (const TransponderRange& range : plain.ranges) {
        proto::TransponderRange& added = *message.add_ranges();
        added.set_name(range.name);
        added.set_address(range.address);
        added.set_range(range.range);
        added.set_two_way_ms(range.twoWayMs);
        added.set_speed_of_sound(range.speedOfSound);
        added.set_holds(range.holds);
        PutSensors(range.sensors, added);
    }
    message.set_name(plain.name);
    message.set_old_name(plain.oldName);
    message.set_address(plain.address);
    PutSensors(plain.sensors, message);
}

void ProtobufPeer::Read(const proto::MobileTransponder& message, MobileTransponder& plain) {
    const proto::Interrogation& i = message.interrogation();
    plain.time = message.time();
    plain.interrogation = {i.irf(), i.turn_around(), i.cif(), i.iif(), i.usbl(), i.type(), i.positioning_method()};
    plain.ranges.clear();
    for (const proto::TransponderRange& r : message.ranges())
        plain.ranges.push_back({r.name(), static_cast<std::int16_t>(r.address()), r.range(), r.two_way_ms(),
                                r.speed_of_sound(), static_cast<std::int16_t>(r.holds()), SensorsOf(r)});
    plain.name = message.name();
    plain.oldName = message.old_name();
    plain.address = static_cast<std::int16_t>(message.address());
    plain.sensors = SensorsOf(message);
}

}  // namespace bench
