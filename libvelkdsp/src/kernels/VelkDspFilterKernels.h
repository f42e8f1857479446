// SPDX-License-Identifier: MIT
// Sample loops of recursive filters, once per instruction set.
//
// A recursive filter needs its previous outputs, so a vector cannot hold consecutive samples. It
// holds independent numbers instead: samples of an all-pass within its delay, or the same section
// of several sources.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>

namespace tav {

/// Sources that are filtered side by side: a row holds one number of each.
inline constexpr std::ptrdiff_t kSourceLanes = 16;

/// A second-order section of the near-field filter and one of the high-pass before it, both in
/// integrator form; or two first-order sections.
struct NearFieldSection {
    bool isReal = false;
    float g = 0.f;                // distance of the pole from 0, divided by twice the rate
    float damping = 0.f;          // 2 zeta; not read for a real pole
    float highPassDamping = 0.f;  // likewise
};

/// The parameters that differ between the sources, in rows.
struct NearFieldLanes {
    const float* highPassG = nullptr;     // a row; 0: no high-pass. Null: no source has one
    const float* highPassStep = nullptr;  // a row: what highPassG grows by from sample to sample.
                                          // Null: nothing
    const float* highPassKeep = nullptr;  // a row: what is left of its states after a sample.
                                          // Null: all of them
    const float* ratios = nullptr;        // rows of array radius / source distance
    std::ptrdiff_t ratioStride = 0;       // floats from a sample's row to the next: 0 where all
                                          // samples have the same, else kSourceLanes
};

/// Rows of states of a section: two of the high-pass, two of the near-field filter.
inline constexpr int kNearFieldStates = 4;

struct FilterKernels {
    /// A run through an all-pass section that does not reach its delay: ring[k] is read as the
    /// value of a delay ago and becomes the newest one.  @param n  at most the delay
    void (*allPass)(float* signal, float* ring, float gain, int n) noexcept TAV_NONBLOCKING;
    /// Runs sections in series, first-order ones last.
    /// @param states  kNearFieldStates rows per section   @param in, out  n rows, may be the same
    /// A source with g = 0, states of 0 and ratio 1 is not changed by a single bit. A vector set
    /// may fuse multiply and add.
    void (*nearField)(const NearFieldSection* sections,
                      int numSections,
                      const NearFieldLanes& lanes,
                      float* states,
                      const float* in,
                      float* out,
                      int n) noexcept TAV_NONBLOCKING;
    /// Limits each value to `growth` times the larger of 1 and the value before it in its lane.
    /// @param rows  n rows, overwritten
    /// @param reached  a row: in, the values before the first row; out, those of the last row
    void (*limitGrowth)(float* rows, float* reached, float growth, int n) noexcept TAV_NONBLOCKING;
    /// Copies signals of n samples to rows, and rows to signals.  @param signals  kSourceLanes
    void (*toRows)(const float* const* signals, float* rows, int n) noexcept TAV_NONBLOCKING;
    void (*fromRows)(const float* rows, float* const* signals, int n) noexcept TAV_NONBLOCKING;

    // One file each.
    static const FilterKernels& Scalar() noexcept;
    static const FilterKernels& Avx2() noexcept;
    static const FilterKernels& Avx512() noexcept;
};

}  // namespace tav
