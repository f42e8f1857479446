// SPDX-License-Identifier: MIT
// The gains of a source by distance and by angle, written once over the operations of an
// instruction set.
//
// Only the translation unit of an instruction set includes this; `S` lives in an anonymous
// namespace there. S offers Vec, kLanes, Load(p), Store(p, v), LoadFirst(p, count), StoreFirst(p,
// v, count), First(v, count) that is 0 from lane `count` on, Broadcast(value), Add, Subtract,
// Multiply, Divide(a, b), MultiplyAdd(a, b, c), Sqrt(v), Round(v) to integers, IfBelow(v, limit,
// yes, no), Sum(v), Split(v, exponent) that gives the mantissa of a positive v in [sqrt(1/2),
// sqrt(2)), and TimesPowerOfTwo(v, n) with integers n.
#pragma once

#include "kernels/VelkDspSpeakerKernels.h"

#include <cstddef>

namespace tav {

template <class S>
class VectorSpeakerKernels {
public:
    static void GainsByDistance(const float* rows,
                                std::ptrdiff_t stride,
                                int count,
                                const float* metric,
                                float* gains) noexcept {
        const Vec floor = S::Broadcast(metric[6] + 1e-10f);
        const Vec one = S::Broadcast(1.f);
        const float energy = Fill(gains, count, [&](int k, auto keep) {
            Vec squared = floor;
            for (std::ptrdiff_t axis = 0; axis < 3; ++axis) {
                const Vec there = S::Load(rows + axis * stride + k);
                const Vec difference = S::Subtract(there, S::Broadcast(metric[axis]));
                squared = S::MultiplyAdd(S::Broadcast(metric[3 + axis]),
                                         S::Multiply(difference, difference), squared);
            }
            const Vec inverse = keep(S::Divide(one, squared));
            return Part{S::Sqrt(inverse), inverse};
        });
        Scale(gains, count, energy);
    }

    static bool GainsByAngle(const float* rows,
                             std::ptrdiff_t stride,
                             int count,
                             float x,
                             float y,
                             float exponent,
                             float* gains) noexcept {
        const float energy =
            exponent == 1.f ? FillByAngle(rows, stride, count, x, y, gains, [](Vec v) { return v; })
                            : FillByAngle(rows, stride, count, x, y, gains, Power{exponent});
        if (energy == 0.f) return false;
        Scale(gains, count, energy);
        return true;
    }

    static constexpr SpeakerKernels kKernels{GainsByDistance, GainsByAngle};

private:
    using Vec = typename S::Vec;
    static_assert(kSpeakerLanes % S::kLanes == 0);

    struct Part {
        Vec gains;
        Vec squares;
    };

    /// Runs `part` over all loudspeakers; `keep` clears the lanes behind the last one.
    /// @return the sum of the squares
    template <class PartAt>
    static float Fill(float* gains, int count, PartAt part) noexcept {
        Vec energy = S::Broadcast(0.f);
        int k = 0;
        for (; k + S::kLanes <= count; k += S::kLanes) {
            const Part whole = part(k, [](Vec v) { return v; });
            S::Store(gains + k, whole.gains);
            energy = S::Add(energy, whole.squares);
        }
        if (k < count) {
            const int rest = count - k;
            const Part last = part(k, [rest](Vec v) { return S::First(v, rest); });
            S::StoreFirst(gains + k, last.gains, rest);
            energy = S::Add(energy, last.squares);
        }
        return S::Sum(energy);
    }

    template <class PowerOf>
    static float FillByAngle(const float* rows,
                             std::ptrdiff_t stride,
                             int count,
                             float x,
                             float y,
                             float* gains,
                             PowerOf power) noexcept {
        const Vec half = S::Broadcast(0.5f);
        const Vec resolution = S::Broadcast(kCosineResolution);
        return Fill(gains, count, [&](int k, auto keep) {
            const Vec sumX = S::Add(S::Load(rows + k), S::Broadcast(x));
            const Vec sumY = S::Add(S::Load(rows + stride + k), S::Broadcast(y));
            const Vec base = S::Multiply(half, S::MultiplyAdd(sumX, sumX, S::Multiply(sumY, sumY)));
            const Vec cardioid = power(S::IfBelow(base, resolution, S::Broadcast(0.f), base));
            const Vec gain = keep(S::Multiply(cardioid, S::Load(rows + 2 * stride + k)));
            return Part{gain, S::Multiply(gain, gain)};
        });
    }

    /// v^exponent of 0 and of numbers from kCosineResolution to little above 2.
    struct Power {
        float exponent;

        Vec operator()(Vec v) const noexcept {
            const Vec zero = S::Broadcast(0.f);
            const Vec one = S::Broadcast(1.f);
            const Vec least = S::Broadcast(kCosineResolution);
            const Vec factor = S::Broadcast(exponent);
            Vec whole;
            const Vec mantissa = S::Split(S::IfBelow(v, least, one, v), whole);
            // log2 m = 2 / ln 2 * artanh(s), s = (m - 1) / (m + 1), |s| < 0.172; the term behind
            // the last one is below 2^-24.
            const Vec s = S::Divide(S::Subtract(mantissa, one), S::Add(mantissa, one));
            const Vec fraction =
                S::Multiply(s, Polynomial(S::Multiply(s, s),
                                          {2.88539008f, 0.961796694f, 0.577078016f, 0.412198583f}));
            // The whole part is taken off before the fraction joins, so that it costs no digits.
            const Vec n = S::Round(S::Multiply(factor, S::Add(whole, fraction)));
            const Vec rest =
                S::MultiplyAdd(factor, fraction, S::MultiplyAdd(factor, whole, Negative(n)));
            // 2^f = sum of (f ln 2)^i / i!, |f| < 0.51
            const Vec power =
                Polynomial(rest, {1.f, 0.693147181f, 0.240226507f, 0.0555041087f, 0.00961812911f,
                                  0.00133335581f, 0.000154035304f, 0.0000152527338f});
            const Vec result = S::TimesPowerOfTwo(power, n);
            return exponent == 0.f ? one : S::IfBelow(v, least, zero, result);
        }
    };

    static Vec Negative(Vec v) noexcept { return S::Subtract(S::Broadcast(0.f), v); }

    /// Lowest power first.
    template <std::size_t count>
    static Vec Polynomial(Vec v, const float (&coefficients)[count]) noexcept {
        Vec sum = S::Broadcast(coefficients[count - 1]);
        for (std::size_t i = count - 1; i-- > 0;) {
            sum = S::MultiplyAdd(sum, v, S::Broadcast(coefficients[i]));
        }
        return sum;
    }

    /// To a sum of squares of 1.
    static void Scale(float* gains, int count, float energy) noexcept {
        const Vec factor = S::Divide(S::Broadcast(1.f), S::Sqrt(S::Broadcast(energy)));
        int k = 0;
        for (; k + S::kLanes <= count; k += S::kLanes) {
            S::Store(gains + k, S::Multiply(S::Load(gains + k), factor));
        }
        if (k == count) return;
        const int rest = count - k;
        S::StoreFirst(gains + k, S::Multiply(S::LoadFirst(gains + k, rest), factor), rest);
    }
};

}  // namespace tav
