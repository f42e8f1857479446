// SPDX-License-Identifier: MIT
// Sample loops for two ears: cells and delays of many sources. A row has a number of each.
#pragma once

#include "kernels/VelkDspFilterKernels.h"

namespace tav {

/// Rows of coefficients of a cell: b1 b2 a1 a2. Its b0 is 1.
inline constexpr int kCellCoefficients = 4;
/// Rows of a signal's past: its last sample and the one before.
inline constexpr int kCellStates = 2;

/// Cells in series, for both ears of up to kSourceLanes sources.
struct CellLanes {
    const float* coefficients;  // ears x cells x kCellCoefficients rows
    const float* gains;         // two rows: what the left and the right ear is multiplied by
    float* states;              // ears x (numCells + 1) x kCellStates rows: what came into the
                                // first cell, what came out of it, out of the second and so on
    int numCells;               // at least 1
    int lanes;  // number of sources, in the first lanes; the other lanes may hold anything
};

/// How a source is read through four taps: sample k is the sum over t of taps[t] * signal[k - t].
inline constexpr int kReadingTaps = 4;

/// Sources that are read, a number of each in a row.
struct ReadingLanes {
    const float* signals[kSourceLanes];  // each from kReadingTaps samples before the first one to
                                         // kReadingTaps samples behind the last one
    float taps[kReadingTaps][kSourceLanes];
    // Of those that are read between samples: sample k lies at place + k step, where 0 is
    // signal[k - 2] and 1 is signal[k - 1]. All places are within 0 .. 2.
    float places[kSourceLanes];
    float steps[kSourceLanes];
    int lanes;  // number of sources, in the first lanes; the other ones may be computed, too
};

/// Rows of samples for the left and the right ear.
struct EarRows {
    float* left;
    float* right;
};

/// What the weights of crossfades are computed from; each source has a fade of its own.
/// The weight at a sample is constant + ofCos c + ofSin s + ofPart t, where c and s are the cosine
/// and the sine of an angle and t is a number. From one sample to the next the angle grows by the
/// one that has the cosine turnCos and the sine turnSin, and t grows by `step`. The members cosine,
/// sine and part are c, s and t of the first sample.
struct FadeLanes {
    using Row = float[kSourceLanes];
    Row cosine, sine, turnCos, turnSin;
    Row part, step;
    Row constant, ofCos, ofSin, ofPart;
};

/// A first-order section in integrator form for both ears of kSourceLanes sources:
/// lowpass = s + G (x - s), y = m0 x + m1 lowpass. Each row has a number of each source.
struct FirstOrderLanes {
    const float* gains;  // two rows: G = g / (1 + g), left and right
    const float* mix;    // four rows: m0 left, m0 right, m1 left, m1 right
    const float* steps;  // likewise: added to the mix before each sample. Null: the mix rests
    float* states;       // two rows: s, left and right
};

struct BinauralKernels {
    /// sum[k] += weights[k] * gains * (rows[k] through all cells), for k = 0 .. n - 1.
    /// Direct form I, where the past of what leaves a cell is that of what enters the next one:
    /// four multiplications a cell, all fused with an addition by vector sets.
    /// @param rows     n rows for each ear, overwritten; right null: only the left ear's cells run
    /// @param sum      null pointers where only the states are to be advanced
    /// @param weights  n rows; null if all weights are 1
    void (*cascade)(const CellLanes& cells,
                    const EarRows& rows,
                    const EarRows& sum,
                    const float* weights,
                    int n) noexcept TAV_NONBLOCKING;
    /// Overwrites n rows with the sources, each through its taps.
    void (*read)(const ReadingLanes& sources, float* rows, int n) noexcept TAV_NONBLOCKING;
    /// The same by third-order Lagrange interpolation at the places of the sources.
    void (*readGliding)(const ReadingLanes& sources, float* rows, int n) noexcept TAV_NONBLOCKING;
    /// y[k] is x at the place k + f + k step, by third-order Lagrange interpolation: where w is the
    /// integral part of f + k step, from x[k + w - 1] to x[k + w + 2].
    void (*glide)(float* y, const float* x, float f, float step, int n) noexcept TAV_NONBLOCKING;
    /// Computes n rows of weights; the first one belongs to c, s and t as they are given.
    void (*fadeWeights)(const FadeLanes& fades, float* rows, int n) noexcept TAV_NONBLOCKING;
    /// Adds the sum of the numbers of row k to y[k].
    void (*sumLanes)(const float* rows, float* y, int n) noexcept TAV_NONBLOCKING;
    /// Runs n rows of both ears through the section. Vector sets may fuse multiplication and
    /// addition.
    /// @param adds  true: the result is added to `out`; false: it overwrites `out`, which may be
    /// `in`
    void (*firstOrder)(const FirstOrderLanes& lanes,
                       const EarRows& in,
                       const EarRows& out,
                       bool adds,
                       int n) noexcept TAV_NONBLOCKING;

    // One file each.
    static const BinauralKernels& Scalar() noexcept;
    static const BinauralKernels& Avx2() noexcept;
    static const BinauralKernels& Avx512() noexcept;
};

}  // namespace tav
