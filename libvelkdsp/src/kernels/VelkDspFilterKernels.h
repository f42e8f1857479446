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
    /// A row: g of each source's high-pass, 0 for a source without one. Null if no source has one.
    const float* highPassG = nullptr;
    /// A row: by how much highPassG grows from one sample to the next. Null if it does not change.
    const float* highPassStep = nullptr;
    /// A row: the factor by which the states of the high-pass decay with each sample. Null if they
    /// do not decay.
    const float* highPassKeep = nullptr;
    /// Rows: radius of the loudspeaker array divided by the distance of the source.
    const float* ratios = nullptr;
    /// Floats from the ratios of one sample to those of the next: kSourceLanes, or 0 if one row
    /// serves all samples.
    std::ptrdiff_t ratioStride = 0;
};

/// Rows of states of a section: two of the high-pass, two of the near-field filter.
inline constexpr int kNearFieldStates = 4;

struct FilterKernels {
    /// Runs n samples through an all-pass section. ring[k] holds the value from one delay ago and
    /// is replaced by the newest one.
    /// @param n  at most the delay, so that nothing written here is read again in the same call
    void (*allPass)(float* signal, float* ring, float gain, int n) noexcept TAV_NONBLOCKING;
    /// Runs sections in series, first-order ones last.
    /// @param states  kNearFieldStates rows per section   @param in, out  n rows, may be the same
    /// A source with g = 0, states of 0 and a ratio of 1 comes out bit for bit as it went in.
    /// Vector sets may fuse multiplication and addition.
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
