// SPDX-License-Identifier: MIT
#include "laws/QuiloSurroundLaw.h"

#include "laws/QuiloSourceDirection.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

/// Where in [begin, end] a value lies, as degrees of a quarter turn.
float QuarterTurnDeg(float value, float begin, float end) {
    const float span = end - begin;
    return span > 0.f ? (value - begin) / span * 90.f : 0.f;  // coincident loudspeakers stay finite
}

/// A triangle wave over one turn: 2 at 0, -2 at 180.
float Triangle(double deg) {
    const double value = deg <= 180.0 ? 2.0 - deg / 45.0 : (deg - 180.0) / 45.0 - 2.0;
    return std::clamp(static_cast<float>(value), -1.f, 1.f);
}

}  // namespace

void SurroundLaw::SetSpeakers(const tav::CartesianArray& speakers, std::size_t numOutputs) {
    const std::size_t right = numOutputs == 4 ? 2 : 1;
    if (speakers.Size() > 0) azimuthsDeg_[0] = tav::NavigationalAzimuthDeg(speakers[0]);
    if (speakers.Size() > right) azimuthsDeg_[1] = tav::NavigationalAzimuthDeg(speakers[right]);
}

double SurroundLaw::WarpedAzimuthDeg(float azimuthDeg) const {
    std::array<float, 4> s{};
    std::ranges::transform(azimuthsDeg_, s.begin(), [](float deg) { return tav::Wrap360(deg); });
    for (std::size_t k = 1; k < s.size(); ++k) {
        while (s[k] < s[k - 1]) s[k] += 360.f;
    }
    const float a = tav::Wrap360(azimuthDeg - s[0]) + s[0];
    const float warped = a < s[1]   ? QuarterTurnDeg(a, s[0], s[1])
                         : a < s[2] ? QuarterTurnDeg(a, s[1], s[2]) + 90.f
                         : a < s[3] ? QuarterTurnDeg(a, s[2], s[3]) + 180.f
                                    : QuarterTurnDeg(a, s[3], s[0] + 360.f) + 270.f;
    return tav::Wrap360(static_cast<double>(warped) - 45.0);
}

void SurroundLaw::Gains(const tav::CartesianVector& source, std::span<float> gains) const {
    // 1. Elevation, raised towards the zenith when the source is nearer than one metre.
    const SourceDirection d = DirectionOf(source);
    float azimuthDeg = tav::NavigationalAzimuthDeg(source);
    float elevationDeg =
        d.elevation * tav::kDegreesPerRadian +
        std::acos(std::min(std::max(d.distance, -1.f), 1.f)) * tav::kDegreesPerRadian;
    if (elevationDeg > 180.f) elevationDeg -= 360.f;
    if (elevationDeg < -180.f) elevationDeg += 360.f;

    // 2. Past the zenith the source stands on the other side.
    const float horizontal = std::cos(elevationDeg * tav::kRadiansPerDegree);
    if (horizontal < 0.f) azimuthDeg += 180.f;
    const float focus = std::fabs(horizontal);

    // 3. Two crossed triangle waves: front to rear, left to right.
    const double warpedDeg = WarpedAzimuthDeg(azimuthDeg);
    const float a = Triangle(warpedDeg) * focus;
    const float b = Triangle(tav::Wrap360(warpedDeg - 90.0)) * focus;
    const float front = (1.f + a) / 2.f;
    const float rear = (1.f - a) / 2.f;
    const float right = (1.f + b) / 2.f;
    const float left = (1.f - b) / 2.f;

    // 4. Powers of the outputs.
    const float frontLeft = front * left;
    const float frontRight = front * right;
    const float behind = std::clamp(rear * right + rear * left, 0.f, 1.f);
    if (gains.size() == 3) {
        gains[0] = std::sqrt(frontLeft);
        gains[1] = std::sqrt(frontRight);
        gains[2] = std::sqrt(behind);
        return;
    }
    const float leftOnly = std::clamp(frontLeft - frontRight, 0.f, 1.f);
    const float rightOnly = std::clamp(frontRight - frontLeft, 0.f, 1.f);
    gains[0] = std::sqrt(leftOnly);
    gains[1] = std::sqrt(std::max(frontLeft + frontRight - (rightOnly + leftOnly), 0.f));
    gains[2] = std::sqrt(rightOnly);
    gains[3] = std::sqrt(behind);
}

}  // namespace Quilo
