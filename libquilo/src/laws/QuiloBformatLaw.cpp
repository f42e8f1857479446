// SPDX-License-Identifier: MIT
#include "laws/QuiloBformatLaw.h"

#include "laws/QuiloSourceDirection.h"

#include <cmath>
#include <numbers>

namespace Quilo {

namespace {

const float kSqrtTwoThirds = static_cast<float>(std::sqrt(2.0 / 3.0));
const float kInvSqrtThree = static_cast<float>(1.0 / std::sqrt(3.0));
const float kSqrtTwo = static_cast<float>(std::sqrt(2.0));

}  // namespace

void BformatGains(const tav::CartesianVector& source, std::span<float> gains) {
    const SourceDirection d = DirectionOf(source);
    const float horizontal = std::cos(d.elevation);
    if (gains.size() == 3) {
        gains[0] = std::sqrt(1.f - horizontal * horizontal * 0.6666667f);
        gains[1] = kSqrtTwoThirds * std::cos(d.azimuth) * horizontal;
        gains[2] = kSqrtTwoThirds * std::sin(d.azimuth) * horizontal;
        return;
    }
    if (gains.size() != 4) return;
    gains[0] = kInvSqrtThree;
    gains[1] = kSqrtTwo * std::cos(d.azimuth) * horizontal;
    gains[2] = kSqrtTwo * std::sin(d.azimuth) * horizontal;
    gains[3] = kSqrtTwo * std::sin(d.elevation);
}

std::vector<tav::AmbixChannel> BformatToAmbix() {
    constexpr double kHalfSqrt2 = std::numbers::sqrt2 / 2.0;
    return {{0, std::numbers::sqrt3}, {1, -kHalfSqrt2}, {3, kHalfSqrt2}, {2, kHalfSqrt2}};
}

}  // namespace Quilo
