// SPDX-License-Identifier: MIT
// Sample loops for two ears: cells and delays of many sources. A row has a number of each.
#pragma once

#include "kernels/VelkDspFilterKernels.h"

namespace tav {

/// Rows of coefficients of a cell: b0 b1 b2 a1 a2.
inline constexpr int kCellCoefficients = 5;
/// Rows of states of a cell.
inline constexpr int kCellStates = 2;
/// Cells that run in one loop: two in series for each ear.
inline constexpr int kCellsInPair = 4;

/// Cells in series, for both ears of up to kSourceLanes sources.
struct CellLanes {
    const float* coefficients;  // pairs x (first left, first right, second left, second right)
                                // x kCellCoefficients rows
    float* states;              // likewise x kCellStates rows
    int numPairs;
    int lanes;  // number of sources, in the first lanes; the other lanes may hold anything
};

/// Rows of samples for the left and the right ear.
struct EarRows {
    float* left;
    float* right;
};

/// The weights of fades, source by source: with c + i s turning by `turn` from sample to sample and
/// t growing by `step`, out = out0 + outCos c + outPart t and
/// in = in0 + inCos c + inSin s + inPart t.
struct FadeLanes {
    using Row = float[kSourceLanes];
    Row cosine, sine, turnCos, turnSin;
    Row part, step;
    Row out0, outCos, outPart;
    Row in0, inCos, inSin, inPart;
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
    /// sum[k] += weights[k] * (input[k] through all cells), for k = 0 .. n - 1.
    /// @param work  n rows an ear, overwritten; not `input`      @param sum  null pointers: nobody
    /// listens, the states alone count      @param weights  n rows; null: 1
    /// Transposed direct form II. A vector set may fuse multiply and add.
    void (*cascade)(const CellLanes& cells,
                    const EarRows& input,
                    const EarRows& work,
                    const EarRows& sum,
                    const float* weights,
                    int n) noexcept TAV_NONBLOCKING;
    /// y[k] = x at the fraction f + k step of the way from x[k] to x[k + 1], third-order Lagrange;
    /// a fraction slightly outside 0 .. 1 is clamped.  @param x  also x[-1] and x[n + 1]
    void (*glide)(float* y, const float* x, float f, float step, int n) noexcept TAV_NONBLOCKING;
    /// Computes n rows of weights, the first row from c, s and t as given.
    void (*fadeWeights)(const FadeLanes& fades,
                        float* out,
                        float* in,
                        int n) noexcept TAV_NONBLOCKING;
    /// y[k] += the sum of row k
    void (*sumLanes)(const float* rows, float* y, int n) noexcept TAV_NONBLOCKING;
    /// The section over n rows of both ears.  @param adds  true: to what `out` holds; false: out is
    /// overwritten and may be `in`. A vector set may fuse multiply and add.
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
