// SPDX-License-Identifier: MIT
#include "laws/QuiloStereoLaws.h"

#include "laws/QuiloSourceDirection.h"

#include <cmath>

namespace Quilo {

namespace {

constexpr float kQuarterPi = 0.7853982f;
constexpr float kQuarterTurn = 1.5707964f;
// Deliberate: close to sqrt(2) - 1, not equal to it.   (XyGains, KeepsItsOwnFactor)
constexpr float kXyFactor = 0.41421f;
constexpr float kAbFactor = 0.44936f;
constexpr float kAbDelayMs = 1.f;
constexpr float kAbDelaySpreadMs = 0.25f;

}  // namespace

void XyGains(const tav::CartesianVector& source, std::span<float> gains) {
    const SourceDirection d = DirectionOf(source);
    const float fromFront = kQuarterTurn - d.azimuth;
    gains[0] = (std::sin(kQuarterPi - fromFront) * d.width + 1.f) * kXyFactor;
    gains[1] = (std::sin(fromFront + kQuarterPi) * d.width + 1.f) * kXyFactor;
}

void MsGains(const tav::CartesianVector& source, std::span<float> gains) {
    const SourceDirection d = DirectionOf(source);
    gains[0] = (std::sin(d.azimuth) * d.width + 1.f) * 0.5f;
    gains[1] = -0.5f * std::cos(d.azimuth) * d.width;
}

SpacedPair AbPair(const tav::CartesianVector& source) {
    const SourceDirection d = DirectionOf(source);
    const float fromFront = kQuarterTurn - d.azimuth;
    const float spreadMs = std::sin(fromFront) * d.width * kAbDelaySpreadMs;
    return {(std::sin(kQuarterPi - fromFront) * d.width + 1.f) * kAbFactor,
            (std::sin(fromFront + kQuarterPi) * d.width + 1.f) * kAbFactor,
            kAbDelayMs + spreadMs,  // a source on the right reaches the left one later
            kAbDelayMs - spreadMs};
}

}  // namespace Quilo
