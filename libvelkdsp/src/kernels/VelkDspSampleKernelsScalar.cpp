// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSampleKernels.h"

#include <cmath>

namespace tav {
namespace {

float FromHostSample(double sample) noexcept TAV_NONBLOCKING {
    const double magnitude = std::abs(sample);
    // Ordinary samples take the first branch.
    if (magnitude >= kSmallestInput && magnitude <= kLargestInput) {
        return static_cast<float>(sample);
    }
    const bool isLarge = std::isfinite(sample) && magnitude > kLargestInput;
    return isLarge ? static_cast<float>(std::copysign(kLargestInput, sample)) : 0.f;
}

void FromHost(const double* host, float* own, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) own[k] = FromHostSample(host[k]);
}

void DrainToHost(float* own, double* host, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        host[k] = std::isfinite(own[k]) ? static_cast<double>(own[k]) : 0.0;
        own[k] = 0.f;
    }
}

}  // namespace

const SampleKernels& SampleKernels::Scalar() noexcept {
    static constexpr SampleKernels kKernels{FromHost, DrainToHost};
    return kKernels;
}

}  // namespace tav
