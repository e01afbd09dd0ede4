#include "values/Sample.h"

#include <cstdio>

namespace bench {
namespace {

constexpr double kTime = 1'420'000'000.25;  // seconds since 1980-01-06
constexpr double kSpeedOfSound = 1500.0;
constexpr double kMilliseconds = 1000.0;

std::string Numbered(const char* format, int number) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, format, number);
    return {text, static_cast<std::size_t>(length)};
}

double RangeTo(int number) { return 412.375 + 1.625 * number; }

double TwoWay(double range) { return 2.0 * range / kSpeedOfSound * kMilliseconds; }

}  // namespace

Position SamplePosition() {
    Position position;
    position.time = kTime;
    position.namePrefix = "POS";
    position.name = "ROV 1";
    position.type = 1;
    position.latitude = 58.43541237;
    position.longitude = 1.72093618;
    position.east = 431250.537;
    position.north = 6477310.281;
    position.depth = 121.46;
    position.pitch = 1.25;
    position.roll = -0.75;
    position.trueHeading = 271.38;
    position.gridHeading = 272.41;
    position.convergence = 1.03;
    return position;
}

AcousticObservation SampleObservation(int number) {
    AcousticObservation observation;
    observation.time = kTime;
    observation.value = RangeTo(number);
    observation.speedOfSound = kSpeedOfSound;
    observation.twoWayMilliseconds = TwoWay(observation.value);
    observation.holdCount = 2;
    observation.correction = 0.125;
    observation.type = 1;
    observation.statusBits = 2;
    observation.timeOut = 30;
    observation.fromName = "ROV 1";
    observation.toName = Numbered("TP-%04d", number);
    observation.weight = 1.0;
    observation.scaleFactor = 1.0;
    observation.residual = -0.0625 + 0.001 * number;
    return observation;
}

ComputedPosition SampleComputedPosition(int observations) {
    ComputedPosition computed;
    computed.standardDeviation = 0.046;
    computed.position = SamplePosition();
    for (int i = 0; i < observations; ++i) computed.observations.push_back(SampleObservation(i));
    return computed;
}

MobileTransponder SampleMobileTransponder(int ranges) {
    MobileTransponder mobile;
    mobile.time = kTime;
    mobile.interrogation = {8, 4, 1, 0, 1, 0, 3};
    mobile.name = "ROV 1 TP";
    mobile.address = 1402;
    mobile.sensors = {121.46, 1.25, -0.75, 6.5, 0.125, 0.25, 0.5, 0.0625};
    for (int i = 0; i < ranges; ++i) {
        TransponderRange range;
        range.name = Numbered("TP-%04d", i);
        range.address = static_cast<std::int16_t>(1500 + i);
        range.range = RangeTo(i);
        range.twoWayMs = TwoWay(range.range);
        range.speedOfSound = kSpeedOfSound;
        range.holds = 2;
        range.sensors = {118.0 + i, 0.5, -0.25, 5.75, 0.125, 0.25, 0.5, 0.0625};
        mobile.ranges.push_back(range);
    }
    return mobile;
}

}  // namespace bench
