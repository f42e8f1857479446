// SPDX-License-Identifier: MIT
// The gains of a source by distance and by angle, as templates over the operations of an
// instruction set.
//
// Only the translation unit of an instruction set includes this; `S` is in an anonymous namespace
// there. S offers Vec, kLanes, Load(p), Store(p, v), LoadFirst(p, count), StoreFirst(p,
// v, count), First(v, count) that is 0 from lane `count` on, Broadcast(value), Add, Subtract,
// Multiply, Divide(a, b), MultiplyAdd(a, b, c), MultiplySubtract(a, b, c) for a b - c, Sqrt(v),
// Round(v) to integers, ZeroBelow(v, limit, other), Sum(v), Split(v, exponent) that gives the
// mantissa of a v from 0 on in [sqrt(1/2), sqrt(2)), and TimesPowerOfTwo(v, n) with integers n.
#pragma once

#include "kernels/VelkDspSpeakerKernels.h"

#include <bit>
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
        // With the exponent 0 all gains are their weights, so no base is too small.
        const float least = exponent == 0.f ? 0.f : kCosineResolution;
        const float energy =
            exponent == 1.f
                ? FillByAngle(rows, stride, count, x, y, least, gains, [](Vec v) { return v; })
                : FillByAngle(rows, stride, count, x, y, least, gains, Power{exponent});
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
                             float least,
                             float* gains,
                             PowerOf power) noexcept {
        const Vec limit = S::Broadcast(2.f * least);
        return Fill(gains, count, [&](int k, auto keep) {
            const Vec sumX = S::Add(S::Load(rows + k), S::Broadcast(x));
            const Vec sumY = S::Add(S::Load(rows + stride + k), S::Broadcast(y));
            // Twice the base; the common factor vanishes when the gains are scaled.
            const Vec base = S::MultiplyAdd(sumX, sumX, S::Multiply(sumY, sumY));
            const Vec cardioid = S::ZeroBelow(base, limit, power(base));
            const Vec gain = keep(S::Multiply(cardioid, S::Load(rows + 2 * stride + k)));
            return Part{gain, S::Multiply(gain, gain)};
        });
    }

    /// v^exponent of numbers from 2 kCosineResolution to little above 4. With the exponent 0 it is
    /// 1 for 0 too.
    struct Power {
        float exponent;

        Vec operator()(Vec v) const noexcept {
            const Vec one = S::Broadcast(1.f);
            const Vec factor = S::Broadcast(exponent);
            Vec whole;
            const Vec mantissa = S::Split(v, whole);
            // log2 m = 2 / ln 2 * artanh(s), s = (m - 1) / (m + 1), |s| < 0.172; the term behind
            // the last one is below 2^-24.
            const Vec s = S::Divide(S::Subtract(mantissa, one), S::Add(mantissa, one));
            const Vec fraction =
                S::Multiply(s, Polynomial(S::Multiply(s, s),
                                          {2.88539008f, 0.961796694f, 0.577078016f, 0.412198583f}));
            // The power of two comes from the whole part alone, so that the fraction loses no
            // digits and both are computed in parallel.
            const Vec n = S::Round(S::Multiply(factor, whole));
            const Vec rest =
                S::MultiplyAdd(factor, fraction, S::MultiplySubtract(factor, whole, n));
            // 2^r, |r| < 1: 1 + r times an interpolation of (2^r - 1) / r at Chebyshev points,
            // right to 2^-24.
            const Vec power =
                Polynomial(rest, {1.f, 0.693147182f, 0.240226656f, 0.0555041209f, 0.00961696263f,
                                  0.00133326615f, 0.000156363501f, 0.0000154318259f});
            return S::TimesPowerOfTwo(power, n);
        }
    };

    /// Evaluates a polynomial, lowest power first, in pairs, pairs of pairs and so on: a short
    /// chain of dependent operations has the least latency.
    template <std::size_t count>
    static Vec Polynomial(Vec v, const float (&coefficients)[count]) noexcept {
        static_assert(std::has_single_bit(count) && count > 1);
        Vec sums[count / 2];
        for (std::size_t i = 0; i < count / 2; ++i) {
            sums[i] = S::MultiplyAdd(v, S::Broadcast(coefficients[2 * i + 1]),
                                     S::Broadcast(coefficients[2 * i]));
        }
        for (std::size_t left = count / 4; left > 0; left /= 2) {
            v = S::Multiply(v, v);
            for (std::size_t i = 0; i < left; ++i) {
                sums[i] = S::MultiplyAdd(v, sums[2 * i + 1], sums[2 * i]);
            }
        }
        return sums[0];
    }

    /// Scales the gains to a sum of squares of 1.
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
