#include "peers/CapnProto.h"

#include <capnp/message.h>
#include <capnp/serialize.h>
#include <kj/io.h>
#include <messages.capnp.h>

namespace bench {
namespace {

capnp::Text::Reader TextOf(const std::string& plain) { return {plain.c_str(), plain.size()}; }

void Take(capnp::Text::Reader text, std::string& plain) { plain.assign(text.begin(), text.size()); }

void Fill(cap::Position::Builder m, const Position& p) {
    m.setTime(p.time);
    m.setNamePrefix(TextOf(p.namePrefix));
    m.setOldNamePrefix(TextOf(p.oldNamePrefix));
    m.setLatitude(p.latitude);
    m.setLongitude(p.longitude);
    m.setOldName(TextOf(p.oldName));
    m.setName(TextOf(p.name));
    m.setType(p.type);
    m.setEast(p.east);
    m.setNorth(p.north);
    m.setDepth(p.depth);
    m.setPitch(p.pitch);
    m.setRoll(p.roll);
    m.setTrueHeading(p.trueHeading);
    m.setGridHeading(p.gridHeading);
    m.setConvergence(p.convergence);
}

void Take(cap::Position::Reader m, Position& p) {
    p.time = m.getTime();
    Take(m.getNamePrefix(), p.namePrefix);
    Take(m.getOldNamePrefix(), p.oldNamePrefix);
    p.latitude = m.getLatitude();
    p.longitude = m.getLongitude();
    Take(m.getOldName(), p.oldName);
    Take(m.getName(), p.name);
    p.type = m.getType();
    p.east = m.getEast();
    p.north = m.getNorth();
    p.depth = m.getDepth();
    p.pitch = m.getPitch();
    p.roll = m.getRoll();
    p.trueHeading = m.getTrueHeading();
    p.gridHeading = m.getGridHeading();
    p.convergence = m.getConvergence();
}

void Fill(cap::AcousticObservation::Builder m, const AcousticObservation& o) {
    m.setTime(o.time);
    m.setSpeedOfSound(o.speedOfSound);
    m.setTwoWayMilliseconds(o.twoWayMilliseconds);
    m.setHoldCount(o.holdCount);
    m.setCorrection(o.correction);
    m.setOldFromName(TextOf(o.oldFromName));
    m.setOldToName(TextOf(o.oldToName));
    m.setType(o.type);
    m.setValue(o.value);
    m.setStatusBits(o.statusBits);
    m.setTimeOut(o.timeOut);
    m.setFromName(TextOf(o.fromName));
    m.setToName(TextOf(o.toName));
    m.setWeight(o.weight);
    m.setScaleFactor(o.scaleFactor);
    m.setResidual(o.residual);
}

void Take(cap::AcousticObservation::Reader m, AcousticObservation& o) {
    o.time = m.getTime();
    o.speedOfSound = m.getSpeedOfSound();
    o.twoWayMilliseconds = m.getTwoWayMilliseconds();
    o.holdCount = m.getHoldCount();
    o.correction = m.getCorrection();
    Take(m.getOldFromName(), o.oldFromName);
    Take(m.getOldToName(), o.oldToName);
    o.type = m.getType();
    o.value = m.getValue();
    o.statusBits = m.getStatusBits();
    o.timeOut = m.getTimeOut();
    Take(m.getFromName(), o.fromName);
    Take(m.getToName(), o.toName);
    o.weight = m.getWeight();
    o.scaleFactor = m.getScaleFactor();
    o.residual = m.getResidual();
}

void Fill(cap::Sensors::Builder m, const Sensors& s) {
    m.setDepth(s.depth);
    m.setPitch(s.pitch);
    m.setRoll(s.roll);
    m.setTemperature(s.temperature);
    m.setDepthCo(s.depthCo);
    m.setPitchCo(s.pitchCo);
    m.setRollCo(s.rollCo);
    m.setTemperatureCo(s.temperatureCo);
}

void Take(cap::Sensors::Reader m, Sensors& s) {
    s = {m.getDepth(),   m.getPitch(),   m.getRoll(),   m.getTemperature(),
         m.getDepthCo(), m.getPitchCo(), m.getRollCo(), m.getTemperatureCo()};
}

void Fill(cap::ComputedPosition::Builder m, const ComputedPosition& c) {
    m.setStandardDeviation(c.standardDeviation);
    Fill(m.initPosition(), c.position);
    auto observations = m.initObservations(static_cast<unsigned>(c.observations.size()));
    for (unsigned i = 0; i < observations.size(); ++i) Fill(observations[i], c.observations[i]);
}

void Take(cap::ComputedPosition::Reader m, ComputedPosition& c) {
    c.standardDeviation = m.getStandardDeviation();
    Take(m.getPosition(), c.position);
    const auto observations = m.getObservations();
    c.observations.resize(observations.size());
    for (unsigned i = 0; i < observations.size(); ++i) Take(observations[i], c.observations[i]);
}

void Fill(cap::MobileTransponder::Builder m, const MobileTransponder& t) {
    m.setTime(t.time);
    auto interrogation = m.initInterrogation();
    interrogation.setIrf(t.interrogation.irf);
    interrogation.setTurnAround(t.interrogation.turnAround);
    interrogation.setCif(t.interrogation.cif);
    interrogation.setIif(t.interrogation.iif);
    interrogation.setUsbl(t.interrogation.usbl);
    interrogation.setType(t.interrogation.type);
    interrogation.setPositioningMethod(t.interrogation.positioningMethod);
    auto ranges = m.initRanges(static_cast<unsigned>(t.ranges.size()));
    for (unsigned i = 0; i < ranges.size(); ++i) {
        ranges[i].setName(TextOf(t.ranges[i].name));
        ranges[i].setAddress(t.ranges[i].address);
        ranges[i].setRange(t.ranges[i].range);
        ranges[i].setTwoWayMs(t.ranges[i].twoWayMs);
        ranges[i].setSpeedOfSound(t.ranges[i].speedOfSound);
        ranges[i].setHolds(t.ranges[i].holds);
        Fill(ranges[i].initSensors(), t.ranges[i].sensors);
    }
    m.setName(TextOf(t.name));
    m.setOldName(TextOf(t.oldName));
    m.setAddress(t.address);
    Fill(m.initSensors(), t.sensors);
}

void Take(cap::MobileTransponder::Reader m, MobileTransponder& t) {
    t.time = m.getTime();
    const auto i = m.getInterrogation();
    t.interrogation = {i.getIrf(),  i.getTurnAround(),       i.getCif(), i.getIif(), i.getUsbl(),
                       i.getType(), i.getPositioningMethod()};
    const auto ranges = m.getRanges();
    t.ranges.resize(ranges.size());
    for (unsigned each = 0; each < ranges.size(); ++each) {
        const auto from = ranges[each];
        TransponderRange& range = t.ranges[each];
        Take(from.getName(), range.name);
        range.address = from.getAddress();
        range.range = from.getRange();
        range.twoWayMs = from.getTwoWayMs();
        range.speedOfSound = from.getSpeedOfSound();
        range.holds = from.getHolds();
        Take(from.getSensors(), range.sensors);
    }
    Take(m.getName(), t.name);
    Take(m.getOldName(), t.oldName);
    t.address = m.getAddress();
    Take(m.getSensors(), t.sensors);
}

template <class Root, class Plain>
std::string_view Encoded(EncodingBuffer& segment, EncodingBuffer& bytes, const Plain& plain) {
    constexpr std::size_t kWords = EncodingBuffer::kSize / sizeof(capnp::word);
    capnp::MallocMessageBuilder builder(kj::arrayPtr(reinterpret_cast<capnp::word*>(segment.Data()), kWords));
    Fill(builder.initRoot<Root>(), plain);
    kj::ArrayOutputStream out(kj::arrayPtr(bytes.Data(), EncodingBuffer::kSize));
    capnp::writeMessage(out, builder);
    return bytes.View(out.getArray().size());
}

template <class Root, class Plain>
void Decoded(const ReceivedBytes& received, Plain& plain) {
    const auto* words = reinterpret_cast<const capnp::word*>(received.Words());
    capnp::FlatArrayMessageReader reader(kj::arrayPtr(words, received.View().size() / sizeof(capnp::word)));
    Take(reader.getRoot<Root>(), plain);
}

}  // namespace

std::string_view CapnProtoPeer::Encoder::Encode(const Position& message) {
    return Encoded<cap::Position>(segment_, bytes_, message);
}

std::string_view CapnProtoPeer::Encoder::Encode(const ComputedPosition& message) {
    return Encoded<cap::ComputedPosition>(segment_, bytes_, message);
}

std::string_view CapnProtoPeer::Encoder::Encode(const MobileTransponder& message) {
    return Encoded<cap::MobileTransponder>(segment_, bytes_, message);
}

void CapnProtoPeer::Decode(const Received& received, Position& message) { Decoded<cap::Position>(received, message); }

void CapnProtoPeer::Decode(const Received& received, ComputedPosition& message) {
    Decoded<cap::ComputedPosition>(received, message);
}

void CapnProtoPeer::Decode(const Received& received, MobileTransponder& message) {
    Decoded<cap::MobileTransponder>(received, message);
}

}  // namespace bench
