#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The messages of the comparison as plain structs: what a program would hold that has no message library.
/// Fields stand in the order in which they travel.
namespace bench {

struct Position {
    double time = 0.0;
    std::string namePrefix, oldNamePrefix;
    double latitude = 0.0, longitude = 0.0;
    std::string oldName, name;
    std::uint16_t type = 0;
    double east = 0.0, north = 0.0, depth = 0.0, pitch = 0.0, roll = 0.0;
    double trueHeading = 0.0, gridHeading = 0.0, convergence = 0.0;

    bool operator==(const Position&) const = default;
};

struct AcousticObservation {
    double time = 0.0;
    double speedOfSound = 0.0, twoWayMilliseconds = 0.0;
    std::uint32_t holdCount = 0;
    double correction = 0.0;
    std::string oldFromName, oldToName;
    std::uint16_t type = 0;
    double value = 0.0;
    std::uint32_t statusBits = 0, timeOut = 0;
    std::string fromName, toName;
    double weight = 0.0, scaleFactor = 0.0, residual = 0.0;

    bool operator==(const AcousticObservation&) const = default;
};

struct ComputedPosition {
    double standardDeviation = 0.0;
    Position position;
    std::vector<AcousticObservation> observations;

    bool operator==(const ComputedPosition&) const = default;
};

struct Interrogation {
    std::int32_t irf = 0, turnAround = 0, cif = 0, iif = 0, usbl = 0, type = 0, positioningMethod = 0;

    bool operator==(const Interrogation&) const = default;
};

struct Sensors {
    double depth = 0.0, pitch = 0.0, roll = 0.0, temperature = 0.0;
    double depthCo = 0.0, pitchCo = 0.0, rollCo = 0.0, temperatureCo = 0.0;

    bool operator==(const Sensors&) const = default;
};

struct TransponderRange {
    std::string name;
    std::int16_t address = 0;
    double range = 0.0, twoWayMs = 0.0, speedOfSound = 0.0;
    std::int16_t holds = 0;
    Sensors sensors;

    bool operator==(const TransponderRange&) const = default;
};

struct MobileTransponder {
    double time = 0.0;
    Interrogation interrogation;
    std::vector<TransponderRange> ranges;
    std::string name, oldName;
    std::int16_t address = 0;
    Sensors sensors;

    bool operator==(const MobileTransponder&) const = default;
};

}  // namespace bench
