#include "peers/Lcm.h"

namespace bench {
namespace {

void PutSensors(const Sensors& s, bench_lcm::sensors_t& m) {
    m.depth = s.depth;
    m.pitch = s.pitch;
    m.roll = s.roll;
    m.temperature = s.temperature;
    m.depth_co = s.depthCo;
    m.pitch_co = s.pitchCo;
    m.roll_co = s.rollCo;
    m.temperature_co = s.temperatureCo;
}

Sensors SensorsOf(const bench_lcm::sensors_t& m) {
    return {m.depth, m.pitch, m.roll, m.temperature, m.depth_co, m.pitch_co, m.roll_co, m.temperature_co};
}

}  // namespace

void LcmPeer::Fill(const Position& plain, bench_lcm::position_t& message) {
    message.time = plain.time;
    message.name_prefix = plain.namePrefix;
    message.old_name_prefix = plain.oldNamePrefix;
    message.latitude = plain.latitude;
    message.longitude = plain.longitude;
    message.old_name = plain.oldName;
    message.name = plain.name;
    message.type = static_cast<std::int16_t>(plain.type);
    message.east = plain.east;
    message.north = plain.north;
    message.depth = plain.depth;
    message.pitch = plain.pitch;
    message.roll = plain.roll;
    message.true_heading = plain.trueHeading;
    message.grid_heading = plain.gridHeading;
    message.convergence = plain.convergence;
}

void LcmPeer::Read(const bench_lcm::position_t& m, Position& plain) {
    plain = {m.time,
             m.name_prefix,
             m.old_name_prefix,
             m.latitude,
             m.longitude,
             m.old_name,
             m.name,
             static_cast<std::uint16_t>(m.type),
             m.east,
             m.north,
             m.depth,
             m.pitch,
             m.roll,
             m.true_heading,
             m.grid_heading,
             m.convergence};
}

void LcmPeer::Fill(const ComputedPosition& plain, bench_lcm::computed_t& message) {
    message.standard_deviation = plain.standardDeviation;
    Fill(plain.position, message.position);
    message.count = static_cast<std::int32_t>(plain.observations.size());
    for (const AcousticObservation& o : plain.observations) {
        bench_lcm::observation_t& m = message.observations.emplace_back();
        m.time = o.time;
        m.speed_of_sound = o.speedOfSound;
        m.two_way_milliseconds = o.twoWayMilliseconds;
        m.hold_count = static_cast<std::int32_t>(o.holdCount);
        m.correction = o.correction;
        m.old_from_name = o.oldFromName;
        m.old_to_name = o.oldToName;
        m.type = static_cast<std::int16_t>(o.type);
        m.value = o.value;
        m.status_bits = static_cast<std::int32_t>(o.statusBits);
        m.time_out = static_cast<std::int32_t>(o.timeOut);
        m.from_name = o.fromName;
        m.to_name = o.toName;
        m.weight = o.weight;
        m.scale_factor = o.scaleFactor;
        m.residual = o.residual;
    }
}

void LcmPeer::Read(const bench_lcm::computed_t& message, ComputedPosition& plain) {
    plain.standardDeviation = message.standard_deviation;
    Read(message.position, plain.position);
    plain.observations.clear();
    for (const bench_lcm::observation_t& m : message.observations)
        plain.observations.push_back({m.time, m.speed_of_sound, m.two_way_milliseconds,
                                      static_cast<std::uint32_t>(m.hold_count), m.correction, m.old_from_name,
                                      m.old_to_name, static_cast<std::uint16_t>(m.type), m.value,
                                      static_cast<std::uint32_t>(m.status_bits), static_cast<std::uint32_t>(m.time_out),
                                      m.from_name, m.to_name, m.weight, m.scale_factor, m.residual});
}

void LcmPeer::Fill(const MobileTransponder& plain, bench_lcm::mobile_t& message) {
    const Interrogation& i = plain.interrogation;
    message.time = plain.time;
    message.interrogation.irf = i.irf;
    message.interrogation.turn_around = i.turnAround;
    message.interrogation.cif = i.cif;
    message.interrogation.iif = i.iif;
    message.interrogation.usbl = i.usbl;
    message.interrogation.type = i.type;
    message.interrogation.positioning_method = i.positioningMethod;
    message.count = static_cast<std::int32_t>(plain.ranges.size());
    for (const TransponderRange& r : plain.ranges) {
        bench_lcm::range_t& m = message.ranges.emplace_back();
        m.name = r.name;
        m.address = r.address;
        m.range = r.range;
        m.two_way_ms = r.twoWayMs;
        m.speed_of_sound = r.speedOfSound;
        m.holds = r.holds;
        PutSensors(r.sensors, m.sensors);
    }
    message.name = plain.name;
    message.old_name = plain.oldName;
    message.address = plain.address;
    PutSensors(plain.sensors, message.sensors);
}

void LcmPeer::Read(const bench_lcm::mobile_t& message, MobileTransponder& plain) {
    const bench_lcm::interrogation_t& i = message.interrogation;
    plain.time = message.time;
    plain.interrogation = {i.irf, i.turn_around, i.cif, i.iif, i.usbl, i.type, i.positioning_method};
    plain.ranges.clear();
    for (const bench_lcm::range_t& r : message.ranges)
        plain.ranges.push_back(
            {r.name, r.address, r.range, r.two_way_ms, r.speed_of_sound, r.holds, SensorsOf(r.sensors)});
    plain.name = message.name;
    plain.oldName = message.old_name;
    plain.address = message.address;
    plain.sensors = SensorsOf(message.sensors);
}

}  // namespace bench
