// SPDX-License-Identifier: MIT
// The loops over samples of the gain matrices, one set per instruction set of the processor.
//
// The program runs on every x86-64; what its processor can do beyond that is found out once, before
// audio starts. The scalar set is the reference twin of all others.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>
#include <cstdint>

namespace tav {

/// Outputs are mixed in tiles; gains of a row are looked at a group of tiles at a time.
inline constexpr int kTileOutputs = 6;
inline constexpr int kLeastTileOutputs = 4;  // fewer are better mixed by lists
inline constexpr int kGroupTiles = 8;
inline constexpr int kGroupOutputs = kTileOutputs * kGroupTiles;  // whole vectors of every set

/// A row of gains that move from `from` to `to`, by (to - from) * inverseLength each sample.
/// A difference of kMovingGain or less is no movement, and a gain that rests at `silence` or less
/// is silent, as are outputs whose entry in `heard` is 0; it is 1 for the others.
inline constexpr float kMovingGain = 1e-6f;
struct GainLine {
    const float* from;
    const float* to;
    const float* heard;
    float inverseLength;
    float silence;
};
/// What there is to mix: at sample k of the line, gain + k * step. Bit o of a group's masks belongs
/// to its output o: `audible` where gain or step is not 0, `moving` where the step is not.
struct RowPlan {
    float* gains;
    float* steps;
    std::uint64_t* audible;
    std::uint64_t* moving;
};

/// One input in the sum of one output: its gain is `gain + w[k] * step` at sample k.
struct MixPair {
    int input;
    float gain;
    float step;
};

/// Up to kStripFrames samples of some inputs, as panels read them: piece by piece, a piece being
/// the frames that a set of kernels takes at once. Where a piece begins at sample `at`, input i has
/// it at samples + i * inputStride + at * frameStride. fillStrip makes a strip; rows of
/// kStripFrames samples that lie at equal distances are one as they stand, with a frameStride of 1.
inline constexpr int kStripFrames = 64;
struct Strip {
    const float* samples;
    std::ptrdiff_t inputStride;
    std::ptrdiff_t frameStride;
};

/// A panel mixes some inputs of a strip into a tile of outputs. Gains of input i are at
/// `gains + i * kTileOutputs`, its steps likewise.
struct Panel {
    const float* gains;
    const float* steps;  // read by the ramped panel only
    const int* inputs;   // numInputs indices, each once
    int numInputs;
    int numOutputs;  // kLeastTileOutputs to kTileOutputs, the rest of the gains is not read
};

/// y is always added to. Counts may be anything from 0, alignment is free, x and y do not overlap.
/// A gain of exactly 1 on a single input adds that input bit for bit; samples have to be finite.
/// Thread: any.  A vector set may fuse multiply and add, and reorder the sum of an output.
struct GainKernels {
    /// y[k] += sum over the pairs of gain * inputs[input][offset + k]
    void (*mixConstantList)(float* y,
                            const float* const* inputs,
                            int offset,
                            const MixPair* pairs,
                            int numPairs,
                            int n) noexcept TAV_NONBLOCKING;
    /// y[k] += sum over the pairs of (gain + w[k] * step) * inputs[input][offset + k]
    void (*mixRampedList)(float* y,
                          const float* const* inputs,
                          int offset,
                          const MixPair* pairs,
                          int numPairs,
                          const float* w,
                          int n) noexcept TAV_NONBLOCKING;
    /// Copies samples `offset` to offset + n - 1 of the inputs that `indices` names.
    /// @param space  numSlots * kStripFrames floats; numSlots is above each index
    /// @param n  at most kStripFrames, here and for the panels
    Strip (*fillStrip)(float* space,
                       int numSlots,
                       const float* const* inputs,
                       int offset,
                       const int* indices,
                       int numInputs,
                       int n) noexcept TAV_NONBLOCKING;
    /// outputs[o][k] += sum over the inputs i of the panel of gain(i, o) * input i at sample k
    void (*mixConstantPanel)(float* const* outputs,
                             const Strip& strip,
                             const Panel& panel,
                             int n) noexcept TAV_NONBLOCKING;
    /// The same with the gains gain(i, o) + w[k] * step(i, o).
    /// @param w  kStripFrames values, finite behind the first n too
    void (*mixRampedPanel)(float* const* outputs,
                           const Strip& strip,
                           const Panel& panel,
                           const float* w,
                           int n) noexcept TAV_NONBLOCKING;
    /// Bit for bit the same in all sets. All arrays have numGroups * kGroupOutputs entries, the
    /// masks numGroups.
    void (*planRow)(const GainLine& line,
                    const RowPlan& plan,
                    int numGroups) noexcept TAV_NONBLOCKING;

    // One file each. The scalar one: plain loops, inputs outermost, no fused multiply-add.
    static const GainKernels& Scalar() noexcept;
    static const GainKernels& Avx2() noexcept;
    static const GainKernels& Avx512() noexcept;
};

}  // namespace tav
