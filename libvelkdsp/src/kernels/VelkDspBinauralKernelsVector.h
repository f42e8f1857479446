// SPDX-License-Identifier: MIT
// The vector kernels of binaural rendering, as templates over the operations of an instruction set.
//
// Only the translation unit of an instruction set includes this; `S`, the set of operations, lives
// in an anonymous namespace there. S offers Vec, kLanes, Zero(), Load(p), Store(p, v),
// Broadcast(value), Count() = 0 1 2 .., Add(a, b), Subtract(a, b), Multiply(a, b),
// MultiplyAdd(a, b, c) = a b + c, MultiplySubtract(a, b, c) = a b - c, NegativeMultiplyAdd(a, b, c)
// = c - a b, WhereNegative(test, a, b) = a there and b elsewhere, LoadQuarters(signals, k, four),
// and within quarters of four lanes UnpackLow(a, b), UnpackHigh(a, b), LowPairs(a, b),
// HighPairs(a, b).
#pragma once

#include "kernels/VelkDspBinauralKernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tav {

template <class S>
class VectorBinauralKernels {
    using Vec = typename S::Vec;
    static constexpr std::ptrdiff_t kRow = kSourceLanes;

public:
    static void Cascade(const CellLanes& cells,
                        const EarRows& rows,
                        const EarRows& sum,
                        const float* weights,
                        int n) noexcept TAV_NONBLOCKING {
        const std::ptrdiff_t numEars = rows.right != nullptr ? 2 : 1;
        for (std::ptrdiff_t lane = 0; lane < cells.lanes; lane += S::kLanes) {
            for (std::ptrdiff_t ear = 0; ear < numEars; ++ear) {
                float* const signal = (ear == 0 ? rows.left : rows.right) + lane;
                Chain chain{
                    .coefficients =
                        cells.coefficients + ear * cells.numCells * kCellCoefficients * kRow + lane,
                    .past = cells.states + ear * (cells.numCells + 1) * kCellStates * kRow + lane,
                    .in = signal,
                    .out = signal,
                    .end = n * kRow};
                int left = cells.numCells;
                for (; left > kMostInLoop; left -= kMostInLoop) {
                    RunCells<kMostInLoop, Sink::Store, false>(chain);
                    chain.coefficients += kRow * kMostInLoop * kCellCoefficients;
                    chain.past += kRow * kMostInLoop * kCellStates;
                }
                if (sum.left == nullptr) {
                    RunLast<Sink::Store>(left, chain);
                    continue;
                }
                chain.out = (ear == 0 ? sum.left : sum.right) + lane;
                chain.gain = cells.gains + ear * kRow + lane;
                chain.weights = weights + (weights != nullptr ? lane : 0);
                weights == nullptr ? RunLast<Sink::Add>(left, chain)
                                   : RunLast<Sink::AddWeighted>(left, chain);
            }
        }
    }

    static void Read(const ReadingLanes& sources, float* rows, int n) noexcept TAV_NONBLOCKING {
        static_assert(kReadingTaps == 4);
        for (std::ptrdiff_t lane = 0; lane < sources.lanes; lane += S::kLanes) {
            const float* const* const signals = sources.signals + lane;
            const Vec tap0 = S::Load(sources.taps[0] + lane);
            const Vec tap1 = S::Load(sources.taps[1] + lane);
            const Vec tap2 = S::Load(sources.taps[2] + lane);
            const Vec tap3 = S::Load(sources.taps[3] + lane);
            const auto sum = [&](Vec x0, Vec x1, Vec x2, Vec x3) {
                const Vec early = S::MultiplyAdd(tap2, x2, S::Multiply(tap3, x3));
                return S::MultiplyAdd(tap0, x0, S::MultiplyAdd(tap1, x1, early));
            };
            Vec x[4];
            LoadFourRows(signals, -4, x);
            float* row = rows + lane;
            for (std::ptrdiff_t k = 0; k < n; k += 4, row += 4 * kRow) {
                const Vec a = x[1], b = x[2], c = x[3];
                LoadFourRows(signals, k, x);
                S::Store(row, sum(x[0], c, b, a));
                if (k + 1 < n) S::Store(row + kRow, sum(x[1], x[0], c, b));
                if (k + 2 < n) S::Store(row + 2 * kRow, sum(x[2], x[1], x[0], c));
                if (k + 3 < n) S::Store(row + 3 * kRow, sum(x[3], x[2], x[1], x[0]));
            }
        }
    }

    static void ReadGliding(const ReadingLanes& sources,
                            float* rows,
                            int n) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < sources.lanes; lane += S::kLanes) {
            const float* const* const signals = sources.signals + lane;
            const Vec start = S::Load(sources.places + lane);
            const Vec step = S::Load(sources.steps + lane);
            Vec x[8];  // samples k - 3 .. k + 4
            LoadFourRows(signals, -3, x);
            float* row = rows + lane;
            for (std::ptrdiff_t k = 0; k < n; k += 4, row += 4 * kRow) {
                LoadFourRows(signals, k + 1, x + 4);
                Vec place = S::MultiplyAdd(step, S::Broadcast(static_cast<float>(k)), start);
                for (std::ptrdiff_t j = 0; j < 4; ++j) {
                    const Vec value = Between(x + j, place);
                    if (k + j < n) S::Store(row + j * kRow, value);
                    place = S::Add(place, step);
                    x[j] = x[j + 4];
                }
            }
        }
    }

    static void Glide(float* y, const float* x, float f, float step, int n) noexcept
        TAV_NONBLOCKING {
        if (n < S::kLanes) return BinauralKernels::Scalar().glide(y, x, f, step, n);
        // The last vector ends with the last sample and may compute some samples a second time.
        for (int k = 0, next = 0; next < n; next = k + S::kLanes) {
            k = std::min(next, n - S::kLanes);
            const float first = f + static_cast<float>(k) * step;
            const float last = f + static_cast<float>(k + S::kLanes - 1) * step;
            const float low = std::floor(std::min(first, last));
            const float high = std::floor(std::max(first, last));
            if (high - low > 1.f) {
                BinauralKernels::Scalar().glide(y + k, x + k, first, step, S::kLanes);
                continue;
            }
            const float* const at = x + k + static_cast<std::ptrdiff_t>(low);
            const Vec g = S::MultiplyAdd(S::Count(), S::Broadcast(step), S::Broadcast(first - low));
            Vec value = Interpolate(at, g);
            if (high != low) {  // the lanes on either side of a sample
                const Vec beyond = S::Subtract(g, S::Broadcast(1.f));
                value = S::WhereNegative(beyond, value, Interpolate(at + 1, beyond));
            }
            S::Store(y + k, value);
        }
    }

    static void FadeWeightsOf(const FadeLanes& f, float* rows, int n) noexcept TAV_NONBLOCKING {
        for (std::ptrdiff_t lane = 0; lane < kRow; lane += S::kLanes) {
            const auto row = [lane](const FadeLanes::Row& values) {
                return S::Load(values + lane);
            };
            Vec c = row(f.cosine), s = row(f.sine), t = row(f.part);
            const Vec turnCos = row(f.turnCos), turnSin = row(f.turnSin), step = row(f.step);
            const Vec constant = row(f.constant), ofPart = row(f.ofPart);
            const Vec ofCos = row(f.ofCos), ofSin = row(f.ofSin);
            for (std::ptrdiff_t k = lane; k < n * kRow; k += kRow) {
                const Vec turning = S::MultiplyAdd(ofCos, c, S::Multiply(ofSin, s));
                S::Store(rows + k, S::Add(turning, S::MultiplyAdd(ofPart, t, constant)));
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
                {in.left + lane, in.right + lane, out.left + lane, out.right + lane, n * kRow});
        }
    }

private:
    /// Third-order Lagrange between x[k] and x[k + 1] at the parts g of the way.
    static Vec Interpolate(const float* x, Vec g) noexcept {
        // In powers of g; at g = 1 the coefficients of all powers sum up to x[1].
        const Vec here = S::Load(x), next = S::Load(x + 1), before = S::Load(x - 1);
        const Vec half = S::Broadcast(0.5f);
        const Vec slope = S::Subtract(next, here);
        const Vec outer = S::Multiply(S::Broadcast(1.f / 6.f), S::Subtract(S::Load(x + 2), before));
        const Vec cubic = S::NegativeMultiplyAdd(half, slope, outer);
        const Vec square = S::MultiplyAdd(half, S::Add(next, before), S::Subtract(S::Zero(), here));
        const Vec linear = S::Subtract(S::Subtract(slope, square), cubic);
        return S::MultiplyAdd(g, S::MultiplyAdd(g, S::MultiplyAdd(g, cubic, square), linear), here);
    }

    /// Third-order Lagrange between x[1] and x[2], or from place 1 on between x[2] and x[3], in
    /// Newton's form.
    static Vec Between(const Vec* x, Vec place) noexcept {
        const Vec beyond = S::Subtract(place, S::Broadcast(1.f));
        const auto chosen = [&](Vec below, Vec above) {
            return S::WhereNegative(beyond, below, above);
        };
        Vec first[4], second[3], third[2];  // differences
        for (int i = 0; i < 4; ++i) first[i] = S::Subtract(x[i + 1], x[i]);
        for (int i = 0; i < 3; ++i) second[i] = S::Subtract(first[i + 1], first[i]);
        for (int i = 0; i < 2; ++i) third[i] = S::Subtract(second[i + 1], second[i]);
        const Vec g = chosen(place, beyond);
        const Vec thirds = S::Broadcast(1.f / 3.f), half = S::Broadcast(0.5f);
        // x + g (first + (g - 1) / 2 (second + (g + 1) / 3 third))
        Vec sum = S::MultiplyAdd(S::MultiplyAdd(g, thirds, thirds), chosen(third[0], third[1]),
                                 chosen(second[0], second[1]));
        sum = S::MultiplyAdd(S::MultiplySubtract(g, half, half), sum, chosen(first[1], first[2]));
        return S::MultiplyAdd(g, sum, chosen(x[1], x[2]));
    }

    /// Samples k .. k + 3 of signals, a row of all of them each.
    static void LoadFourRows(const float* const* signals, std::ptrdiff_t k, Vec* rows) noexcept {
        Vec four[4];
        S::LoadQuarters(signals, k, four);
        const Vec low01 = S::UnpackLow(four[0], four[1]), low23 = S::UnpackLow(four[2], four[3]);
        const Vec high01 = S::UnpackHigh(four[0], four[1]),
                  high23 = S::UnpackHigh(four[2], four[3]);
        rows[0] = S::LowPairs(low01, low23);
        rows[1] = S::HighPairs(low01, low23);
        rows[2] = S::LowPairs(high01, high23);
        rows[3] = S::HighPairs(high01, high23);
    }

    enum class Sink { Store, Add, AddWeighted };

    /// Cells that run in one loop: their coefficients and pasts fit the registers of AVX-512.
    static constexpr int kMostInLoop = 3;

    /// Cells of one ear, for the lanes of one vector and all samples.
    struct Chain {
        const float* coefficients = nullptr;
        float* past = nullptr;  // of what enters
        const float* in = nullptr;
        float* out = nullptr;
        std::ptrdiff_t end = 0;  // of the samples, in floats
        const float* gain = nullptr;
        const float* weights = nullptr;
    };

    /// The newest two samples of a signal.
    struct Past {
        Vec last, before;

        void Push(Vec x) noexcept {
            before = last;
            last = x;
        }
        void Save(float* past) const noexcept {
            S::Store(past, last);
            S::Store(past + kRow, before);
        }
    };

    /// The last cells, at most kMostInLoop.
    template <Sink kSink>
    static void RunLast(int numCells, const Chain& chain) noexcept TAV_NONBLOCKING {
        static_assert(kMostInLoop == 3);
        numCells == 1   ? RunCells<1, kSink, true>(chain)
        : numCells == 2 ? RunCells<2, kSink, true>(chain)
                        : RunCells<3, kSink, true>(chain);
    }

    /// Runs cells in series, with coefficients and pasts in registers. A sample waits for the one
    /// before it only in the last of four additions.
    template <std::size_t kCells, Sink kSink, bool kIsLast>
    static void RunCells(const Chain& chain) noexcept TAV_NONBLOCKING {
        Vec b1[kCells], b2[kCells], a1[kCells], a2[kCells];
        Past past[kCells + 1];
        for (std::size_t c = 0; c < kCells; ++c) {
            const float* const rows = chain.coefficients + c * kCellCoefficients * kRow;
            b1[c] = S::Load(rows);
            b2[c] = S::Load(rows + kRow);
            a1[c] = S::Load(rows + 2 * kRow);
            a2[c] = S::Load(rows + 3 * kRow);
        }
        for (std::size_t c = 0; c <= kCells; ++c) {
            const float* const rows = chain.past + c * kCellStates * kRow;
            past[c] = {S::Load(rows), S::Load(rows + kRow)};
        }
        const Vec gain = kSink == Sink::Store ? S::Zero() : S::Load(chain.gain);
        for (std::ptrdiff_t k = 0; k < chain.end; k += kRow) {
            Vec x = S::Load(chain.in + k);
            for (std::size_t c = 0; c < kCells; ++c) {
                const Past &entered = past[c], &left = past[c + 1];
                Vec y = S::MultiplyAdd(b1[c], entered.last, x);
                y = S::MultiplyAdd(b2[c], entered.before, y);
                y = S::NegativeMultiplyAdd(a2[c], left.before, y);
                y = S::NegativeMultiplyAdd(a1[c], left.last, y);
                past[c].Push(x);
                x = y;
            }
            past[kCells].Push(x);
            if constexpr (kSink == Sink::Store) {
                S::Store(chain.out + k, x);
            } else {
                const Vec weight =
                    kSink == Sink::Add ? gain : S::Multiply(gain, S::Load(chain.weights + k));
                S::Store(chain.out + k, S::MultiplyAdd(weight, x, S::Load(chain.out + k)));
            }
        }
        // What leaves here enters the next loop, which needs its past as it was.
        for (std::size_t c = 0; c < kCells; ++c) past[c].Save(chain.past + c * kCellStates * kRow);
        if constexpr (kIsLast) past[kCells].Save(chain.past + kCells * kCellStates * kRow);
    }

    /// Rows of both ears, for the lanes of one vector and all samples.
    struct Span {
        const float* inLeft;
        const float* inRight;
        float* outLeft;
        float* outRight;
        std::ptrdiff_t end;  // of the samples, in floats
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
};

}  // namespace tav
