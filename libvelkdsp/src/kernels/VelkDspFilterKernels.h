// SPDX-License-Identifier: MIT
// The loops of recursive filters, once per instruction set.
//
// A recursive filter cannot compute several of its samples at once. Vectors are filled with what is
// independent instead: the samples of an all-pass that are nearer to each other than its delay, or
// the same section of several sources.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>

namespace tav {

/// Sources that are filtered side by side: a row holds one sample of each.
inline constexpr std::ptrdiff_t kSourceLanes = 16;

/// A pair of poles of the near-field filter with the pair of the high-pass before it, both in
/// integrator form; or a real pole with a real pole.
struct NearFieldSection {
    bool isReal = false;
    float g = 0.f;                // distance of the pole from 0, divided by twice the rate
    float damping = 0.f;          // 2 zeta; not read for a real pole
    float highPassDamping = 0.f;  // likewise
};

/// What differs between the sources.
struct NearFieldLanes {
    const float* highPassG = nullptr;     // a row; 0 lets pass. Null: nobody has a high-pass
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
    /// Sections in series, real poles last.
    /// @param states  kNearFieldStates rows per section   @param in, out  n rows, may be the same
    /// A source with g = 0, states 0 and ratio 1 comes out bit for bit. A vector set may fuse
    /// multiply and add.
    void (*nearField)(const NearFieldSection* sections,
                      int numSections,
                      const NearFieldLanes& lanes,
                      float* states,
                      const float* in,
                      float* out,
                      int n) noexcept TAV_NONBLOCKING;
    /// No value is larger than `growth` times the one before it in its lane, or times 1 where that
    /// one is below 1.  @param rows  n rows, overwritten
    /// @param reached  a row: the values before the first ones, afterwards the last ones
    void (*limitGrowth)(float* rows, float* reached, float growth, int n) noexcept TAV_NONBLOCKING;
    /// Signals of n samples into rows and back.  @param signals  kSourceLanes
    void (*toRows)(const float* const* signals, float* rows, int n) noexcept TAV_NONBLOCKING;
    void (*fromRows)(const float* rows, float* const* signals, int n) noexcept TAV_NONBLOCKING;

    // One file each.
    static const FilterKernels& Scalar() noexcept;
    static const FilterKernels& Avx2() noexcept;
    static const FilterKernels& Avx512() noexcept;
};

}  // namespace tav
