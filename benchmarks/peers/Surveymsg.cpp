#include "peers/Surveymsg.h"

#include <memory>

namespace bench {
namespace {

void Put(const std::string& plain, CString& text) { text.Assign(plain.data(), static_cast<int>(plain.size())); }

void Take(const CString& text, std::string& plain) { plain = text.View(); }

Sensors SensorsOf(const CTransMsg& m) {
    return {m.Depth, m.Pitch, m.Roll, m.Temperature, m.DepthCO, m.PitchCO, m.RollCO, m.TemperatureCO};
}

Sensors SensorsOf(const CTransRange& r) {
    return {r.RangeDepth,   r.RangePitch,   r.RangeRoll,   r.RangeTemperature,
            r.RangeDepthCO, r.RangePitchCO, r.RangeRollCO, r.RangeTemperatureCO};
}

}  // namespace

void SurveymsgPeer::Fill(const Position& plain, CPosnMsg& message) {
    message.MsgTime = plain.time;
    Put(plain.namePrefix, message.NamePrefix);
    Put(plain.oldNamePrefix, message.OldNamePrefix);
    message.Latitude = plain.latitude;
    message.Longitude = plain.longitude;
    Put(plain.oldName, message.OldName);
    Put(plain.name, message.Name);
    message.Type = plain.type;
    message.East = plain.east;
    message.North = plain.north;
    message.Depth = plain.depth;
    message.Pitch = plain.pitch;
    message.Roll = plain.roll;
    message.TrueHeading = plain.trueHeading;
    message.GridHeading = plain.gridHeading;
    message.Convergence = plain.convergence;
}

void SurveymsgPeer::Read(CPosnMsg& message, Position& plain) {
    plain.time = message.MsgTime;
    Take(message.NamePrefix, plain.namePrefix);
    Take(message.OldNamePrefix, plain.oldNamePrefix);
    plain.latitude = message.Latitude;
    plain.longitude = message.Longitude;
    Take(message.OldName, plain.oldName);
    Take(message.Name, plain.name);
    plain.type = message.Type;
    plain.east = message.East;
    plain.north = message.North;
    plain.depth = message.Depth;
    plain.pitch = message.Pitch;
    plain.roll = message.Roll;
    plain.trueHeading = message.TrueHeading;
    plain.gridHeading = message.GridHeading;
    plain.convergence = message.Convergence;
}

void SurveymsgPeer::Fill(const AcousticObservation& plain, CAcObsMsg& message) {
    message.MsgTime = plain.time;
    message.SpeedOfSound = plain.speedOfSound;
    message.TwoWayMilliseconds = plain.twoWayMilliseconds;
    message.HoldCount = plain.holdCount;
    message.Correction = plain.correction;
    Put(plain.oldFromName, message.OldFromName);
    Put(plain.oldToName, message.OldToName);
    message.Type = plain.type;
    message.Value = plain.value;
    message.StatusBits = plain.statusBits;
    message.TimeOut = plain.timeOut;
    Put(plain.fromName, message.FromName);
    Put(plain.toName, message.ToName);
    message.Weight = plain.weight;
    message.ScaleFactor = plain.scaleFactor;
    message.Residual = plain.residual;
}

void SurveymsgPeer::Fill(const ComputedPosition& plain, CCompPosnMsg& message) {
    Fill(plain.position, message);
    message.StandardDeviation = plain.standardDeviation;
    for (const AcousticObservation& observation : plain.observations) {
        CAcObsMsg added;
        Fill(observation, added);
        message.AddObservation(added);
    }
}

void SurveymsgPeer::Read(CCompPosnMsg& message, ComputedPosition& plain) {
    Read(message, plain.position);
    plain.standardDeviation = message.StandardDeviation;
    plain.observations.clear();
    std::uint16_t index = 0;
    while (const auto* m = dynamic_cast<CAcObsMsg*>(message.GetObservation(index++))) {
        AcousticObservation& o = plain.observations.emplace_back();
        o.time = m->MsgTime;
        o.speedOfSound = m->SpeedOfSound;
        o.twoWayMilliseconds = m->TwoWayMilliseconds;
        o.holdCount = m->HoldCount;
        o.correction = m->Correction;
        Take(m->OldFromName, o.oldFromName);
        Take(m->OldToName, o.oldToName);
        o.type = m->Type;
        o.value = m->Value;
        o.statusBits = m->StatusBits;
        o.timeOut = m->TimeOut;
        Take(m->FromName, o.fromName);
        Take(m->ToName, o.toName);
        o.weight = m->Weight;
        o.scaleFactor = m->ScaleFactor;
        o.residual = m->Residual;
    }
}

void SurveymsgPeer::Fill(const MobileTransponder& plain, CMobTransMsg& message) {
    const Interrogation& i = plain.interrogation;
    const Sensors& s = plain.sensors;
    message.MsgTime = plain.time;
    message.IRF = i.irf;
    message.TurnAround = i.turnAround;
    message.InterrogationMode = {i.cif, i.iif, i.usbl};
    message.Type = i.type;
    message.PositioningMethod = i.positioningMethod;
    Put(plain.name, message.Name);
    Put(plain.oldName, message.OldName);
    message.Address = plain.address;
    message.Depth = s.depth;
    message.Pitch = s.pitch;
    message.Roll = s.roll;
    message.Temperature = s.temperature;
    message.DepthCO = s.depthCo;
    message.PitchCO = s.pitchCo;
    message.RollCO = s.rollCo;
    message.TemperatureCO = s.temperatureCo;
    for (const TransponderRange& range : plain.ranges) {
        auto added = std::make_unique<CTransRange>();
        Put(range.name, added->RangeName);
        added->RangeAddress = range.address;
        added->Range = range.range;
        added->TwoWayMs = range.twoWayMs;
        added->SpeedOfSound = range.speedOfSound;
        added->NumberOfHolds = range.holds;
        added->RangeDepth = range.sensors.depth;
        added->RangePitch = range.sensors.pitch;
        added->RangeRoll = range.sensors.roll;
        added->RangeTemperature = range.sensors.temperature;
        added->RangeDepthCO = range.sensors.depthCo;
        added->RangePitchCO = range.sensors.pitchCo;
        added->RangeRollCO = range.sensors.rollCo;
        added->RangeTemperatureCO = range.sensors.temperatureCo;
        message.Ranges.Add(added.get());
        added.release();
    }
}

void SurveymsgPeer::Read(CMobTransMsg& message, MobileTransponder& plain) {
    plain.time = message.MsgTime;
    const InterrogationModes& modes = message.InterrogationMode;
    plain.interrogation = {message.IRF,  message.TurnAround,       modes.CIF, modes.IIF, modes.USBL,
                           message.Type, message.PositioningMethod};
    Take(message.Name, plain.name);
    Take(message.OldName, plain.oldName);
    plain.address = message.Address;
    plain.sensors = SensorsOf(static_cast<const CTransMsg&>(message));
    plain.ranges.clear();
    for (int i = 0; i < message.Ranges.GetSize(); ++i) {
        const auto& r = *static_cast<const CTransRange*>(message.Ranges.GetAt(i));
        plain.ranges.push_back({std::string(r.RangeName.View()), r.RangeAddress, r.Range, r.TwoWayMs, r.SpeedOfSound,
                                r.NumberOfHolds, SensorsOf(r)});
    }
}

}  // namespace bench
