// SPDX-License-Identifier: MIT
#include "HostCoverage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace Quilo::Host {

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kSilentPower = 1e-8;  // a gain of 1e-4; less counts as silent

using Vector = std::array<double, 3>;

Vector Widened(const tav::CartesianVector& v) {
    return {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)};
}

double Dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

double Length(const Vector& v) { return std::hypot(v[0], v[1], v[2]); }

Vector Unit(const Vector& v) {
    const double length = Length(v);
    return length > 0 ? Vector{v[0] / length, v[1] / length, v[2] / length} : Vector{};
}

Vector DirectionOf(const DirectionCell& cell) {
    const double azimuth = cell.azimuthDeg * kDegree, elevation = cell.elevationDeg * kDegree;
    return {std::sin(azimuth) * std::cos(elevation), std::cos(azimuth) * std::cos(elevation),
            std::sin(elevation)};
}

/// Accurate for small angles as well, where the arc cosine would not be.
double AngleDeg(const Vector& a, const Vector& b) {
    const Vector cross{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                       a[0] * b[1] - a[1] * b[0]};
    return std::atan2(Length(cross), Dot(a, b)) / kDegree;
}

HeardDirection Hear(const DirectionCell& cell,
                    std::span<const float> gains,
                    std::span<const Vector> speakers) {
    HeardDirection heard;
    Vector sum{};
    double size = 0;
    for (std::size_t k = 0; k < gains.size(); ++k) {
        const auto gain = static_cast<double>(gains[k]);
        heard.power += gain * gain;
        size += std::abs(gain);
        for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += gain * speakers[k][axis];
    }
    heard.errorDeg = Length(sum) > 1e-6 * size ? AngleDeg(sum, DirectionOf(cell)) : 180;
    return heard;
}

/// The mean error, weighted by `weight` of the cell, and the largest one, without silent cells.
template <class Weight>
void MeasureErrors(std::span<const DirectionCell> grid,
                   std::span<const HeardDirection> heard,
                   Weight weight,
                   double& mean,
                   Coverage::Extreme& worst) {
    double sum = 0, whole = 0;
    worst.value = -1;
    for (std::size_t k = 0; k < grid.size(); ++k) {
        if (heard[k].IsSilent() || weight(grid[k]) == 0) continue;
        whole += weight(grid[k]);
        sum += weight(grid[k]) * heard[k].errorDeg;
        // The margin keeps rounding errors from choosing among cells of equal error.
        if (heard[k].errorDeg > worst.value + 1e-3) worst = {heard[k].errorDeg, k};
    }
    mean = whole > 0 ? sum / whole : 0;
    worst.value = std::max(worst.value, 0.0);
}

/// The silent cell that is farthest from any cell that is not silent.
std::size_t MiddleOfTheSilence(std::span<const DirectionCell> grid,
                               std::span<const HeardDirection> heard) {
    std::size_t middle = 0;
    double least = 2;  // cosine of the angle to the nearest cell that is not silent
    for (std::size_t k = 0; k < grid.size(); ++k) {
        if (!heard[k].IsSilent()) continue;
        double nearest = -1;
        for (std::size_t other = 0; other < grid.size(); ++other)
            if (!heard[other].IsSilent())
                nearest = std::max(nearest, Dot(DirectionOf(grid[k]), DirectionOf(grid[other])));
        if (nearest < least - 1e-6) {
            least = nearest;
            middle = k;
        }
    }
    return middle;
}

Coverage::Extreme Quietest(std::span<const DirectionCell> grid,
                           std::span<const HeardDirection> heard) {
    const auto quietest = std::ranges::min_element(heard, {}, &HeardDirection::power);
    auto cell = static_cast<std::size_t>(quietest - heard.begin());
    if (quietest->IsSilent()) cell = MiddleOfTheSilence(grid, heard);
    return {heard[cell].power, cell};
}

/// For each loudspeaker the index of the one at its mirror image; nothing when some have none.
std::optional<std::vector<std::size_t>> MirrorImages(std::span<const Vector> speakers) {
    std::vector<std::size_t> images;
    for (const Vector& speaker : speakers) {
        const double tolerance = 1e-3 * Length(speaker);
        const auto image = std::ranges::find_if(speakers, [&](const Vector& other) {
            return Length({other[0] + speaker[0], other[1] - speaker[1], other[2] - speaker[2]}) <=
                   tolerance;
        });
        if (image == speakers.end()) return std::nullopt;
        images.push_back(static_cast<std::size_t>(image - speakers.begin()));
    }
    return images;
}

Coverage::Extreme LargestDifference(std::span<const DirectionCell> grid,
                                    std::span<const float> gains,
                                    std::span<const std::size_t> images) {
    Coverage::Extreme largest;
    const std::size_t numSpeakers = images.size();
    for (std::size_t k = 0; k < grid.size(); ++k)
        for (std::size_t speaker = 0; speaker < numSpeakers; ++speaker) {
            const float mirrored = gains[grid[k].mirror * numSpeakers + images[speaker]];
            const double difference =
                static_cast<double>(std::abs(gains[k * numSpeakers + speaker] - mirrored));
            if (difference > largest.value + 1e-6) largest = {difference, k, speaker};
        }
    return largest;
}

}  // namespace

std::vector<DirectionCell> DirectionGrid(double stepDeg) {
    std::vector<DirectionCell> grid;
    const auto numSteps = static_cast<int>(std::round(90 / stepDeg));
    for (int ring = -numSteps; ring <= numSteps; ++ring) {
        const double elevation = ring * stepDeg;
        const double bottom = std::max(elevation - stepDeg / 2, -90.0);
        const double top = std::min(elevation + stepDeg / 2, 90.0);
        const bool isPole = std::abs(ring) == numSteps;
        const double quarter = std::round(90 * std::cos(elevation * kDegree) / stepDeg);
        const auto count =
            isPole ? std::size_t{1} : static_cast<std::size_t>(4 * std::max(quarter, 1.0));
        const auto zone = [](double low, double high) {
            return (std::sin(high * kDegree) - std::sin(low * kDegree)) / 2;
        };
        const double each = 1 / static_cast<double>(count);
        const double upper = top > 0 ? 2 * zone(std::max(bottom, 0.0), top) : 0;
        const std::size_t first = grid.size();
        for (std::size_t k = 0; k < count; ++k) {
            const double azimuth = 360 * static_cast<double>(k) * each;
            grid.push_back({azimuth > 180 ? azimuth - 360 : azimuth, elevation, 360 * each, bottom,
                            top, zone(bottom, top) * each, upper * each,
                            first + (count - k) % count});
        }
    }
    return grid;
}

tav::CartesianVector UnitVector(const DirectionCell& cell) {
    const Vector direction = DirectionOf(cell);
    return {static_cast<float>(direction[0]), static_cast<float>(direction[1]),
            static_cast<float>(direction[2])};
}

bool HeardDirection::IsSilent() const { return power < kSilentPower; }

Coverage SummariseCoverage(std::span<const DirectionCell> grid,
                           std::span<const float> gains,
                           std::span<const tav::CartesianVector> speakers) {
    Coverage coverage;
    std::vector<Vector> places, directions;
    coverage.isFlat = true;
    for (const auto& speaker : speakers) {
        places.push_back(Widened(speaker));
        directions.push_back(Unit(places.back()));
        coverage.isFlat &= std::abs(directions.back()[2]) < 1e-3;
    }
    for (std::size_t k = 0; k < grid.size(); ++k) {
        const auto row = gains.subspan(k * speakers.size(), speakers.size());
        coverage.heard.push_back(Hear(grid[k], row, directions));
        if (!coverage.heard.back().IsSilent()) continue;
        coverage.silentShare += grid[k].share;
        coverage.silentUpperShare += grid[k].upperShare;
    }
    coverage.quietest = Quietest(grid, coverage.heard);
    MeasureErrors(
        grid, coverage.heard, [](const DirectionCell& cell) { return cell.share; },
        coverage.meanErrorDeg, coverage.worstErrorDeg);
    MeasureErrors(
        grid, coverage.heard,
        [](const DirectionCell& cell) { return cell.elevationDeg == 0 ? 1.0 : 0.0; },
        coverage.meanHorizonErrorDeg, coverage.worstHorizonErrorDeg);
    if (const auto images = MirrorImages(places))
        coverage.leftRight = LargestDifference(grid, gains, *images);
    return coverage;
}

}  // namespace Quilo::Host
