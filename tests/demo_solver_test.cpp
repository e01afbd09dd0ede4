#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "demo/Solver.h"

namespace demo {
namespace {

constexpr double kSoundSpeed = 1500.0;
const Eigen::Vector3d kTransponder(12.0, -7.0, -3.0);

Shot ShotAt(const Eigen::Vector3d& transmit, double pathError = 0.0) {
    const Eigen::Vector3d receive = transmit + Eigen::Vector3d(0.2, 0.1, 0.0);
    const double path = (transmit - kTransponder).norm() + (receive - kTransponder).norm() + pathError;
    return {0.0, transmit, 1.0, receive, path / kSoundSpeed};
}

// A circle with a little heave; the errors have no chance in them.
std::vector<Shot> Circle(std::size_t count, const Eigen::Vector3d& centre, double radius, double error = 0.0) {
    std::vector<Shot> shots;
    for (std::size_t i = 0; i < count; ++i) {
        const double number = static_cast<double>(i);
        const double angle = 2.0 * std::numbers::pi * number / static_cast<double>(count);
        const Eigen::Vector3d offset(radius * std::cos(angle), radius * std::sin(angle), 0.3 * std::sin(number));
        shots.push_back(ShotAt(centre + offset, error * std::sin(7.0 * number)));
    }
    return shots;
}

double Miss(const Solution& solution) { return (solution.position - kTransponder).norm(); }

TEST(Solver, RecoversTheTruthFromExactShots) {
    const auto shots = Circle(40, {0, 0, 50}, 60);
    const Solution solution = Solve(shots, kSoundSpeed);
    ASSERT_TRUE(solution.solved) << solution.whyNot;
    EXPECT_LT(Miss(solution), 1e-6);
    EXPECT_EQ(solution.usedCount, shots.size()) << "rounding is no reason to reject";
    EXPECT_LT(solution.standardDeviation, 1e-6);
}

TEST(Solver, RecoversTheTruthFromAfar) {
    for (const Eigen::Vector3d& centre : {Eigen::Vector3d(300, 0, 50), {-200, 500, 40}, {0, 0, 4000}}) {
        const Solution solution = Solve(Circle(40, centre, 60), kSoundSpeed);
        ASSERT_TRUE(solution.solved) << solution.whyNot;
        EXPECT_LT(Miss(solution), 1e-3) << centre.transpose();
    }
}

TEST(Solver, RejectsOutliers) {
    auto shots = Circle(100, {5, 5, 50}, 80, 0.04);
    const std::size_t wrong[] = {3, 30, 31, 77};
    for (const std::size_t i : wrong) shots[i].travelTime += 5.0 / kSoundSpeed;
    const Solution solution = Solve(shots, kSoundSpeed);
    ASSERT_TRUE(solution.solved) << solution.whyNot;
    EXPECT_LT(Miss(solution), 0.02);
    EXPECT_EQ(solution.usedCount, shots.size() - std::size(wrong));
    for (const std::size_t i : wrong) {
        EXPECT_FALSE(solution.used[i]);
        EXPECT_NEAR(solution.residuals[i], 5.0, 0.1) << "observed minus computed, two-way";
    }
    EXPECT_NEAR(solution.rms, 0.04 / std::sqrt(2.0), 0.003);
    EXPECT_GT(solution.standardDeviation, 0.001);
    EXPECT_LT(solution.standardDeviation, 0.02);
}

TEST(Solver, LooksBelowTheTrack) {
    auto shots = Circle(40, {0, 0, 50}, 60);
    for (Shot& shot : shots) shot.transmit.z() = shot.receive.z() = 50.0;  // level: the mirror image fits as well
    for (Shot& shot : shots)
        shot.travelTime = ((shot.transmit - kTransponder).norm() + (shot.receive - kTransponder).norm()) / kSoundSpeed;
    const Solution solution = Solve(shots, kSoundSpeed);
    ASSERT_TRUE(solution.solved) << solution.whyNot;
    EXPECT_LT(Miss(solution), 1e-6);
}

void ExpectNoSolution(const std::vector<Shot>& shots) {
    const Solution solution = Solve(shots, kSoundSpeed);
    EXPECT_FALSE(solution.solved);
    EXPECT_EQ(solution.standardDeviation, HUGE_VAL);
    EXPECT_FALSE(solution.whyNot.empty());
    EXPECT_EQ(solution.usedCount, 0u);
    EXPECT_EQ(solution.used, std::vector<char>(shots.size(), 0));
    EXPECT_EQ(solution.residuals.size(), shots.size());
}

TEST(Solver, HasNoSolutionForTooFewShots) {
    ExpectNoSolution({});
    ExpectNoSolution(Circle(3, {0, 0, 50}, 60));
}

TEST(Solver, HasNoSolutionForATrackThatFixesNothing) {
    std::vector<Shot> point(20, ShotAt({0, 0, 50}));
    for (Shot& shot : point) shot.receive = shot.transmit;
    ExpectNoSolution(point);

    std::vector<Shot> line, wavyLine, absurd;
    for (int i = 0; i < 40; ++i) {
        const Eigen::Vector3d place(10.0 * i, 5.0 * i, 50.0);  // in the direction from transmit to receive
        line.push_back(ShotAt(place));
        wavyLine.push_back(ShotAt(place + Eigen::Vector3d(0, 0, std::sin(i))));  // left and right fit as well
        absurd.push_back(ShotAt(place * 1e200));
        absurd.back().travelTime = 1.0;
    }
    ExpectNoSolution(line);
    ExpectNoSolution(wavyLine);
    ExpectNoSolution(absurd);
}

}  // namespace
}  // namespace demo
