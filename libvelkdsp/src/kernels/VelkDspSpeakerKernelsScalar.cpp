// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSpeakerKernels.h"

#include <cmath>

namespace tav {
namespace {

void Scale(float* gains, int count, float factor) noexcept {
    for (int k = 0; k < count; ++k) gains[k] *= factor;
}

void GainsByDistance(const float* rows,
                     std::ptrdiff_t stride,
                     int count,
                     const float* metric,
                     float* gains) noexcept {
    const float floor = metric[6] + 1e-10f;
    float energy = 0.f;
    for (int k = 0; k < count; ++k) {
        float squared = floor;
        for (std::ptrdiff_t axis = 0; axis < 3; ++axis) {
            const float difference = rows[axis * stride + k] - metric[axis];
            squared += metric[3 + axis] * (difference * difference);
        }
        const float inverse = 1.f / squared;
        energy += inverse;
        gains[k] = std::sqrt(inverse);
    }
    Scale(gains, count, 1.f / std::sqrt(energy));
}

bool GainsByAngle(const float* rows,
                  std::ptrdiff_t stride,
                  int count,
                  float x,
                  float y,
                  float exponent,
                  float* gains) noexcept {
    float energy = 0.f;
    for (int k = 0; k < count; ++k) {
        const float sumX = rows[k] + x;
        const float sumY = rows[stride + k] + y;
        // |u + v|^2 = 2 (1 + cos)
        float base = 0.5f * (sumX * sumX + sumY * sumY);
        if (base < kCosineResolution) base = 0.f;
        gains[k] = (exponent == 1.f ? base : std::pow(base, exponent)) * rows[2 * stride + k];
        energy += gains[k] * gains[k];
    }
    if (energy == 0.f) return false;
    Scale(gains, count, 1.f / std::sqrt(energy));
    return true;
}

}  // namespace

const SpeakerKernels& SpeakerKernels::Scalar() noexcept {
    static constexpr SpeakerKernels kKernels{GainsByDistance, GainsByAngle};
    return kKernels;
}

}  // namespace tav
