// SPDX-License-Identifier: MIT
// The vector kernels, written once over the few operations of an instruction set.
//
// Only the translation unit of an instruction set includes this. Everything it makes of these
// templates stays inside it: `S`, the set of operations, lives in an anonymous namespace there, so
// that no code for a new processor can replace a like-named function of the rest of the program.
// S offers Vec, kLanes, kPieceVectors, Zero(), Load(p), Store(p, v), LoadFirst(p, count),
// StoreFirst(p, v, count), Broadcast(value), Add(a, b), Subtract(a, b), Multiply(a, b),
// MultiplyAdd(a, b, c), MagnitudeAbove(v, limit) that gives a mask, Where(mask, yes, no) and
// Bits(mask), lane 0 in the lowest bit.
#pragma once

#include "kernels/VelkDspGainKernels.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tav {

template <class S>
class VectorGainKernels {
public:
    static void MixConstantList(float* y,
                                const float* const* inputs,
                                int offset,
                                const MixPair* pairs,
                                int numPairs,
                                int n) noexcept TAV_NONBLOCKING {
        int k = 0;
        for (; k + kListVectors * S::kLanes <= n; k += kListVectors * S::kLanes) {
            Vec sum[kListVectors];
            for (Vec& v : sum) v = S::Zero();
            for (const MixPair* p = pairs; p != pairs + numPairs; ++p) {
                const float* x = inputs[p->input] + offset + k;
                const Vec gain = S::Broadcast(p->gain);
                for (int v = 0; v < kListVectors; ++v) {
                    sum[v] = S::MultiplyAdd(gain, S::Load(x + v * S::kLanes), sum[v]);
                }
            }
            for (int v = 0; v < kListVectors; ++v) Whole{}.Add(y + k + v * S::kLanes, sum[v]);
        }
        ForEachVector(n - k, [&](int rest, auto part) {
            Vec sum = S::Zero();
            for (const MixPair* p = pairs; p != pairs + numPairs; ++p) {
                const float* x = inputs[p->input] + offset + k + rest;
                sum = S::MultiplyAdd(S::Broadcast(p->gain), part.Load(x), sum);
            }
            part.Add(y + k + rest, sum);
        });
    }

    static void MixRampedList(float* y,
                              const float* const* inputs,
                              int offset,
                              const MixPair* pairs,
                              int numPairs,
                              const float* w,
                              int n) noexcept TAV_NONBLOCKING {
        int k = 0;
        for (; k + kListVectors * S::kLanes <= n; k += kListVectors * S::kLanes) {
            Vec base[kListVectors];
            Vec slope[kListVectors];
            for (int v = 0; v < kListVectors; ++v) base[v] = slope[v] = S::Zero();
            for (const MixPair* p = pairs; p != pairs + numPairs; ++p) {
                const float* x = inputs[p->input] + offset + k;
                const Vec gain = S::Broadcast(p->gain);
                const Vec step = S::Broadcast(p->step);
                Vecs<kListVectors> samples;
                for (int v = 0; v < kListVectors; ++v) samples[v] = S::Load(x + v * S::kLanes);
                for (int v = 0; v < kListVectors; ++v) {
                    base[v] = S::MultiplyAdd(gain, samples[v], base[v]);
                    slope[v] = S::MultiplyAdd(step, samples[v], slope[v]);
                }
            }
            for (int v = 0; v < kListVectors; ++v) {
                const int at = k + v * S::kLanes;
                Whole{}.Add(y + at, S::MultiplyAdd(S::Load(w + at), slope[v], base[v]));
            }
        }
        ForEachVector(n - k, [&](int rest, auto part) {
            Vec base = S::Zero();
            Vec slope = S::Zero();
            for (const MixPair* p = pairs; p != pairs + numPairs; ++p) {
                const Vec sample = part.Load(inputs[p->input] + offset + k + rest);
                base = S::MultiplyAdd(S::Broadcast(p->gain), sample, base);
                slope = S::MultiplyAdd(S::Broadcast(p->step), sample, slope);
            }
            part.Add(y + k + rest, S::MultiplyAdd(part.Load(w + k + rest), slope, base));
        });
    }

    /// Piece by piece: all inputs' samples of the first kPieceFrames side by side, then all inputs'
    /// next ones. The last piece ends with zeros.
    static Strip FillStrip(float* space,
                           int numSlots,
                           const float* const* inputs,
                           int offset,
                           const int* indices,
                           int numInputs,
                           int n) noexcept TAV_NONBLOCKING {
        for (const int* index = indices; index != indices + numInputs; ++index) {
            const float* const input = inputs[*index] + offset;
            float* piece = space + std::ptrdiff_t{*index} * kPieceFrames;
            for (int first = 0; first < n; first += kPieceFrames) {
                for (int k = first; k < first + kPieceFrames; k += S::kLanes) {
                    float* const samples = piece + (k - first);
                    if (k + S::kLanes <= n) {
                        S::Store(samples, S::Load(input + k));
                    } else {
                        S::Store(samples, k < n ? S::LoadFirst(input + k, n - k) : S::Zero());
                    }
                }
                piece += std::ptrdiff_t{numSlots} * kPieceFrames;
            }
        }
        return {space, kPieceFrames, numSlots};
    }

    static void MixConstantPanel(float* const* outputs,
                                 const Strip& strip,
                                 const Panel& panel,
                                 int n) noexcept TAV_NONBLOCKING {
        ForEachPiece(strip, n, [&](auto vectors, const Piece& piece, int at, int count) {
            constexpr int kVectors = decltype(vectors)::kCount;
            switch (panel.numOutputs) {
                case 4: return ConstantTile<4, kVectors>(outputs, at, piece, panel, count);
                case 5: return ConstantTile<5, kVectors>(outputs, at, piece, panel, count);
                default: return ConstantTile<6, kVectors>(outputs, at, piece, panel, count);
            }
        });
    }

    static void MixRampedPanel(float* const* outputs,
                               const Strip& strip,
                               const Panel& panel,
                               const float* w,
                               int n) noexcept TAV_NONBLOCKING {
        // Half a tile at a time: an output needs two sums, and they have to stay in registers.
        ForEachPiece(strip, n, [&](auto vectors, const Piece& piece, int at, int count) {
            constexpr int kVectors = decltype(vectors)::kCount;
            if (panel.numOutputs == 4) {
                RampedTile<0, 2, kVectors>(outputs, at, piece, panel, w, count);
                RampedTile<2, 2, kVectors>(outputs, at, piece, panel, w, count);
                return;
            }
            RampedTile<0, 3, kVectors>(outputs, at, piece, panel, w, count);
            if (panel.numOutputs == 5) {
                RampedTile<3, 2, kVectors>(outputs, at, piece, panel, w, count);
            } else {
                RampedTile<3, 3, kVectors>(outputs, at, piece, panel, w, count);
            }
        });
    }

    static void PlanRow(const GainLine& line,
                        const RowPlan& plan,
                        int numGroups) noexcept TAV_NONBLOCKING {
        const Vec inverse = S::Broadcast(line.inverseLength);
        const Vec silence = S::Broadcast(line.silence);
        const Vec stillness = S::Broadcast(kMovingGain);
        for (int group = 0; group < numGroups; ++group) {
            std::uint64_t audible = 0;
            std::uint64_t moving = 0;
            for (int bit = 0; bit < kGroupOutputs; bit += S::kLanes) {
                const int o = group * kGroupOutputs + bit;
                const Vec from = S::Load(line.from + o);
                const Vec to = S::Load(line.to + o);
                const Vec heard = S::Load(line.heard + o);
                const Vec difference = S::Subtract(to, from);
                const auto moves = S::MagnitudeAbove(difference, stillness);
                const Vec resting = S::Where(S::MagnitudeAbove(to, silence), to, S::Zero());
                const Vec gain = S::Multiply(S::Where(moves, from, resting), heard);
                const Vec step = S::Multiply(
                    S::Where(moves, S::Multiply(difference, inverse), S::Zero()), heard);
                S::Store(plan.gains + o, gain);
                S::Store(plan.steps + o, step);
                const std::uint64_t gains = S::Bits(S::MagnitudeAbove(gain, S::Zero()));
                const std::uint64_t steps = S::Bits(S::MagnitudeAbove(step, S::Zero()));
                moving |= steps << bit;
                audible |= (gains | steps) << bit;
            }
            plan.audible[group] = audible;
            plan.moving[group] = moving;
        }
    }

    static constexpr GainKernels kKernels{MixConstantList,  MixRampedList,  FillStrip,
                                          MixConstantPanel, MixRampedPanel, PlanRow};

private:
    using Vec = typename S::Vec;
    template <int count>
    using Vecs = Vec[static_cast<unsigned>(count)];
    template <int rows, int columns>
    using Table = Vec[static_cast<unsigned>(rows)][static_cast<unsigned>(columns)];
    static constexpr int kListVectors = 4;
    static constexpr int kPieceFrames = S::kPieceVectors * S::kLanes;
    static_assert(kGroupOutputs % S::kLanes == 0 && kStripFrames % kPieceFrames == 0);
    static_assert(kLeastTileOutputs == 4 && kTileOutputs == 6);  // the cases of the panels

    /// All lanes of a vector lie inside the block.
    struct Whole {
        Vec Load(const float* p) const { return S::Load(p); }
        void Add(float* y, Vec v) const { S::Store(y, S::Add(S::Load(y), v)); }
    };
    /// Only the first `count` lanes do; nothing behind them is touched.
    struct First {
        int count;
        Vec Load(const float* p) const { return S::LoadFirst(p, count); }
        void Add(float* y, Vec v) const {
            S::StoreFirst(y, S::Add(S::LoadFirst(y, count), v), count);
        }
    };
    /// Of a strip: input i begins at samples + i * inputStride.
    struct Piece {
        const float* samples;
        std::ptrdiff_t inputStride;
    };
    template <int count>
    struct Vectors {
        static constexpr int kCount = count;
    };

    /// A loop that leaves sums in their registers, which one that is not unrolled cannot.
    template <int count, class Body>
    static void Unrolled(Body body) noexcept TAV_NONBLOCKING {
        [&]<int... index>(std::integer_sequence<int, index...>) { (body(index), ...); }
        (std::make_integer_sequence<int, count>());
    }

    template <class Body>
    static void ForEachVector(int n, Body body) noexcept TAV_NONBLOCKING {
        int k = 0;
        for (; k + S::kLanes <= n; k += S::kLanes) body(k, Whole{});
        if (k < n) body(k, First{n - k});
    }

    /// Calls body(Vectors<the least count that holds them>, samples, first sample, count of
    /// samples) for each piece of a strip of n samples.
    template <class Body>
    static void ForEachPiece(const Strip& strip, int n, Body body) noexcept TAV_NONBLOCKING {
        Piece piece{strip.samples, strip.inputStride};
        int at = 0;
        for (; at + kPieceFrames <= n; at += kPieceFrames) {
            body(Vectors<S::kPieceVectors>{}, piece, at, kPieceFrames);
            piece.samples += kPieceFrames * strip.frameStride;
        }
        if (at < n) LastPiece(piece, at, n - at, body);
    }
    template <int count = 1, class Body>
    static void LastPiece(const Piece& piece, int at, int n, Body body) noexcept TAV_NONBLOCKING {
        if constexpr (count == S::kPieceVectors) {
            body(Vectors<count>{}, piece, at, n);
        } else if (n <= count * S::kLanes) {
            body(Vectors<count>{}, piece, at, n);
        } else {
            LastPiece<count + 1>(piece, at, n, body);
        }
    }

    /// Adds the sums of a tile; the last vector may be a part.
    template <int kOutputs, int kVectors>
    static void AddSums(float* const* outputs,
                        int at,
                        const Table<kOutputs, kVectors>& sums,
                        int n) noexcept TAV_NONBLOCKING {
        constexpr int kWhole = kVectors * S::kLanes;
        if (n == kWhole) return AddVectors<kOutputs, kVectors>(outputs, at, sums, Whole{});
        AddVectors<kOutputs, kVectors>(outputs, at, sums, First{n - (kWhole - S::kLanes)});
    }
    template <int kOutputs, int kVectors, class Last>
    static void AddVectors(float* const* outputs,
                           int at,
                           const Table<kOutputs, kVectors>& sums,
                           Last last) noexcept TAV_NONBLOCKING {
        Unrolled<kOutputs>([&](int o) {
            float* const y = outputs[o] + at;
            Unrolled<kVectors - 1>([&](int v) { Whole{}.Add(y + v * S::kLanes, sums[o][v]); });
            last.Add(y + (kVectors - 1) * S::kLanes, sums[o][kVectors - 1]);
        });
    }

    template <int kOutputs, int kVectors>
    static void ConstantTile(float* const* outputs,
                             int at,
                             const Piece& piece,
                             const Panel& panel,
                             int n) noexcept TAV_NONBLOCKING {
        Table<kOutputs, kVectors> sums;
        for (auto& output : sums) {
            for (Vec& sum : output) sum = S::Zero();
        }
        const int* const end = panel.inputs + panel.numInputs;
        for (const int* index = panel.inputs; index != end; ++index) {
            const std::ptrdiff_t input = *index;
            const float* x = piece.samples + input * piece.inputStride;
            const float* gains = panel.gains + input * kTileOutputs;
            Vecs<kVectors> samples;
            for (int v = 0; v < kVectors; ++v) samples[v] = S::Load(x + v * S::kLanes);
            for (int o = 0; o < kOutputs; ++o) {
                const Vec gain = S::Broadcast(gains[o]);
                for (int v = 0; v < kVectors; ++v) {
                    sums[o][v] = S::MultiplyAdd(gain, samples[v], sums[o][v]);
                }
            }
        }
        AddSums<kOutputs, kVectors>(outputs, at, sums, n);
    }

    /// Outputs kFirst to kFirst + kOutputs - 1 of the panel.
    template <int kFirst, int kOutputs, int kVectors>
    static void RampedTile(float* const* outputs,
                           int at,
                           const Piece& piece,
                           const Panel& panel,
                           const float* w,
                           int n) noexcept TAV_NONBLOCKING {
        Table<kOutputs, kVectors> bases;
        Table<kOutputs, kVectors> slopes;
        for (int o = 0; o < kOutputs; ++o) {
            for (int v = 0; v < kVectors; ++v) bases[o][v] = slopes[o][v] = S::Zero();
        }
        const int* const end = panel.inputs + panel.numInputs;
        for (const int* index = panel.inputs; index != end; ++index) {
            const std::ptrdiff_t input = *index;
            const float* x = piece.samples + input * piece.inputStride;
            const float* gains = panel.gains + input * kTileOutputs + kFirst;
            const float* steps = panel.steps + input * kTileOutputs + kFirst;
            Vecs<kVectors> samples;
            for (int v = 0; v < kVectors; ++v) samples[v] = S::Load(x + v * S::kLanes);
            for (int o = 0; o < kOutputs; ++o) {
                const Vec gain = S::Broadcast(gains[o]);
                const Vec step = S::Broadcast(steps[o]);
                for (int v = 0; v < kVectors; ++v) {
                    bases[o][v] = S::MultiplyAdd(gain, samples[v], bases[o][v]);
                    slopes[o][v] = S::MultiplyAdd(step, samples[v], slopes[o][v]);
                }
            }
        }
        Unrolled<kVectors>([&](int v) {
            const Vec weight = S::Load(w + at + v * S::kLanes);
            Unrolled<kOutputs>(
                [&](int o) { bases[o][v] = S::MultiplyAdd(weight, slopes[o][v], bases[o][v]); });
        });
        AddSums<kOutputs, kVectors>(outputs + kFirst, at, bases, n);
    }
};

}  // namespace tav
