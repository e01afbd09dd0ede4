#include "demo/Solver.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>
#include <algorithm>
#include <optional>
#include <utility>

#include "demo/Progress.h"

namespace demo {
namespace {

constexpr std::size_t kUnknowns = 3;
constexpr std::size_t kLeastShots = kUnknowns + 1;  // one to spare, or there is no variance
constexpr double kSigmas = 3.0;
constexpr double kFinest = 1e-6;                // metres; below it residuals are rounding, and nothing is rejected
constexpr double kConverged = 1e-7;             // metres of a whole step
constexpr std::size_t kReadmittingRounds = 20;  // from then on shots only leave, so there is an end
constexpr int kMostSteps = 100;
constexpr int kMostHalvings = 30;
constexpr double kLeastStiffness = 1e-10;  // of the weakest direction against the strongest

/// The normal equations at a position.
struct Normals {
    Eigen::Matrix3d matrix = Eigen::Matrix3d::Zero();
    Eigen::Vector3d right = Eigen::Vector3d::Zero();
};

/// A position at which the squares are least.
struct Fit {
    Eigen::Vector3d position;
    double squares;
};

class Adjustment {
public:
    Adjustment(const std::vector<Shot>& shots, double soundSpeed)
        : shots_(shots), soundSpeed_(soundSpeed), used_(shots.size(), 1), usedCount_(shots.size()) {
        for (const Shot& shot : shots) {
            centre_ += (shot.transmit + shot.receive) / 2.0;
            meanRange_ += soundSpeed * shot.travelTime / 2.0;
        }
        centre_ /= static_cast<double>(shots.size());
        meanRange_ /= static_cast<double>(shots.size());
    }

    double Residual(const Shot& shot, const Eigen::Vector3d& position) const {
        return soundSpeed_ * shot.travelTime - (shot.transmit - position).norm() - (shot.receive - position).norm();
    }

    double Squares(const Eigen::Vector3d& position) const {
        double squares = 0.0;
        ForUsed([&](const Shot& shot) { squares += std::pow(Residual(shot, position), 2); });
        return squares;
    }

    Normals NormalsAt(const Eigen::Vector3d& position) const {
        Normals normals;
        ForUsed([&](const Shot& shot) {
            const Eigen::Vector3d design =
                (position - shot.transmit).normalized() + (position - shot.receive).normalized();
            normals.matrix += design * design.transpose();
            normals.right += design * Residual(shot, position);
        });
        return normals;
    }

    double Rms(double squares) const { return std::sqrt(squares / static_cast<double>(usedCount_)); }

    /// Variance of one two-way path, in square metres.
    double Variance(double squares) const { return squares / static_cast<double>(usedCount_ - kUnknowns); }

    /// Whether the shots hold the position from every side.
    static bool IsStiff(const Normals& normals) {
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(normals.matrix, Eigen::EigenvaluesOnly);
        const auto& values = solver.eigenvalues();  // ascending
        return solver.info() == Eigen::Success && values(0) > kLeastStiffness * values(2);
    }

    /// The least squares below the transducers, by steps from `position`; nothing if they lead nowhere.
    std::optional<Fit> Descend(Eigen::Vector3d position) const {
        double squares = Squares(position);
        for (int step = 0; step < kMostSteps; ++step) {
            const Normals normals = NormalsAt(position);
            const Eigen::Vector3d full = normals.matrix.ldlt().solve(normals.right);
            if (!full.allFinite()) return std::nullopt;
            // A step that overshoots is shortened until it leads downhill.
            double scale = 1.0;
            double nextSquares = HUGE_VAL;
            Eigen::Vector3d next;
            for (int halving = 0; halving < kMostHalvings; ++halving, scale /= 2.0) {
                next = Below(position + scale * full);
                nextSquares = Squares(next);
                if (nextSquares <= squares) break;
            }
            const bool arrived = full.norm() < kConverged;
            if (nextSquares <= squares) {
                position = next;
                squares = nextSquares;
            } else if (!arrived) {
                return std::nullopt;
            }
            if (arrived) return Found(position, squares);
        }
        return std::nullopt;
    }

    /// The best of the least squares that are reached from around the track. A track that is nearly a line
    /// has a second minimum on its other side, so one start is not enough.
    std::optional<Fit> Best() const {
        std::optional<Fit> best;
        for (const Fit& fit : Minima())
            if (!best || fit.squares < best->squares) best = fit;
        return best;
    }

    /// Whether another place, apart from `fit`, goes with the shots as well as it within three sigma.
    bool IsAmbiguous(const Fit& fit, double standardDeviation) const {
        const double margin = kSigmas * kSigmas * (Variance(fit.squares) + kFinest * kFinest);
        const double apart = kSigmas * standardDeviation + kFinest * 1e3;
        return std::ranges::any_of(Minima(), [&](const Fit& other) {
            return other.squares <= fit.squares + margin && (other.position - fit.position).norm() > apart;
        });
    }

    /// Keeps the shots within three times the rms of the used ones; whether that changed any. A shot that
    /// was rejected while others pulled the position away may come back if `readmit` says so.
    bool Reject(const Fit& fit, bool readmit) {
        const double limit = std::max(kSigmas * Rms(fit.squares), kFinest);
        bool changed = false;
        for (std::size_t i = 0; i < shots_.size(); ++i) {
            if (!used_[i] && !readmit) continue;
            const char keep = std::fabs(Residual(shots_[i], fit.position)) <= limit;
            changed = changed || keep != used_[i];
            used_[i] = keep;
        }
        usedCount_ = static_cast<std::size_t>(std::ranges::count(used_, 1));
        return changed;
    }

    std::size_t UsedCount() const { return usedCount_; }
    const std::vector<char>& Used() const { return used_; }

private:
    template <class Work>
    void ForUsed(Work&& work) const {
        for (std::size_t i = 0; i < shots_.size(); ++i)
            if (used_[i]) work(shots_[i]);
    }

    // A level track cannot tell below from above: what is above goes to its mirror image.
    Eigen::Vector3d Below(Eigen::Vector3d position) const {
        position.z() = std::min(position.z(), 2.0 * centre_.z() - position.z());
        return position;
    }

    std::optional<Fit> Found(const Eigen::Vector3d& position, double squares) const {
        if (!position.allFinite() || !std::isfinite(squares) || position.z() >= centre_.z()) return std::nullopt;
        return Fit{position, squares};
    }

    std::vector<Fit> Minima() const {
        const double side = meanRange_ / 2.0;
        const Eigen::Vector3d starts[] = {{0, 0, 0}, {side, 0, 0}, {-side, 0, 0}, {0, side, 0}, {0, -side, 0}};
        std::vector<Fit> minima;
        for (const Eigen::Vector3d& start : starts)
            if (const auto fit = Descend(centre_ + start - Eigen::Vector3d(0, 0, meanRange_))) minima.push_back(*fit);
        return minima;
    }

    const std::vector<Shot>& shots_;
    double soundSpeed_;
    Eigen::Vector3d centre_ = Eigen::Vector3d::Zero();  // mean of the transducer's positions
    double meanRange_ = 0.0;                            // one-way, metres
    std::vector<char> used_;
    std::size_t usedCount_;
};

Solution NoSolution(std::size_t shotCount, std::string whyNot) {
    Solution solution;
    solution.whyNot = std::move(whyNot);
    solution.residuals.assign(shotCount, 0.0);
    solution.used.assign(shotCount, 0);
    return solution;
}

constexpr const char* kTooFew = "a position needs at least 4 shots that agree";
constexpr const char* kNoGeometry =
    "the transducer's track does not fix a position: it is a point, a line, or too far off";
constexpr const char* kAmbiguous = "two positions go with the shots equally well: the track is too straight";

}  // namespace

Solution Solve(const std::vector<Shot>& shots, double soundSpeed) {
    if (shots.size() < kLeastShots) return NoSolution(shots.size(), kTooFew);
    Adjustment adjustment(shots, soundSpeed);
    Progress progress("finished", "rounds of the adjustment");
    std::optional<Fit> fit = adjustment.Best();
    std::size_t rounds = 1;
    while (fit && adjustment.Reject(*fit, rounds < kReadmittingRounds)) {
        if (adjustment.UsedCount() < kLeastShots) return NoSolution(shots.size(), kTooFew);
        fit = adjustment.Descend(fit->position);
        progress.At(++rounds);
    }
    if (!fit) return NoSolution(shots.size(), kNoGeometry);
    const Normals normals = adjustment.NormalsAt(fit->position);
    if (!Adjustment::IsStiff(normals)) return NoSolution(shots.size(), kNoGeometry);
    const double variance = adjustment.Variance(fit->squares);
    const double standardDeviation = std::sqrt(variance * normals.matrix.inverse().trace());
    if (!std::isfinite(standardDeviation)) return NoSolution(shots.size(), kNoGeometry);
    if (adjustment.IsAmbiguous(*fit, standardDeviation)) return NoSolution(shots.size(), kAmbiguous);

    Solution solution;
    solution.solved = true;
    solution.position = fit->position;
    solution.standardDeviation = standardDeviation;
    solution.used = adjustment.Used();
    solution.usedCount = adjustment.UsedCount();
    solution.rms = adjustment.Rms(fit->squares);
    solution.rounds = rounds;
    for (const Shot& shot : shots) solution.residuals.push_back(adjustment.Residual(shot, fit->position));
    return solution;
}

}  // namespace demo
