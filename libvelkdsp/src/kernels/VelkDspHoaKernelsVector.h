// SPDX-License-Identifier: MIT
// The encoding of many directions, as a template over the operations of an instruction set.
//
// Only the translation unit of an instruction set includes this. `S`, the set of operations, is in
// an anonymous namespace, so that its instances stay in that unit. It offers Vec with
// kLanes doubles: Load(p) of as many floats, Broadcast(p), Multiply(a, b), MultiplyAdd(a, b, c),
// MultiplySubtract(a, b, c) for a b - c, Inverse(length squared) for 1 / length; and Floats with
// twice as many floats: Rounded(a, b), MultiplyFloats(a, b), StoreFloats(p, v).
#pragma once

#include "kernels/VelkDspHoaKernels.h"

#include <cstddef>

namespace tav {

template <class S>
class VectorHoaKernels {
public:
    static void Encode(const HoaTables& tables, const float* directions, float* channels) noexcept {
        for (std::ptrdiff_t k = 0; k < kHoaDirections; k += kVectors * S::kLanes) {
            EncodeSome(tables, directions + k, channels + k);
        }
    }

private:
    using Vec = typename S::Vec;
    using Floats = typename S::Floats;
    static constexpr std::ptrdiff_t kVectors = 2;  // independent chains; together a row of floats

    static void EncodeSome(const HoaTables& tables,
                           const float* directions,
                           float* channels) noexcept {
        Vec x[kVectors], y[kVectors], z[kVectors], cosines[kVectors], sines[kVectors];
        for (std::ptrdiff_t v = 0; v < kVectors; ++v) {
            const float* const d = directions + v * S::kLanes;
            const Vec dx = S::Load(d);
            const Vec dy = S::Load(d + kHoaDirections);
            const Vec dz = S::Load(d + 2 * kHoaDirections);
            const Vec ground = S::MultiplyAdd(dy, dy, S::Multiply(dx, dx));
            const Vec scale = S::Inverse(S::MultiplyAdd(dz, dz, ground));
            x[v] = S::Multiply(dx, scale);
            y[v] = S::Multiply(dy, scale);
            z[v] = S::Multiply(dz, scale);
            cosines[v] = S::Broadcast(&kOne);
            sines[v] = S::Broadcast(&kZero);
        }
        std::ptrdiff_t block = 0;
        for (std::ptrdiff_t m = 0; m <= tables.order; ++m) {
            const std::ptrdiff_t lane = m % kHoaDegrees;
            EncodeDegree(tables, m, block + lane * (kHoaDegrees + 1), z,
                         S::Rounded(cosines[0], cosines[1]), S::Rounded(sines[0], sines[1]),
                         channels);
            for (std::ptrdiff_t v = 0; v < kVectors; ++v) {
                const Vec cosine =
                    S::MultiplySubtract(cosines[v], x[v], S::Multiply(sines[v], y[v]));
                sines[v] = S::MultiplyAdd(cosines[v], y[v], S::Multiply(sines[v], x[v]));
                cosines[v] = cosine;
            }
            if (lane == kHoaDegrees - 1) block += (tables.order - m + lane) * kHoaDegrees;
        }
    }

    /// @param step  index of the step to (m + 1, m)
    static void EncodeDegree(const HoaTables& tables,
                             std::ptrdiff_t m,
                             std::ptrdiff_t step,
                             const Vec* z,
                             Floats cosines,
                             Floats sines,
                             float* channels) noexcept {
        // The number of instructions decides what this loop costs: places are stepped to, not
        // computed, and what it reads of the tables' structure is in local variables.
        const double* const toLast = tables.last;
        const double* const toBefore = tables.before;
        float* centre = channels + m * (m + 1) * kHoaDirections;
        const std::ptrdiff_t side = m * kHoaDirections;
        Vec last[kVectors], before[kVectors];
        for (Vec& q : last) q = S::Broadcast(tables.sectoral + m);
        for (Vec& q : before) q = last[0];
        Floats q = S::Rounded(last[0], last[0]);
        std::ptrdiff_t toNext = 2 * (m + 1) * kHoaDirections;
        for (std::ptrdiff_t left = tables.order - m;; --left) {
            if (m > 0) S::StoreFloats(centre - side, S::MultiplyFloats(q, sines));
            S::StoreFloats(centre + side, S::MultiplyFloats(q, cosines));
            if (left == 0) return;
            const Vec stepLast = S::Broadcast(toLast + step);
            const Vec stepBefore = S::Broadcast(toBefore + step);
            for (std::ptrdiff_t v = 0; v < kVectors; ++v) {
                const Vec next = S::MultiplySubtract(S::Multiply(stepLast, z[v]), last[v],
                                                     S::Multiply(stepBefore, before[v]));
                before[v] = last[v];
                last[v] = next;
            }
            q = S::Rounded(last[0], last[1]);
            step += kHoaDegrees;
            centre += toNext;
            toNext += 2 * kHoaDirections;
        }
    }

    static constexpr double kZero = 0.0;
    static constexpr double kOne = 1.0;
};

}  // namespace tav
