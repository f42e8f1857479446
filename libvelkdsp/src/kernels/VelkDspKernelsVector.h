// SPDX-License-Identifier: MIT
// The vector kernels, written once over the few operations of an instruction set.
//
// Only the translation unit of an instruction set includes this. Everything it makes of these
// templates stays inside it: `S`, the set of operations, lives in an anonymous namespace there, so
// that no code for a new processor can replace a like-named function of the rest of the program.
// S offers Vec, kLanes, kStripVectors, Zero(), Load(p), Store(p, v), LoadFirst(p, count),
// StoreFirst(p, v, count), Broadcast(value), Add(a, b), Multiply(a, b) and MultiplyAdd(a, b, c).
#pragma once

#include "kernels/VelkDspKernels.h"

namespace tav {

template <class S>
class VectorKernels {
public:
    static constexpr int kStripFrames = S::kStripVectors * S::kLanes;

    static void AddScaled(float* y, const float* x, float gain, int n) noexcept TAV_NONBLOCKING {
        if (gain == 0.f) return;
        const Vec g = S::Broadcast(gain);
        ForEachVector(n,
                      [&](int k, auto part) { part.Add(y + k, S::Multiply(g, part.Load(x + k))); });
    }

    static void AddRamped(float* y, const float* x, float first, float last, int n) noexcept
        TAV_NONBLOCKING {
        if (first == last) return AddScaled(y, x, first, n);
        if (n == 1) first = last;
        const Vec start = S::Broadcast(first);
        const Vec step = S::Broadcast(n > 1 ? (last - first) / static_cast<float>(n - 1) : 0.f);
        ForEachVector(n, [&](int k, auto part) {
            const Vec index = S::Add(S::Broadcast(static_cast<float>(k)), S::Load(kLaneIndex));
            part.Add(y + k, S::Multiply(S::MultiplyAdd(index, step, start), part.Load(x + k)));
        });
    }

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
                for (int v = 0; v < kListVectors; ++v) {
                    const Vec sample = S::Load(x + v * S::kLanes);
                    base[v] = S::MultiplyAdd(gain, sample, base[v]);
                    slope[v] = S::MultiplyAdd(step, sample, slope[v]);
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

    static void MixConstantPanel(float* const* outputs,
                                 const float* strip,
                                 const Panel& panel,
                                 int n) noexcept TAV_NONBLOCKING {
        OverStrip(n, [&](auto vectors) {
            ConstantTile<decltype(vectors)::kCount>(outputs, strip, panel, n);
        });
    }

    static void MixRampedPanel(float* const* outputs,
                               const float* strip,
                               const Panel& panel,
                               const float* w,
                               int n) noexcept TAV_NONBLOCKING {
        OverStrip(n, [&](auto vectors) {
            constexpr int kCount = decltype(vectors)::kCount;
            for (int first = 0; first < kTileOutputs; first += kRampedOutputs) {
                RampedTile<kCount>(outputs + first, strip, panel, first, w, n);
            }
        });
    }

    static constexpr Kernels kKernels{AddScaled,     AddRamped,        MixConstantList,
                                      MixRampedList, MixConstantPanel, MixRampedPanel,
                                      kStripFrames};

private:
    using Vec = typename S::Vec;
    template <int count>
    using Vecs = Vec[static_cast<unsigned>(count)];
    static constexpr int kListVectors = 4;
    static constexpr int kRampedOutputs = kTileOutputs / 2;  // two sums each fill the registers
    static constexpr float kLaneIndex[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

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
    template <int count>
    struct Vectors {
        static constexpr int kCount = count;
    };

    template <class Body>
    static void ForEachVector(int n, Body body) noexcept TAV_NONBLOCKING {
        int k = 0;
        for (; k + S::kLanes <= n; k += S::kLanes) body(k, Whole{});
        if (k < n) body(k, First{n - k});
    }

    /// Calls body(Vectors<count>) with the least count of vectors that holds n samples.
    template <int count = 1, class Body>
    static void OverStrip(int n, Body body) noexcept TAV_NONBLOCKING {
        if constexpr (count == S::kStripVectors) {
            body(Vectors<count>{});
        } else if (n <= count * S::kLanes) {
            body(Vectors<count>{});
        } else {
            OverStrip<count + 1>(n, body);
        }
    }

    /// Adds the sums of one output; the last vector may be a part.
    template <int kVectors>
    static void AddSums(float* y, const Vec* sums, int n) noexcept TAV_NONBLOCKING {
        if (n == kVectors * S::kLanes) {
            for (int v = 0; v < kVectors; ++v) Whole{}.Add(y + v * S::kLanes, sums[v]);
            return;
        }
        for (int v = 0; v < kVectors - 1; ++v) Whole{}.Add(y + v * S::kLanes, sums[v]);
        const int at = (kVectors - 1) * S::kLanes;
        First{n - at}.Add(y + at, sums[kVectors - 1]);
    }

    template <int kVectors>
    static void ConstantTile(float* const* outputs,
                             const float* strip,
                             const Panel& panel,
                             int n) noexcept TAV_NONBLOCKING {
        Vecs<kVectors> sums[kTileOutputs];
        for (auto& output : sums) {
            for (Vec& sum : output) sum = S::Zero();
        }
        const int* const end = panel.inputs + panel.numInputs;
        for (const int* input = panel.inputs; input != end; ++input) {
            const float* x = strip + *input * kStripFrames;
            const float* gains = panel.gains + *input * kTileOutputs;
            Vecs<kVectors> samples;
            for (int v = 0; v < kVectors; ++v) samples[v] = S::Load(x + v * S::kLanes);
            for (int o = 0; o < kTileOutputs; ++o) {
                const Vec gain = S::Broadcast(gains[o]);
                for (int v = 0; v < kVectors; ++v) {
                    sums[o][v] = S::MultiplyAdd(gain, samples[v], sums[o][v]);
                }
            }
        }
        for (int o = 0; o < kTileOutputs; ++o) AddSums<kVectors>(outputs[o], sums[o], n);
    }

    template <int kVectors>
    static void RampedTile(float* const* outputs,
                           const float* strip,
                           const Panel& panel,
                           int firstOutput,
                           const float* w,
                           int n) noexcept TAV_NONBLOCKING {
        Vecs<kVectors> bases[kRampedOutputs];
        Vecs<kVectors> slopes[kRampedOutputs];
        for (int o = 0; o < kRampedOutputs; ++o) {
            for (int v = 0; v < kVectors; ++v) bases[o][v] = slopes[o][v] = S::Zero();
        }
        const int* const end = panel.inputs + panel.numInputs;
        for (const int* input = panel.inputs; input != end; ++input) {
            const float* x = strip + *input * kStripFrames;
            const float* gains = panel.gains + *input * kTileOutputs + firstOutput;
            const float* steps = panel.steps + *input * kTileOutputs + firstOutput;
            Vecs<kVectors> samples;
            for (int v = 0; v < kVectors; ++v) samples[v] = S::Load(x + v * S::kLanes);
            for (int o = 0; o < kRampedOutputs; ++o) {
                const Vec gain = S::Broadcast(gains[o]);
                const Vec step = S::Broadcast(steps[o]);
                for (int v = 0; v < kVectors; ++v) {
                    bases[o][v] = S::MultiplyAdd(gain, samples[v], bases[o][v]);
                    slopes[o][v] = S::MultiplyAdd(step, samples[v], slopes[o][v]);
                }
            }
        }
        for (int o = 0; o < kRampedOutputs; ++o) {
            for (int v = 0; v < kVectors; ++v) {
                const Vec weight = S::Load(w + v * S::kLanes);
                bases[o][v] = S::MultiplyAdd(weight, slopes[o][v], bases[o][v]);
            }
            AddSums<kVectors>(outputs[o], bases[o], n);
        }
    }
};

}  // namespace tav
