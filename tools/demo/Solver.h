#pragma once

#include <Eigen/Core>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "demo/ShotFile.h"

namespace demo {

/// What the shots say about where the transponder is.
struct Solution {
    bool solved = false;
    std::string whyNot;  ///< the reason if it is not solved, else empty

    Eigen::Vector3d position = Eigen::Vector3d::Zero();  ///< north, east, up in metres from the file's origin
    /// Three-dimensional standard deviation in metres: the root of the trace of the position's covariance,
    /// scaled by the variance of the residuals. `HUGE_VAL` if it is not solved.
    double standardDeviation = HUGE_VAL;
    double rms = 0.0;               ///< of the two-way residuals of the used shots, in metres
    std::vector<double> residuals;  ///< two-way path, observed minus computed, in metres; one for each shot
    std::vector<char> used;         ///< for each shot whether the solution rests on it
    std::size_t usedCount = 0;
    std::size_t rounds = 0;  ///< adjustments until the used shots stayed the same
};

/// Least squares for the seabed transponder, below the transducers, over straight paths of equal weight:
/// from the transducer at transmit to the transponder to the transducer at receive it is `soundSpeed`
/// (m/s) times travel time. Shots whose two-way residual is beyond three sigma, the rms of the used ones,
/// are rejected, round by round, until the used shots stay the same. Shots that allow no solution give one
/// that is not solved.
Solution Solve(const std::vector<Shot>& shots, double soundSpeed);

}  // namespace demo
