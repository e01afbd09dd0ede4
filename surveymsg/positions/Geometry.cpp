// The plane and solid geometry of a position. Angles are degrees outside and radians only in here.

#include <cmath>

#include <surveymsg/positions/PosnMsg.h>

namespace {

constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kRadiansPerDegree = 0.017453292519943295;
constexpr double kSameNorthing = 1e-10;

// One turn is added, once: what lies below -360 stays negative.
double Wrap(double degrees) { return std::fmod(degrees + 360.0, 360.0); }

}  // namespace

void CPosnMsg::SetGridHdg(double heading) {
    GridHeading = heading;
    TrueHeading = Wrap(heading - Convergence);
}

void CPosnMsg::SetTrueHdg(double heading) {
    TrueHeading = heading;
    GridHeading = Wrap(heading + Convergence);
}

void CPosnMsg::SetConvergence(double convergence) {
    Convergence = convergence;
    TrueHeading = Wrap(GridHeading - convergence);
}

void CPosnMsg::Polar(double fromEast, double fromNorth, double toEast, double toNorth, double* range, double* bearing) {
    const double east = toEast - fromEast;
    const double north = toNorth - fromNorth;
    if (std::fabs(north) < kSameNorthing)
        *bearing = east == 0.0 ? 360.0 : east > 0.0 ? 90.0 : 270.0;
    else
        *bearing = Wrap(std::atan2(east, north) * kDegreesPerRadian);
    *range = std::sqrt(north * north + east * east);
}

void CPosnMsg::ApplyPRH(double* x, double* y, double* z) {
    const double roll = -Roll * kRadiansPerDegree;
    const double pitch = Pitch * kRadiansPerDegree;
    const double heading = -GridHeading * kRadiansPerDegree;
    const double x1 = std::sin(roll) * *z + std::cos(roll) * *x;
    const double z1 = std::cos(roll) * *z - std::sin(roll) * *x;
    const double y1 = std::sin(pitch) * z1 + std::cos(pitch) * *y;
    const double z2 = std::cos(pitch) * z1 - std::sin(pitch) * *y;
    *x = std::cos(heading) * x1 - std::sin(heading) * y1;
    *y = std::cos(heading) * y1 + std::sin(heading) * x1;
    *z = z2;
}

double CPosnMsg::DistanceFrom(const CPosnMsg* other) {
    return std::hypot(std::hypot(East - other->East, North - other->North), Depth - other->Depth);
}
