// SPDX-License-Identifier: MIT
#include "kernels/VelkDspBinauralKernels.h"

#include <cmath>
#include <cstddef>

namespace tav {
namespace {

/// Runs one cell of one ear of one source. @param coefficients, states  at the lane of the source
void RunCell(const float* coefficients,
             float* states,
             float* signal,
             int n) noexcept TAV_NONBLOCKING {
    const auto row = [](auto* rows, std::ptrdiff_t i) { return rows + i * kSourceLanes; };
    const float b0 = *row(coefficients, 0), b1 = *row(coefficients, 1), b2 = *row(coefficients, 2);
    const float a1 = *row(coefficients, 3), a2 = *row(coefficients, 4);
    float s1 = *row(states, 0), s2 = *row(states, 1);
    for (int k = 0; k < n; ++k) {
        const float x = *row(signal, k);
        const float y = b0 * x + s1;
        s1 = b1 * x - a1 * y + s2;
        s2 = b2 * x - a2 * y;
        *row(signal, k) = y;
    }
    *row(states, 0) = s1;
    *row(states, 1) = s2;
}

void Cascade(const CellLanes& cells,
             const EarRows& rows,
             const EarRows& sum,
             const float* weights,
             int n) noexcept TAV_NONBLOCKING {
    float* const signals[] = {rows.left, rows.right};
    float* const sums[] = {sum.left, sum.right};
    for (int e = 0; e < 2; ++e) {
        float* const signal = signals[e];
        for (std::ptrdiff_t lane = 0; lane < cells.lanes; ++lane) {
            for (int c = 0; c < 2 * cells.numPairs; ++c) {
                const std::ptrdiff_t cell = (2 * c + e) * kSourceLanes;
                RunCell(cells.coefficients + cell * kCellCoefficients + lane,
                        cells.states + cell * kCellStates + lane, signal + lane, n);
            }
            if (sums[e] == nullptr) continue;
            for (std::ptrdiff_t k = lane; k < n * kSourceLanes; k += kSourceLanes) {
                sums[e][k] += weights != nullptr ? weights[k] * signal[k] : signal[k];
            }
        }
    }
}

void Read(const ReadingLanes& sources, float* rows, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < sources.lanes; ++i) {
        const float* const x = sources.signals[i];
        for (std::ptrdiff_t k = 0; k < n; ++k) {
            float sum = 0.f;
            for (std::ptrdiff_t t = 0; t < kReadingTaps; ++t) sum += sources.taps[t][i] * x[k - t];
            rows[k * kSourceLanes + i] = sum;
        }
    }
}

void Glide(float* y, const float* x, float f, float step, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        const float place = f + static_cast<float>(k) * step, whole = std::floor(place);
        const float g = place - whole;
        const float before = (g - 1.f) * (g - 2.f), after = (g + 1.f) * g;
        const float* const at = x + k + static_cast<std::ptrdiff_t>(whole);
        y[k] = -g * before / 6.f * at[-1] + (g + 1.f) * before / 2.f * at[0] -
               after * (g - 2.f) / 2.f * at[1] + after * (g - 1.f) / 6.f * at[2];
    }
}

void ReadGliding(const ReadingLanes& sources, float* rows, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < sources.lanes; ++i) {
        for (std::ptrdiff_t k = 0; k < n; ++k) {
            const float place = sources.places[i] + static_cast<float>(k) * sources.steps[i];
            Glide(rows + k * kSourceLanes + i, sources.signals[i] + k - 2, place, 0.f, 1);
        }
    }
}

void FadeWeightsOf(const FadeLanes& f, float* rows, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) {
        float c = f.cosine[i], s = f.sine[i];
        for (int k = 0; k < n; ++k) {
            const float t = f.part[i] + static_cast<float>(k) * f.step[i];
            rows[k * kSourceLanes + i] =
                f.constant[i] + f.ofCos[i] * c + f.ofSin[i] * s + f.ofPart[i] * t;
            const float turned = c * f.turnCos[i] - s * f.turnSin[i];
            s = s * f.turnCos[i] + c * f.turnSin[i];
            c = turned;
        }
    }
}

void SumLanes(const float* rows, float* y, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k, rows += kSourceLanes) {
        float sum = 0.f;
        for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) sum += rows[i];
        y[k] += sum;
    }
}

void FirstOrder(const FirstOrderLanes& lanes,
                const EarRows& in,
                const EarRows& out,
                bool adds,
                int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < 2 * kSourceLanes; ++i) {
        const bool left = i < kSourceLanes;
        const float* const x = (left ? in.left : in.right) + i % kSourceLanes;
        float* const y = (left ? out.left : out.right) + i % kSourceLanes;
        const float gain = lanes.gains[i];
        float m0 = lanes.mix[i], m1 = lanes.mix[i + 2 * kSourceLanes], s = lanes.states[i];
        const float step0 = lanes.steps != nullptr ? lanes.steps[i] : 0.f;
        const float step1 = lanes.steps != nullptr ? lanes.steps[i + 2 * kSourceLanes] : 0.f;
        for (std::ptrdiff_t k = 0; k < n * kSourceLanes; k += kSourceLanes) {
            m0 += step0;
            m1 += step1;
            const float difference = x[k] - s;
            const float low = gain * difference + s;
            s = 2.f * gain * difference + s;
            const float value = m0 * x[k] + m1 * low;
            y[k] = adds ? y[k] + value : value;
        }
        lanes.states[i] = s;
    }
}

}  // namespace

const BinauralKernels& BinauralKernels::Scalar() noexcept {
    static constexpr BinauralKernels kKernels{Cascade,       Read,     ReadGliding, Glide,
                                              FadeWeightsOf, SumLanes, FirstOrder};
    return kKernels;
}

}  // namespace tav
