// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSampleKernels.h"

#include <bit>
#include <cstdint>
#include <immintrin.h>
#include <limits>

namespace tav {
namespace {

// With some compilers a few intrinsics without a mask warn of uninitialised registers; they are
// used with a mask that selects all lanes.
constexpr int kLanes = 8;
constexpr __mmask8 kAll = 0xff;
constexpr int kRun = 64;  // samples that are treated together

/// The mapping sample by sample, in the order of its definition.
void MapEach(const double* host, float* own, int n) noexcept {
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

/// Converts the samples of a run, with 0 for -0, and tells whether that is what the mapping gives.
/// It is where each result is 0 or has a magnitude from 2e-30 to 1e6: kSmallestInput and rounding
/// concern other ones only. As whole numbers, the bits of magnitudes are in the same order, and 0
/// minus 1 is the largest of all.
bool ConvertRun(const double* host, float* own) noexcept {
    const __m512i one = _mm512_set1_epi32(1);
    __m512i smallest = _mm512_set1_epi32(-1);
    __m512i largest = _mm512_setzero_si512();
    for (int k = 0; k < kRun; k += 2 * kLanes) {
        const __m256 low = _mm512_maskz_cvtpd_ps(kAll, _mm512_loadu_pd(host + k));
        const __m256 high = _mm512_maskz_cvtpd_ps(kAll, _mm512_loadu_pd(host + k + kLanes));
        const __m512d both = _mm512_maskz_insertf64x4(
            kAll, _mm512_castps_pd(_mm512_castps256_ps512(low)), _mm256_castps_pd(high), 1);
        const __m512 samples = _mm512_add_ps(_mm512_castpd_ps(both), _mm512_setzero_ps());
        _mm512_storeu_ps(own + k, samples);
        const __m512i bits = _mm512_castps_si512(samples);
        const __m512i magnitudes = _mm512_add_epi32(bits, bits);  // without the sign, twice
        smallest = _mm512_maskz_min_epu32(0xffff, smallest, _mm512_sub_epi32(magnitudes, one));
        largest = _mm512_maskz_max_epu32(0xffff, largest, magnitudes);
    }
    constexpr auto kLeast = static_cast<int>(2 * std::bit_cast<std::uint32_t>(2e-30f) - 1);
    constexpr auto kMost =
        static_cast<int>(2 * std::bit_cast<std::uint32_t>(static_cast<float>(kLargestInput)));
    return (_mm512_cmplt_epu32_mask(smallest, _mm512_set1_epi32(kLeast)) |
            _mm512_cmpgt_epu32_mask(largest, _mm512_set1_epi32(kMost))) == 0;
}

void FromHost(const double* host, float* own, int n) noexcept TAV_NONBLOCKING {
    int k = 0;
    for (; k + kRun <= n; k += kRun) {
        if (!ConvertRun(host + k, own + k)) MapEach(host + k, own + k, kRun);
    }
    if (k < n) MapEach(host + k, own + k, n - k);
}

/// A store to memory outside the cache waits for its cache line, each store for its own. Lines that
/// are prefetched together arrive together, so all lines of a run are asked for before its first
/// store. For less than a run a prefetch costs more than it saves.
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
