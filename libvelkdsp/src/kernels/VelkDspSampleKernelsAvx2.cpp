// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSampleKernels.h"

#include <immintrin.h>
#include <limits>

namespace tav {
namespace {

constexpr int kLanes = 4;

__m256d Magnitude(__m256d v) noexcept { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), v); }

/// All bits set in the lanes of finite numbers.
__m256d IsFinite(__m256d magnitude) noexcept {
    const __m256d infinity = _mm256_set1_pd(std::numeric_limits<double>::infinity());
    return _mm256_cmp_pd(magnitude, infinity, _CMP_LT_OQ);
}

void FromHost(const double* host, float* own, int n) noexcept TAV_NONBLOCKING {
    const __m256d largest = _mm256_set1_pd(kLargestInput);
    const __m256d lowest = _mm256_set1_pd(-kLargestInput);
    const __m256d smallest = _mm256_set1_pd(kSmallestInput);
    int k = 0;
    for (; k + kLanes <= n; k += kLanes) {
        const __m256d sample = _mm256_loadu_pd(host + k);
        const __m256d magnitude = Magnitude(sample);
        const __m256d counts =
            _mm256_and_pd(IsFinite(magnitude), _mm256_cmp_pd(magnitude, smallest, _CMP_GE_OQ));
        const __m256d limited = _mm256_max_pd(_mm256_min_pd(sample, largest), lowest);
        _mm_storeu_ps(own + k, _mm256_cvtpd_ps(_mm256_and_pd(counts, limited)));
    }
    if (k < n) SampleKernels::Scalar().fromHost(host + k, own + k, n - k);
}

void DrainToHost(float* own, double* host, int n) noexcept TAV_NONBLOCKING {
    int k = 0;
    for (; k + kLanes <= n; k += kLanes) {
        const __m256d sample = _mm256_cvtps_pd(_mm_loadu_ps(own + k));
        _mm256_storeu_pd(host + k, _mm256_and_pd(IsFinite(Magnitude(sample)), sample));
        _mm_storeu_ps(own + k, _mm_setzero_ps());
    }
    if (k < n) SampleKernels::Scalar().drainToHost(own + k, host + k, n - k);
}

}  // namespace

const SampleKernels& SampleKernels::Avx2() noexcept {
    static constexpr SampleKernels kKernels{FromHost, DrainToHost};
    return kKernels;
}

}  // namespace tav
