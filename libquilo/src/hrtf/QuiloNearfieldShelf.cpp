// SPDX-License-Identifier: MIT
#include "hrtf/QuiloNearfieldShelf.h"

#include "hrtf/QuiloRigidSphere.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numbers>
#include <vector>

namespace Quilo {

namespace {

constexpr double kSphereRadius = 0.0875;  // metres
constexpr std::size_t kNumTones = 40;
constexpr double kLowestTone = 50.0;
constexpr double kHighestTone = 16000.0;
constexpr double kShelfDistances[] = {.15, .175, .2, .25, .3, .35, .4,
                                      .5,  .6,   .7, .85, 1., 1.2, 1.4};

using Tones = std::array<double, kNumTones>;

Tones ShelfTones() {
    Tones tones{};
    const double step = std::log(kHighestTone / kLowestTone) / (kNumTones - 1);
    for (std::size_t k = 0; k < kNumTones; ++k) {
        tones[k] = kLowestTone * std::exp(step * static_cast<double>(k));
    }
    return tones;
}

double AngleOf(std::size_t index) { return static_cast<double>(index) * std::numbers::pi / 18.0; }

double Decibels(double magnitude) { return 20.0 * std::log10(magnitude); }

/// Fits the upper gain and the corner of a shelf to levels, by damped Gauss-Newton steps.
class ShelfFit {
public:
    ShelfFit(double lowDb, const Tones& tones, const Tones& levels)
        : low_(std::pow(10.0, lowDb / 10.0)),
          tones_(tones),
          levels_(levels) {}

    /// @return the error: the sum of the squares of decibels
    double Run(double& highDb, double& logCorner) const {
        double damping = 1e-3;
        double error = ErrorOf(highDb, logCorner);
        for (int step = 0; step < kMostSteps && damping < kLargestDamping; ++step) {
            double a = 0.0, b = 0.0, c = 0.0, u = 0.0, v = 0.0;  // normal equations
            for (std::size_t k = 0; k < kNumTones; ++k) {
                const double miss = levels_[k] - LevelOf(k, highDb, logCorner);
                const double byHigh =
                    (LevelOf(k, highDb + kNudge, logCorner) - LevelOf(k, highDb, logCorner)) /
                    kNudge;
                const double byCorner =
                    (LevelOf(k, highDb, logCorner + kNudge) - LevelOf(k, highDb, logCorner)) /
                    kNudge;
                a += byHigh * byHigh;
                b += byHigh * byCorner;
                c += byCorner * byCorner;
                u += byHigh * miss;
                v += byCorner * miss;
            }
            const double dampedA = a * (1.0 + damping) + kTiny,
                         dampedC = c * (1.0 + damping) + kTiny;
            const double determinant = dampedA * dampedC - b * b;
            const double nextHigh =
                std::clamp(highDb + (dampedC * u - b * v) / determinant, -kMostDb, kMostDb);
            const double nextCorner = std::clamp(logCorner + (dampedA * v - b * u) / determinant,
                                                 std::log(kLowestTone), std::log(kHighestTone));
            const double next = ErrorOf(nextHigh, nextCorner);
            if (next < error) {
                highDb = nextHigh;
                logCorner = nextCorner;
                if (error - next < kConverged * error) return next;
                error = next;
                damping *= 0.2;
            } else {
                damping *= 5.0;
            }
        }
        return error;
    }

private:
    static constexpr int kMostSteps = 60;
    static constexpr double kLargestDamping = 1e8;
    static constexpr double kConverged = 1e-9;
    static constexpr double kNudge = 1e-5;
    static constexpr double kTiny = 1e-12;
    static constexpr double kMostDb = 40.0;

    double LevelOf(std::size_t tone, double highDb, double logCorner) const {
        const double s = tones_[tone] * std::exp(-logCorner);
        const double high = std::pow(10.0, highDb / 10.0);
        return 10.0 * std::log10((low_ + high * s * s) / (1.0 + s * s));
    }
    double ErrorOf(double highDb, double logCorner) const {
        double sum = 0.0;
        for (std::size_t k = 0; k < kNumTones; ++k) {
            const double miss = levels_[k] - LevelOf(k, highDb, logCorner);
            sum += miss * miss;
        }
        return sum;
    }

    double low_;  // g0 squared
    const Tones& tones_;
    const Tones& levels_;
};

NearfieldShelf FitShelf(double lowDb, const Tones& tones, const Tones& levels) {
    const ShelfFit fit(lowDb, tones, levels);
    double best = std::numeric_limits<double>::infinity();
    NearfieldShelf shelf;
    for (const double startHz : {400.0, 1500.0, 6000.0}) {
        double highDb = levels.back(), logCorner = std::log(startHz);
        const double error = fit.Run(highDb, logCorner);
        if (error >= best) continue;
        best = error;
        shelf = {static_cast<float>(lowDb), static_cast<float>(highDb),
                 static_cast<float>(std::exp(logCorner))};
    }
    return shelf;
}

}  // namespace

SphereShelves::SphereShelves() {
    static_assert(std::size(kShelfDistances) == kNumDistances);
    const Tones tones = ShelfTones();
    const auto fieldsAt = [&](double distance) {
        std::vector<RigidSphereField> fields{{kSphereRadius, distance, 0.0}};
        for (const double hz : tones) fields.emplace_back(kSphereRadius, distance, hz);
        return fields;
    };
    const auto far = fieldsAt(kFar);
    for (std::size_t d = 0; d + 1 < kNumDistances; ++d) {
        const auto near = fieldsAt(kShelfDistances[d]);
        for (std::size_t angle = 0; angle < kNumAngles; ++angle) {
            const double cosine = std::cos(AngleOf(angle));
            const auto levelOf = [&](std::size_t k) {
                return Decibels(near[k].Magnitude(cosine) / far[k].Magnitude(cosine));
            };
            Tones levels{};
            for (std::size_t k = 0; k < kNumTones; ++k) levels[k] = levelOf(k + 1);
            table_[d][angle] = FitShelf(levelOf(0), tones, levels);
        }
    }
    // At the far end nothing is left of the shelf; its corner has nowhere to go.
    for (std::size_t angle = 0; angle < kNumAngles; ++angle) {
        table_.back()[angle].cornerHz = table_[kNumDistances - 2][angle].cornerHz;
    }
}

const SphereShelves& SphereShelves::Get() {
    static const SphereShelves shelves;
    return shelves;
}

NearfieldShelf SphereShelves::At(double distance, double angleRad) const noexcept {
    if (!(distance < kFar)) return {};
    const double r = std::max(distance, kNearest);
    const auto above =
        std::upper_bound(std::begin(kShelfDistances) + 1, std::end(kShelfDistances) - 1, r);
    const auto d = static_cast<std::size_t>(above - std::begin(kShelfDistances)) - 1;
    const double alongDistance =
        std::log(r / kShelfDistances[d]) / std::log(kShelfDistances[d + 1] / kShelfDistances[d]);
    const double steps =
        std::clamp(angleRad, 0.0, std::numbers::pi) / (std::numbers::pi / (kNumAngles - 1));
    const auto angle = std::min(static_cast<std::size_t>(steps), kNumAngles - 2);
    const double alongAngle = steps - static_cast<double>(angle);
    const auto between = [&](auto valueOf) {
        const auto at = [&](std::size_t row) {
            return std::lerp(valueOf(table_[row][angle]), valueOf(table_[row][angle + 1]),
                             alongAngle);
        };
        return static_cast<float>(std::lerp(at(d), at(d + 1), alongDistance));
    };
    const auto lowOf = [](const NearfieldShelf& s) { return static_cast<double>(s.lowDb); };
    const auto highOf = [](const NearfieldShelf& s) { return static_cast<double>(s.highDb); };
    const auto cornerOf = [](const NearfieldShelf& s) {
        return std::log(static_cast<double>(s.cornerHz));
    };
    return {between(lowOf), between(highOf), std::exp(between(cornerOf))};
}

}  // namespace Quilo
