// SPDX-License-Identifier: MIT
// The vector kernels of filters, as templates over the operations of an instruction set.
//
// Only the translation unit of an instruction set includes this; `S`, the set of operations, lives
// in an anonymous namespace there. S offers Vec, kLanes, Zero(), Load(p), Store(p, v),
// Broadcast(value), Add(a, b), Subtract(a, b), Multiply(a, b), Divide(a, b), Least(a, b),
// Largest(a, b), MultiplyAdd(a, b, c) = a b + c, MultiplySubtract(a, b, c) = a b - c and
// NegativeMultiplyAdd(a, b, c) = c - a b.
#pragma once

#include "kernels/VelkDspFilterKernels.h"

#include <cstddef>

namespace tav {

template <class S>
class VectorFilterKernels {
    using Vec = typename S::Vec;
    enum class HighPass { None, On, Leaking, Moving };

public:
    static void NearField(const NearFieldSection* sections,
                          int numSections,
                          const NearFieldLanes& lanes,
                          float* states,
                          const float* in,
                          float* out,
                          int n) noexcept TAV_NONBLOCKING {
        Span rows{states, in, out, n};
        while (numSections > 0) {
            const int count = Run(sections, numSections, lanes, rows);
            sections += count;
            numSections -= count;
            rows.states += std::ptrdiff_t{count} * kNearFieldStates * kSourceLanes;
            rows.in = out;
        }
    }

    static void LimitGrowth(float* rows,
                            float* reached,
                            float growth,
                            int n) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < kSourceLanes; lane += S::kLanes) {
            Vec last = S::Load(reached + lane);
            for (std::ptrdiff_t k = lane; k < n * kSourceLanes; k += kSourceLanes) {
                const Vec highest =
                    S::Multiply(S::Largest(last, S::Broadcast(1.f)), S::Broadcast(growth));
                last = S::Least(S::Load(rows + k), highest);
                S::Store(rows + k, last);
            }
            S::Store(reached + lane, last);
        }
    }

private:
    struct Span {
        float* states;
        const float* in;
        float* out;
        int n;
    };

    /// Second-order section of the lanes of one vector.
    struct Pair {
        Vec damping, s1, s2;
        Vec a1{};
        Vec a2{};
        Vec a3{};
        Vec band{};
        Vec low{};

        Pair(Vec g, float k, const float* state) noexcept
            : damping(S::Broadcast(k)),
              s1(S::Load(state)),
              s2(S::Load(state + kSourceLanes)) {
            Tune(g);
        }
        void Tune(Vec g) noexcept {
            const Vec one = S::Broadcast(1.f);
            a1 = S::Divide(one, S::MultiplyAdd(g, S::Add(g, damping), one));
            a2 = S::Multiply(g, a1);
            a3 = S::Multiply(g, a2);
        }
        void Take(Vec x) noexcept {
            const Vec v = S::Subtract(x, s2);
            band = S::MultiplyAdd(a2, v, S::Multiply(a1, s1));
            low = S::MultiplyAdd(a3, v, S::MultiplyAdd(a2, s1, s2));
            // Doubling is exact, so this rounds as the operations of the scalar kernel do.
            const Vec two = S::Broadcast(2.f);
            s1 = S::MultiplySubtract(two, band, s1);
            s2 = S::MultiplySubtract(two, low, s2);
        }
        Vec High(Vec x) const noexcept {
            return S::Subtract(S::NegativeMultiplyAdd(damping, band, x), low);
        }
        /// x + (u - 1) damping band + (u^2 - 1) low
        Vec Near(Vec x, Vec u) const noexcept {
            const Vec one = S::Broadcast(1.f);
            const Vec part = S::MultiplyAdd(S::Add(u, one), low, S::Multiply(damping, band));
            return S::MultiplyAdd(S::Subtract(u, one), part, x);
        }
        void Keep(Vec factor) noexcept {
            s1 = S::Multiply(s1, factor);
            s2 = S::Multiply(s2, factor);
        }
        void Save(float* state) const noexcept {
            S::Store(state, s1);
            S::Store(state + kSourceLanes, s2);
        }
    };

    /// First-order section of the lanes of one vector.
    struct Pole {
        Vec s;
        Vec share{};
        Vec twice{};
        Vec low{};

        Pole(Vec g, float, const float* state) noexcept : s(S::Load(state)) { Tune(g); }
        void Tune(Vec g) noexcept {
            share = S::Divide(g, S::Add(g, S::Broadcast(1.f)));
            twice = S::Add(share, share);
        }
        void Take(Vec x) noexcept {
            const Vec distance = S::Subtract(x, s);
            low = S::MultiplyAdd(share, distance, s);
            s = S::MultiplyAdd(twice, distance, s);
        }
        Vec High(Vec x) const noexcept { return S::Subtract(x, low); }
        Vec Near(Vec x, Vec u) const noexcept {
            return S::MultiplyAdd(S::Subtract(u, S::Broadcast(1.f)), low, x);
        }
        void Keep(Vec factor) noexcept { s = S::Multiply(s, factor); }
        void Save(float* state) const noexcept { S::Store(state, s); }
    };

    // A recursion mostly waits for its own previous sample. Two of them run in one loop, so that
    // their latencies overlap: two sections, or a section and its high-pass.

    /// @return how many of the sections were run
    static int Run(const NearFieldSection* sections,
                   int numSections,
                   const NearFieldLanes& lanes,
                   const Span& rows) noexcept TAV_NONBLOCKING {
        if (lanes.highPassG == nullptr && numSections > 1) {
            sections[1].isReal ? RunTwo<Pole>(sections, lanes, rows)
                               : RunTwo<Pair>(sections, lanes, rows);
            return 2;
        }
        sections->isReal ? RunOne<Pole>(*sections, lanes, rows)
                         : RunOne<Pair>(*sections, lanes, rows);
        return 1;
    }

    template <class Filter>
    static void RunOne(const NearFieldSection& section,
                       const NearFieldLanes& lanes,
                       const Span& rows) noexcept TAV_NONBLOCKING {
        if (lanes.highPassG == nullptr)
            return RunLanes<Filter, HighPass::None>(section, lanes, rows);
        if (lanes.highPassStep != nullptr)
            return RunLanes<Filter, HighPass::Moving>(section, lanes, rows);
        if (lanes.highPassKeep == nullptr)
            return RunLanes<Filter, HighPass::On>(section, lanes, rows);
        RunLanes<Filter, HighPass::Leaking>(section, lanes, rows);
    }

    /// Runs a vector of lanes over all samples, then the next: states stay in registers.
    template <class Second>
    static void RunTwo(const NearFieldSection* sections,
                       const NearFieldLanes& lanes,
                       const Span& rows) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < kSourceLanes; lane += S::kLanes) {
            float* const firstState = rows.states + lane + 2 * kSourceLanes;
            float* const secondState = firstState + kNearFieldStates * kSourceLanes;
            Pair first(S::Broadcast(sections[0].g), sections[0].damping, firstState);
            Second second(S::Broadcast(sections[1].g), sections[1].damping, secondState);
            const float* ratio = lanes.ratios + lane;
            for (std::ptrdiff_t k = lane; k < rows.n * kSourceLanes; k += kSourceLanes) {
                const Vec u = S::Load(ratio);
                const Vec x = S::Load(rows.in + k);
                first.Take(x);
                const Vec between = first.Near(x, u);
                second.Take(between);
                S::Store(rows.out + k, second.Near(between, u));
                ratio += lanes.ratioStride;
            }
            first.Save(firstState);
            second.Save(secondState);
        }
    }

    template <class Filter, HighPass kHighPass>
    static void RunLanes(const NearFieldSection& section,
                         const NearFieldLanes& lanes,
                         const Span& rows) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < kSourceLanes; lane += S::kLanes) {
            constexpr bool kMoves = kHighPass == HighPass::Moving;
            const auto rowOr = [lane](const float* row, float otherwise) {
                return row == nullptr ? S::Broadcast(otherwise) : S::Load(row + lane);
            };
            float* const highState = rows.states + lane;
            float* const radialState = highState + 2 * kSourceLanes;
            Vec g = rowOr(lanes.highPassG, 0.f);
            const Vec step = rowOr(lanes.highPassStep, 0.f);
            const Vec keep = rowOr(lanes.highPassKeep, 1.f);
            Filter high(g, section.highPassDamping, highState);
            Filter radial(S::Broadcast(section.g), section.damping, radialState);
            const float* u = lanes.ratios + lane;
            for (std::ptrdiff_t k = lane; k < rows.n * kSourceLanes; k += kSourceLanes) {
                Vec x = S::Load(rows.in + k);
                if constexpr (kMoves) {
                    high.Tune(g);
                    g = S::Add(g, step);
                }
                if constexpr (kHighPass != HighPass::None) {
                    high.Take(x);
                    x = high.High(x);
                }
                if constexpr (kMoves || kHighPass == HighPass::Leaking) high.Keep(keep);
                radial.Take(x);
                S::Store(rows.out + k, radial.Near(x, S::Load(u)));
                u += lanes.ratioStride;
            }
            if constexpr (kHighPass != HighPass::None) high.Save(highState);
            radial.Save(radialState);
        }
    }
};

}  // namespace tav
