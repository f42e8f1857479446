// SPDX-License-Identifier: MIT
// The vector kernels of binaural rendering, as templates over the operations of an instruction set.
//
// Only the translation unit of an instruction set includes this; `S`, the set of operations, lives
// in an anonymous namespace there. S offers Vec, kLanes, Zero(), Load(p), Store(p, v),
// Broadcast(value), Count() = 0 1 2 .., Add(a, b), Subtract(a, b), Multiply(a, b), Min(a, b),
// Max(a, b), MultiplyAdd(a, b, c) = a b + c and NegativeMultiplyAdd(a, b, c) = c - a b.
#pragma once

#include "kernels/VelkDspBinauralKernels.h"

#include <algorithm>
#include <cstddef>

namespace tav {

template <class S>
class VectorBinauralKernels {
    using Vec = typename S::Vec;
    static constexpr std::ptrdiff_t kRow = kSourceLanes;

public:
    static void Cascade(const CellLanes& cells,
                        const EarRows& input,
                        const EarRows& work,
                        const EarRows& sum,
                        const float* weights,
                        int n) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < cells.lanes; lane += S::kLanes) {
            const float* coefficients = cells.coefficients + lane;
            float* states = cells.states + lane;
            Span span{input.left + lane, input.right + lane,
                      work.left + lane,  work.right + lane,
                      nullptr,           n * kRow};
            for (int p = 1; p < cells.numPairs; ++p) {
                RunPair<Sink::Store>(coefficients, states, span);
                coefficients += kRow * kCellsInPair * kCellCoefficients;
                states += kRow * kCellsInPair * kCellStates;
                span.inLeft = span.outLeft;
                span.inRight = span.outRight;
            }
            if (sum.left == nullptr) {
                RunPair<Sink::Store>(coefficients, states, span);
                continue;
            }
            span.outLeft = sum.left + lane;
            span.outRight = sum.right + lane;
            if (weights == nullptr) {
                RunPair<Sink::Add>(coefficients, states, span);
            } else {
                span.weights = weights + lane;
                RunPair<Sink::AddWeighted>(coefficients, states, span);
            }
        }
    }

    static void Glide(float* y, const float* x, float f, float step, int n) noexcept
        TAV_NONBLOCKING {
        const Vec one = S::Broadcast(1.f), two = S::Broadcast(2.f);
        const Vec sixth = S::Broadcast(1.f / 6.f), half = S::Broadcast(0.5f);
        if (n < S::kLanes) return BinauralKernels::Scalar().glide(y, x, f, step, n);
        // The last vector ends with the last sample and may compute some samples a second time.
        for (int k = 0, next = 0; next < n; next = k + S::kLanes) {
            k = std::min(next, n - S::kLanes);
            const Vec count = S::Add(S::Count(), S::Broadcast(static_cast<float>(k)));
            Vec g = S::MultiplyAdd(count, S::Broadcast(step), S::Broadcast(f));
            g = S::Max(S::Min(g, one), S::Zero());
            const Vec plus = S::Add(g, one), minus = S::Subtract(g, one);
            const Vec minus2 = S::Subtract(g, two);
            const Vec before = S::Multiply(minus, minus2), after = S::Multiply(plus, g);
            Vec outer = S::Multiply(S::Multiply(after, minus), S::Load(x + k + 2));
            outer = S::NegativeMultiplyAdd(S::Multiply(g, before), S::Load(x + k - 1), outer);
            Vec inner = S::Multiply(S::Multiply(plus, before), S::Load(x + k));
            inner = S::NegativeMultiplyAdd(S::Multiply(after, minus2), S::Load(x + k + 1), inner);
            S::Store(y + k, S::MultiplyAdd(outer, sixth, S::Multiply(inner, half)));
        }
    }

    static void FadeWeightsOf(const FadeLanes& f,
                              float* out,
                              float* in,
                              int n) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < kRow; lane += S::kLanes) {
            const auto row = [lane](const FadeLanes::Row& values) {
                return S::Load(values + lane);
            };
            Vec c = row(f.cosine), s = row(f.sine), t = row(f.part);
            const Vec turnCos = row(f.turnCos), turnSin = row(f.turnSin), step = row(f.step);
            const Vec out0 = row(f.out0), outCos = row(f.outCos), outPart = row(f.outPart);
            const Vec in0 = row(f.in0), inCos = row(f.inCos), inSin = row(f.inSin);
            const Vec inPart = row(f.inPart);
            for (std::ptrdiff_t k = lane; k < n * kRow; k += kRow) {
                S::Store(out + k, S::MultiplyAdd(outCos, c, S::MultiplyAdd(outPart, t, out0)));
                const Vec turning = S::MultiplyAdd(inCos, c, S::Multiply(inSin, s));
                S::Store(in + k, S::Add(turning, S::MultiplyAdd(inPart, t, in0)));
                const Vec turned = S::NegativeMultiplyAdd(s, turnSin, S::Multiply(c, turnCos));
                s = S::MultiplyAdd(c, turnSin, S::Multiply(s, turnCos));
                c = turned;
                t = S::Add(t, step);
            }
        }
    }

    static void FirstOrder(const FirstOrderLanes& lanes,
                           const EarRows& in,
                           const EarRows& out,
                           bool adds,
                           int n) noexcept TAV_NONBLOCKING {
        const auto run = lanes.steps != nullptr
                             ? (adds ? RunFirstOrder<true, true> : RunFirstOrder<true, false>)
                             : (adds ? RunFirstOrder<false, true> : RunFirstOrder<false, false>);
        for (std::ptrdiff_t lane = 0; lane < kRow; lane += S::kLanes) {
            run(lanes, lane,
                {in.left + lane, in.right + lane, out.left + lane, out.right + lane, nullptr,
                 n * kRow});
        }
    }

private:
    enum class Sink { Store, Add, AddWeighted };

    /// The part of the lanes that one vector holds, for all samples.
    struct Span {
        const float* inLeft;
        const float* inRight;
        float* outLeft;
        float* outRight;
        const float* weights;
        std::ptrdiff_t end;  // of the samples, in floats
    };

    struct Cell {
        Vec b0, b1, b2, a1, a2, s1, s2;

        Cell(const float* coefficients, const float* states, std::ptrdiff_t index) noexcept {
            const float* const c = coefficients + index * kCellCoefficients * kRow;
            b0 = S::Load(c);
            b1 = S::Load(c + kRow);
            b2 = S::Load(c + 2 * kRow);
            a1 = S::Load(c + 3 * kRow);
            a2 = S::Load(c + 4 * kRow);
            s1 = S::Load(states + index * kCellStates * kRow);
            s2 = S::Load(states + index * kCellStates * kRow + kRow);
        }
        Vec Take(Vec x) noexcept {
            const Vec y = S::MultiplyAdd(b0, x, s1);
            s1 = S::NegativeMultiplyAdd(a1, y, S::MultiplyAdd(b1, x, s2));
            s2 = S::NegativeMultiplyAdd(a2, y, S::Multiply(b2, x));
            return y;
        }
        void Save(float* states, std::ptrdiff_t index) const noexcept {
            S::Store(states + index * kCellStates * kRow, s1);
            S::Store(states + index * kCellStates * kRow + kRow, s2);
        }
    };

    /// One ear of a first-order section, in registers.
    template <bool kMoves>
    struct FirstOrderEar {
        Vec gain, twice, m0, m1, step0, step1, s;

        FirstOrderEar(const FirstOrderLanes& lanes, std::ptrdiff_t at) noexcept {
            gain = S::Load(lanes.gains + at);
            twice = S::Add(gain, gain);
            m0 = S::Load(lanes.mix + at);
            m1 = S::Load(lanes.mix + at + 2 * kRow);
            s = S::Load(lanes.states + at);
            step0 = kMoves ? S::Load(lanes.steps + at) : S::Zero();
            step1 = kMoves ? S::Load(lanes.steps + at + 2 * kRow) : S::Zero();
        }
        Vec Take(Vec x) noexcept {
            if constexpr (kMoves) {
                m0 = S::Add(m0, step0);
                m1 = S::Add(m1, step1);
            }
            const Vec difference = S::Subtract(x, s);
            const Vec low = S::MultiplyAdd(gain, difference, s);
            s = S::MultiplyAdd(twice, difference, s);
            return S::MultiplyAdd(m0, x, S::Multiply(m1, low));
        }
    };

    template <bool kMoves, bool kAdds>
    static void RunFirstOrder(const FirstOrderLanes& lanes,
                              std::ptrdiff_t lane,
                              const Span& span) noexcept TAV_NONBLOCKING {
        FirstOrderEar<kMoves> leftEar(lanes, lane), rightEar(lanes, lane + kRow);
        for (std::ptrdiff_t k = 0; k < span.end; k += kRow) {
            Vec left = leftEar.Take(S::Load(span.inLeft + k));
            Vec right = rightEar.Take(S::Load(span.inRight + k));
            if constexpr (kAdds) {
                left = S::Add(left, S::Load(span.outLeft + k));
                right = S::Add(right, S::Load(span.outRight + k));
            }
            S::Store(span.outLeft + k, left);
            S::Store(span.outRight + k, right);
        }
        S::Store(lanes.states + lane, leftEar.s);
        S::Store(lanes.states + lane + kRow, rightEar.s);
    }

    /// Runs two cells in series for each ear, with states and coefficients in registers. The
    /// latencies of the four recursions overlap.
    template <Sink kSink>
    static void RunPair(const float* coefficients,
                        float* states,
                        const Span& span) noexcept TAV_NONBLOCKING {
        Cell left1(coefficients, states, 0), right1(coefficients, states, 1);
        Cell left2(coefficients, states, 2), right2(coefficients, states, 3);
        for (std::ptrdiff_t k = 0; k < span.end; k += kRow) {
            const Vec left = left2.Take(left1.Take(S::Load(span.inLeft + k)));
            const Vec right = right2.Take(right1.Take(S::Load(span.inRight + k)));
            if constexpr (kSink == Sink::Store) {
                S::Store(span.outLeft + k, left);
                S::Store(span.outRight + k, right);
            } else if constexpr (kSink == Sink::Add) {
                S::Store(span.outLeft + k, S::Add(left, S::Load(span.outLeft + k)));
                S::Store(span.outRight + k, S::Add(right, S::Load(span.outRight + k)));
            } else {
                const Vec w = S::Load(span.weights + k);
                S::Store(span.outLeft + k, S::MultiplyAdd(w, left, S::Load(span.outLeft + k)));
                S::Store(span.outRight + k, S::MultiplyAdd(w, right, S::Load(span.outRight + k)));
            }
        }
        left1.Save(states, 0);
        right1.Save(states, 1);
        left2.Save(states, 2);
        right2.Save(states, 3);
    }
};

}  // namespace tav
