// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSampleKernels.h"

#include <immintrin.h>
#include <limits>

namespace tav {
namespace {

// With some compilers a few intrinsics without a mask warn of uninitialised registers; they are
// used with a mask that selects all lanes.
constexpr int kLanes = 8;
constexpr __mmask8 kAll = 0xff;

void FromHost(const double* host, float* own, int n) noexcept TAV_NONBLOCKING {
    const __m512d infinity = _mm512_set1_pd(std::numeric_limits<double>::infinity());
    const __m512d largest = _mm512_set1_pd(kLargestInput);
    const __m512d lowest = _mm512_set1_pd(-kLargestInput);
    const __m512d smallest = _mm512_set1_pd(kSmallestInput);
    int k = 0;
    for (; k + kLanes <= n; k += kLanes) {
        const __m512d sample = _mm512_loadu_pd(host + k);
        const __m512d magnitude = _mm512_abs_pd(sample);
        const __mmask8 isFinite = _mm512_cmp_pd_mask(magnitude, infinity, _CMP_LT_OQ);
        const __mmask8 counts = _mm512_mask_cmp_pd_mask(isFinite, magnitude, smallest, _CMP_GE_OQ);
        const __m512d limited =
            _mm512_maskz_max_pd(kAll, _mm512_maskz_min_pd(kAll, sample, largest), lowest);
        _mm256_storeu_ps(own + k, _mm512_maskz_cvtpd_ps(counts, limited));
    }
    if (k < n) SampleKernels::Scalar().fromHost(host + k, own + k, n - k);
}

/// A store to memory outside the cache waits for its cache line, each store for its own. Lines that
/// are prefetched together arrive together, so all lines of a run are asked for before its first
/// store. For less than a run a prefetch costs more than it saves.
constexpr int kRun = 64;  // samples
void FetchRun(const double* host, int n) noexcept {
    if (n < kRun) return;
    for (int k = 0; k < kRun; k += kLanes) {
        _mm_prefetch(reinterpret_cast<const char*>(host + k), _MM_HINT_T0);
    }
}

void DrainToHost(float* own, double* host, int n) noexcept TAV_NONBLOCKING {
    const __m512 infinity = _mm512_set1_ps(std::numeric_limits<float>::infinity());
    int k = 0;
    for (; k + 2 * kLanes <= n; k += 2 * kLanes) {
        if (k % kRun == 0) FetchRun(host + k, n - k);
        const __m512 magnitudes = _mm512_abs_ps(_mm512_loadu_ps(own + k));
        const unsigned isFinite = _mm512_cmp_ps_mask(magnitudes, infinity, _CMP_LT_OQ);
        const auto first = static_cast<__mmask8>(isFinite & kAll);
        const auto second = static_cast<__mmask8>(isFinite >> kLanes);
        const __m256 low = _mm256_loadu_ps(own + k);
        const __m256 high = _mm256_loadu_ps(own + k + kLanes);
        _mm512_storeu_pd(host + k, _mm512_maskz_cvtps_pd(first, low));
        _mm512_storeu_pd(host + k + kLanes, _mm512_maskz_cvtps_pd(second, high));
        _mm512_storeu_ps(own + k, _mm512_setzero_ps());
    }
    if (k < n) SampleKernels::Scalar().drainToHost(own + k, host + k, n - k);
}

}  // namespace

const SampleKernels& SampleKernels::Avx512() noexcept {
    static constexpr SampleKernels kKernels{FromHost, DrainToHost};
    return kKernels;
}

}  // namespace tav
