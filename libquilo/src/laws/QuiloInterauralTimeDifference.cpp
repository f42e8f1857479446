// SPDX-License-Identifier: MIT
#include "laws/QuiloInterauralTimeDifference.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

namespace {

// The lengths of paths are close to each other for far sources: their difference is taken in 64
// bits.
constexpr double kSideAzimuth = std::numbers::pi / 2.0;
constexpr double kMsPerMetre = 1000.0 / 343.2;
constexpr double kFarthest = 1e6;  // metres; the square of any 32-bit distance may overflow
constexpr double kNearest = 1e-6;  // for heads without a size
constexpr float kBaseLatencyMs = 1.f;

/// A source as the models see it.
struct Source {
    double azimuth;    // radians, 0 ahead, positive on the right
    double elevation;  // radians
    double distance;   // metres, not inside the head
};

Source SourceAt(const tav::CartesianVector& p, float headRadius) {
    const double distance =
        std::hypot(static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z));
    return {static_cast<double>(tav::NavigationalAzimuthDeg(p) * tav::kRadiansPerDegree),
            static_cast<double>(tav::ElevationRad(p)),
            std::clamp(distance, std::max(static_cast<double>(headRadius), kNearest), kFarthest)};
}

/// Left path minus right path, metres: straight lines to two points a head apart.
double StraightPaths(const Source& s, double a) {
    const double squares = s.distance * s.distance + a * a;
    const double across = 2.0 * a * s.distance * std::sin(s.azimuth);
    return std::sqrt(squares + across) - std::sqrt(std::max(squares - across, 0.0));
}

/// Likewise for a far source in the horizontal plane: straight to the nearer ear, round the sphere
/// to the other one.
double PathsRoundSphere(double azimuth, double a) {
    const double s = std::sin(azimuth);
    if (azimuth > kSideAzimuth) return a * (s - (azimuth - std::numbers::pi));
    if (azimuth < -kSideAzimuth) return a * (s - (azimuth + std::numbers::pi));
    return a * (azimuth + s);
}

/// From a source to a point of a sphere: straight while it is seen, else along the tangent and the
/// surface.  @param angle  of the point beyond the plane across, positive away from the source
double PathToSphere(double distance, double a, double angle) {
    const double squares = distance * distance + a * a;
    const double tangent = std::sqrt(distance * distance - a * a);
    const double straight =
        std::sqrt(std::max(squares + 2.0 * distance * a * std::sin(angle), 0.0));
    if (tangent > straight) return straight;
    const double wrapped = angle + kSideAzimuth - std::acos(std::min(a / distance, 1.0));
    return wrapped * a + tangent;
}

}  // namespace

float InterauralTimeDifference::HalfDifference(const tav::CartesianVector& position,
                                               float measuredMs) const {
    const Source source = SourceAt(position, headRadius);
    const double a = static_cast<double>(headRadius);
    const auto half = [](double metres) { return static_cast<float>(metres * kMsPerMetre * 0.5); };
    switch (type) {
        case Type::Basic: return half(StraightPaths(source, a));
        case Type::Woodworth: return half(PathsRoundSphere(source.azimuth, a));
        case Type::LarcherJot: {
            const double x = std::sin(source.azimuth) * std::cos(source.elevation);
            return half(a * (std::asin(x) + x));
        }
        case Type::Savioja:
            return half(std::cos(source.elevation) * PathsRoundSphere(source.azimuth, a));
        case Type::Miller: {
            const double lateral = std::asin(std::sin(source.azimuth) * std::cos(source.elevation));
            return half(PathToSphere(source.distance, a, lateral) -
                        PathToSphere(source.distance, a, -lateral));
        }
        case Type::None: return 0.f;
        default: return measuredMs * 0.5f;
    }
}

float InterauralTimeDifference::SphereDifference(const tav::CartesianVector& near,
                                                 const tav::CartesianVector& far) const {
    InterauralTimeDifference sphere = *this;
    sphere.type = Type::Miller;
    return sphere.HalfDifference(near, 0.f) - sphere.HalfDifference(far, 0.f);
}

EarDelays InterauralTimeDifference::Delays(const tav::CartesianVector& position,
                                           std::optional<float> measuredMs,
                                           float addedMs) const {
    if (Measures() && !measuredMs) return {};
    const float half = HalfDifference(position, measuredMs.value_or(0.f)) + addedMs;
    switch (latencyMode) {
        case LatencyMode::FixedLatency: {
            const float common = std::max(kBaseLatencyMs, std::abs(half));
            return {common + half, common - half};
        }
        case LatencyMode::NoLatency: return {std::max(2.f * half, 0.f), std::max(-2.f * half, 0.f)};
        default: return {};
    }
}

}  // namespace Quilo
