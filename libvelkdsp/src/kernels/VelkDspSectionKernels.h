// SPDX-License-Identifier: MIT
// Banks of second-order sections, a channel per lane, once per instruction set.
//
// A section needs its own previous sample before it can compute the next one, so filtering one
// channel after the other mostly waits for results. Several channels side by side use that time.
#pragma once

#include "kernels/VelkDspInstructionSet.h"
#include "text/VelkDspNonblocking.h"

namespace tav {

inline constexpr int kSectionLanes = 16;

/// The same section of all channels: v3 = x - s2, bandpass = a1 s1 + a2 v3,
/// lowpass = s2 + a2 s1 + a3 v3, y = m0 x + m1 bandpass + m2 lowpass; the states are then
/// reflected at both outputs.
struct SectionBank {
    double s1[kSectionLanes] = {};
    double s2[kSectionLanes] = {};
    double a1[kSectionLanes] = {};
    double a2[kSectionLanes] = {};
    double a3[kSectionLanes] = {};
    double m0[kSectionLanes] = {};
    double m1[kSectionLanes] = {};
    double m2[kSectionLanes] = {};
    double step0[kSectionLanes] = {};  // added to m0 before each sample
    double step1[kSectionLanes] = {};
    double step2[kSectionLanes] = {};
};

/// @param banks  numBanks in series
/// @param numLanes  channels, 1 .. kSectionLanes; the numbers of the other lanes are not used
/// @param outputs, inputs  numLanes pointers, n samples each; an output may be its own input
struct SectionRun {
    SectionBank* banks;
    int numBanks;
    int numLanes;
    float* const* outputs;
    const float* const* inputs;
    int n;
};

/// A channel's samples do not depend on how many others there are, nor on how a signal is cut into
/// runs. Vector sets may fuse multiply and add.  Thread: audio.
struct SectionKernels {
    /// The mix rests; the steps are not read.
    void (*run)(const SectionRun& run) noexcept TAV_NONBLOCKING;
    /// The mix moves by its steps.
    void (*runMoving)(const SectionRun& run) noexcept TAV_NONBLOCKING;

    // One file each. Wider vectors than those of AVX2 gain nothing here.
    static const SectionKernels& Scalar() noexcept;
    static const SectionKernels& Avx2() noexcept;
};

}  // namespace tav
