#pragma once

// The shares of the messages between plain structs and bytes: what both references write and read. A share is
// its schema byte and the fields of one class.

#include <algorithm>

#include "references/Packed.h"
#include "values/Messages.h"

namespace bench::shares {

using packed::Reader;
using packed::Writer;

inline constexpr std::string_view kObservationKey = "RAW~AcousticObservation";
inline constexpr std::size_t kCapacity = 122880;  // the largest encoded message
inline constexpr std::size_t kLeastRange = 94;    // bytes of a range without a name
inline constexpr std::size_t kLeastNested = 33;   // bytes of the smallest nested message

inline Writer Put(Writer out, const Position& p) {
    out.Values(std::uint8_t{4});
    out.Text(p.namePrefix);
    out.Text(p.oldNamePrefix);
    out.Values(p.latitude, p.longitude);
    out.Text(p.oldName);
    out.Text(p.name);
    out.Values(p.type, p.east, p.north, p.depth, p.pitch, p.roll, p.trueHeading, p.gridHeading, p.convergence);
    return out;
}

inline Reader Take(Reader in, Position& p) {
    in.Schema(4);
    in.Text(p.namePrefix);
    in.Text(p.oldNamePrefix);
    in.Values(p.latitude, p.longitude);
    in.Text(p.oldName);
    in.Text(p.name);
    in.Values(p.type, p.east, p.north, p.depth, p.pitch, p.roll, p.trueHeading, p.gridHeading, p.convergence);
    return in;
}

inline Writer Put(Writer out, const AcousticObservation& o) {
    out.Values(std::uint8_t{1}, o.speedOfSound, o.twoWayMilliseconds, o.holdCount, std::uint8_t{3}, o.correction);
    out.Text(o.oldFromName);
    out.Text(o.oldToName);
    out.Values(o.type, o.value, o.statusBits, o.timeOut);
    out.Text(o.fromName);
    out.Text(o.toName);
    out.Values(o.weight, o.scaleFactor, o.residual);
    return out;
}

inline Reader Take(Reader in, AcousticObservation& o) {
    in.Schema(1);
    in.Values(o.speedOfSound, o.twoWayMilliseconds, o.holdCount);
    in.Schema(3);
    in.Values(o.correction);
    in.Text(o.oldFromName);
    in.Text(o.oldToName);
    in.Values(o.type, o.value, o.statusBits, o.timeOut);
    in.Text(o.fromName);
    in.Text(o.toName);
    in.Values(o.weight, o.scaleFactor, o.residual);
    return in;
}

inline Writer Put(Writer out, const Sensors& s) {
    out.Values(s.depth, s.pitch, s.roll, s.temperature, s.depthCo, s.pitchCo, s.rollCo, s.temperatureCo);
    return out;
}

inline Reader Take(Reader in, Sensors& s) {
    in.Values(s.depth, s.pitch, s.roll, s.temperature, s.depthCo, s.pitchCo, s.rollCo, s.temperatureCo);
    return in;
}

inline Writer Put(Writer out, const Interrogation& i) {
    out.Values(i.irf, i.turnAround, i.cif, i.iif, i.usbl, i.type, i.positioningMethod);
    return out;
}

inline Reader Take(Reader in, Interrogation& i) {
    in.Values(i.irf, i.turnAround, i.cif, i.iif, i.usbl, i.type, i.positioningMethod);
    return in;
}

inline Writer Put(Writer out, const TransponderRange& r) {
    out.Values(std::uint8_t{1});
    out.Text(r.name);
    out.Values(r.address, r.range, r.twoWayMs, r.speedOfSound, r.holds);
    return Put(out, r.sensors);
}

inline Reader Take(Reader in, TransponderRange& r) {
    in.Schema(1);
    in.Text(r.name);
    in.Values(r.address, r.range, r.twoWayMs, r.speedOfSound, r.holds);
    return Take(in, r.sensors);
}

// What the mobile transponder has in common with a static one: the second share of its stream.
inline Writer PutTransponder(Writer out, const MobileTransponder& m) {
    out.Values(std::uint8_t{2});
    out = Put(out, m.interrogation);
    out.Text(m.name);
    out.Text(m.oldName);
    out.Values(m.address);
    return Put(out, m.sensors);
}

inline Reader TakeTransponder(Reader in, MobileTransponder& m) {
    in.Schema(2);
    in = Take(in, m.interrogation);
    in.Text(m.name);
    in.Text(m.oldName);
    in.Values(m.address);
    return Take(in, m.sensors);
}

inline Writer PutBase(Writer out, double time, std::size_t nested) {
    out.Values(std::uint8_t{1}, time, static_cast<std::int32_t>(nested));
    return out;
}

inline Reader TakeBase(Reader in, double& time, std::int32_t& nested) {
    in.Schema(1);
    in.Values(time, nested);
    return in;
}

/// `count` elements, but no more than the bytes that are left can hold.
inline std::size_t AtMost(const Reader& in, std::int32_t count, std::size_t bytesEach) {
    const std::size_t most = in.Left() / bytesEach;
    return count < 0 ? 0 : std::min(static_cast<std::size_t>(count), most);
}

}  // namespace bench::shares
