// SPDX-License-Identifier: MIT
#include "kernels/VelkDspBinauralKernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace tav {
namespace {

/// Runs one cell of one ear of one source. All pointers are at the lane of the source.
/// @param past  of what enters, then of what leaves; only the first is updated
void RunCell(const float* coefficients,
             float* past,
             float* signal,
             int n) noexcept TAV_NONBLOCKING {
    const auto row = [](auto* rows, std::ptrdiff_t i) { return rows + i * kSourceLanes; };
    const float b1 = *row(coefficients, 0), b2 = *row(coefficients, 1);
    const float a1 = *row(coefficients, 2), a2 = *row(coefficients, 3);
    float x1 = *row(past, 0), x2 = *row(past, 1), y1 = *row(past, 2), y2 = *row(past, 3);
    for (int k = 0; k < n; ++k) {
        const float x = *row(signal, k);
        const float y = x + b1 * x1 + b2 * x2 - a2 * y2 - a1 * y1;
        x2 = std::exchange(x1, x);
        y2 = std::exchange(y1, y);
        *row(signal, k) = y;
    }
    *row(past, 0) = x1;
    *row(past, 1) = x2;
}

/// The past of a signal after n more samples of it.
void Remember(float* past, const float* signal, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t k = std::max(n - kCellStates, 0); k < n; ++k) {
        past[kSourceLanes] = past[0];
        past[0] = signal[k * kSourceLanes];
    }
}

void Cascade(const CellLanes& cells,
             const EarRows& rows,
             const EarRows& sum,
             const float* weights,
             int n) noexcept TAV_NONBLOCKING {
    float* const signals[] = {rows.left, rows.right};
    float* const sums[] = {sum.left, sum.right};
    constexpr std::ptrdiff_t kCell = kCellCoefficients * kSourceLanes;
    constexpr std::ptrdiff_t kPast = kCellStates * kSourceLanes;
    for (std::ptrdiff_t e = 0; e < 2 && signals[e] != nullptr; ++e) {
        for (std::ptrdiff_t lane = 0; lane < cells.lanes; ++lane) {
            const float* coefficients = cells.coefficients + e * cells.numCells * kCell + lane;
            float* past = cells.states + e * (cells.numCells + 1) * kPast + lane;
            float* const signal = signals[e] + lane;
            for (int c = 0; c < cells.numCells; ++c, coefficients += kCell, past += kPast) {
                RunCell(coefficients, past, signal, n);
            }
            Remember(past, signal, n);
            if (sums[e] == nullptr) continue;
            const float gain = cells.gains[e * kSourceLanes + lane];
            for (std::ptrdiff_t k = 0; k < n; ++k) {
                const std::ptrdiff_t at = k * kSourceLanes;
                const float weight = weights != nullptr ? weights[at + lane] : 1.f;
                sums[e][at + lane] += weight * gain * signal[at];
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
