// SPDX-License-Identifier: MIT
#include "laws/QuiloHeadShadow.h"

#include "laws/QuiloNearFieldLaw.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <numbers>

namespace Quilo {

namespace {

// In steps of 10 degrees, fitted to the sphere. The bright spot that a perfect sphere has exactly
// opposite to the source is left out: heads have none.
constexpr float kAlphas[] = {2.06f, 2.05f, 2.03f, 2.00f, 1.95f, 1.87f, 1.78f, 1.65f, 1.49f, 1.30f,
                             1.10f, 0.90f, 0.71f, 0.55f, 0.42f, 0.33f, 0.27f, 0.33f, 0.40f};
constexpr float kStepDeg = 10.f;

}  // namespace

float HeadShadowAlpha(float cosine) {
    const float step = std::acos(std::clamp(cosine, -1.f, 1.f)) * tav::kDegreesPerRadian / kStepDeg;
    const auto below = std::min(static_cast<std::size_t>(step), std::size(kAlphas) - 2);
    return std::lerp(kAlphas[below], kAlphas[below + 1], step - static_cast<float>(below));
}

float ShadowCornerHz(float radius) {
    if (radius <= 0.f) return std::numeric_limits<float>::infinity();
    return static_cast<float>(kSpeedOfSound) / (std::numbers::pi_v<float> * radius);
}

float CosineToRightEar(const tav::CartesianVector& source) {
    return source.x / std::hypot(source.x, source.y, source.z);
}

}  // namespace Quilo
