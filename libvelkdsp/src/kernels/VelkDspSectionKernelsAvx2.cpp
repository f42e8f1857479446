// SPDX-License-Identifier: MIT
#include "kernels/VelkDspSectionKernels.h"

#include <algorithm>
#include <cstddef>
#include <immintrin.h>

namespace tav {
namespace {

constexpr int kVectorLanes = 4;

class Avx2Sections {
public:
    template <bool kMoving>
    static void Run(const SectionRun& run) noexcept TAV_NONBLOCKING {
        const int vectors = (run.numLanes + kVectorLanes - 1) / kVectorLanes;
        // The count is known to the compiler, so that states stay in registers.
        switch (vectors) {
            case 1: return RunVectors<kMoving, 1>(run);
            case 2: return RunVectors<kMoving, 2>(run);
            case 3: return RunVectors<kMoving, 3>(run);
            default: return RunVectors<kMoving, kSectionLanes / kVectorLanes>(run);
        }
    }

private:
    using Vec = __m256d;
    template <int kCount>
    using Vecs = Vec[static_cast<std::size_t>(kCount)];
    static constexpr int kBlock = 32;                      // samples that are turned at a time
    static constexpr std::ptrdiff_t kRow = kSectionLanes;  // from a sample to the next

    template <bool kMoving, int kVectors>
    static void RunVectors(const SectionRun& run) noexcept TAV_NONBLOCKING {
        constexpr int kUsed = kVectors * kVectorLanes;
        double rows[kBlock * kRow];
        float unheard[kBlock];
        for (int done = 0; done < run.n; done += kBlock) {
            const int n = std::min(run.n - done, kBlock);
            const float* inputs[kSectionLanes];
            float* outputs[kSectionLanes];
            for (int lane = 0; lane < kUsed; ++lane) {
                const bool used = lane < run.numLanes;
                inputs[lane] = run.inputs[used ? lane : 0] + done;
                outputs[lane] = used ? run.outputs[lane] + done : unheard;
            }
            for (int lane = 0; lane < kUsed; lane += 4) Gather(rows, inputs + lane, lane, n);
            for (int b = 0; b < run.numBanks; ++b) {
                RunBank<kMoving, kVectors>(run.banks[b], rows, n);
            }
            for (int lane = 0; lane < kUsed; lane += 4) Scatter(outputs + lane, rows, lane, n);
        }
    }

    template <bool kMoving, int kVectors>
    static void RunBank(SectionBank& bank, double* rows, int n) noexcept TAV_NONBLOCKING {
        Vecs<kVectors> s1;
        Vecs<kVectors> s2;
        Vecs<kVectors> m0;
        Vecs<kVectors> m1;
        Vecs<kVectors> m2;
        for (int v = 0; v < kVectors; ++v) {
            const int lane = v * kVectorLanes;
            s1[v] = _mm256_loadu_pd(bank.s1 + lane);
            s2[v] = _mm256_loadu_pd(bank.s2 + lane);
            m0[v] = _mm256_loadu_pd(bank.m0 + lane);
            m1[v] = _mm256_loadu_pd(bank.m1 + lane);
            m2[v] = _mm256_loadu_pd(bank.m2 + lane);
        }
        for (int k = 0; k < n; ++k) {
            for (int v = 0; v < kVectors; ++v) {
                const int lane = v * kVectorLanes;
                double* const row = rows + k * kRow + lane;
                if constexpr (kMoving) {
                    m0[v] = _mm256_add_pd(m0[v], _mm256_loadu_pd(bank.step0 + lane));
                    m1[v] = _mm256_add_pd(m1[v], _mm256_loadu_pd(bank.step1 + lane));
                    m2[v] = _mm256_add_pd(m2[v], _mm256_loadu_pd(bank.step2 + lane));
                }
                const Vec a2 = _mm256_loadu_pd(bank.a2 + lane);
                const Vec x = _mm256_loadu_pd(row);
                const Vec v3 = _mm256_sub_pd(x, s2[v]);
                const Vec band =
                    _mm256_fmadd_pd(a2, v3, _mm256_mul_pd(_mm256_loadu_pd(bank.a1 + lane), s1[v]));
                const Vec low = _mm256_fmadd_pd(_mm256_loadu_pd(bank.a3 + lane), v3,
                                                _mm256_fmadd_pd(a2, s1[v], s2[v]));
                s1[v] = _mm256_sub_pd(_mm256_add_pd(band, band), s1[v]);
                s2[v] = _mm256_sub_pd(_mm256_add_pd(low, low), s2[v]);
                _mm256_storeu_pd(
                    row, _mm256_fmadd_pd(m2[v], low,
                                         _mm256_fmadd_pd(m1[v], band, _mm256_mul_pd(m0[v], x))));
            }
        }
        for (int v = 0; v < kVectors; ++v) {
            const int lane = v * kVectorLanes;
            _mm256_storeu_pd(bank.s1 + lane, s1[v]);
            _mm256_storeu_pd(bank.s2 + lane, s2[v]);
            if constexpr (kMoving) {
                _mm256_storeu_pd(bank.m0 + lane, m0[v]);
                _mm256_storeu_pd(bank.m1 + lane, m1[v]);
                _mm256_storeu_pd(bank.m2 + lane, m2[v]);
            }
        }
    }

    /// Four channels into the rows.
    static void Gather(double* rows,
                       const float* const* inputs,
                       int lane,
                       int n) noexcept TAV_NONBLOCKING {
        double* const first = rows + lane;
        int k = 0;
        for (; k + 4 <= n; k += 4) {
            __m128 turned[4];
            for (int c = 0; c < 4; ++c) turned[c] = _mm_loadu_ps(inputs[c] + k);
            _MM_TRANSPOSE4_PS(turned[0], turned[1], turned[2], turned[3]);
            for (int r = 0; r < 4; ++r) {
                _mm256_storeu_pd(first + (k + r) * kRow, _mm256_cvtps_pd(turned[r]));
            }
        }
        for (; k < n; ++k) {
            for (int c = 0; c < 4; ++c) {
                first[k * kRow + c] = static_cast<double>(inputs[c][k]);
            }
        }
    }

    static void Scatter(float* const* outputs,
                        const double* rows,
                        int lane,
                        int n) noexcept TAV_NONBLOCKING {
        const double* const first = rows + lane;
        int k = 0;
        for (; k + 4 <= n; k += 4) {
            __m128 turned[4];
            for (int r = 0; r < 4; ++r) {
                turned[r] = _mm256_cvtpd_ps(_mm256_loadu_pd(first + (k + r) * kRow));
            }
            _MM_TRANSPOSE4_PS(turned[0], turned[1], turned[2], turned[3]);
            for (int c = 0; c < 4; ++c) _mm_storeu_ps(outputs[c] + k, turned[c]);
        }
        for (; k < n; ++k) {
            for (int c = 0; c < 4; ++c) {
                outputs[c][k] = static_cast<float>(first[k * kRow + c]);
            }
        }
    }
};

}  // namespace

const SectionKernels& SectionKernels::Avx2() noexcept {
    static constexpr SectionKernels kKernels{Avx2Sections::Run<false>, Avx2Sections::Run<true>};
    return kKernels;
}

}  // namespace tav
