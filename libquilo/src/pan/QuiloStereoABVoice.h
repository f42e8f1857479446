// SPDX-License-Identifier: MIT
// One source of a spaced stereo pair: two delay lines and two gains.
#pragma once

#include "laws/QuiloStereoLaws.h"
#include "processors/VelkDspDelay.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspRamp.h"

#include <array>
#include <cstdint>

namespace Quilo {

/// Control sets targets, audio glides towards them; neither waits for the other.
/// Starts silent, both lines at 1 ms.
class StereoABVoice {
public:
    /// The longest piece that Add takes.
    static constexpr unsigned kMaxFrames = 512;

    /// What a piece needs while it is computed; voices may share one.
    struct Scratch {
        std::array<float, kMaxFrames> delayed{};
        std::array<float, kMaxFrames> gains{};
    };

    StereoABVoice();

    /// Thread: control.
    void SetSampleRate(float hz);
    void SetInterpolationTime(float ms);
    void SetDelays(const SpacedPair& pair, bool immediate);
    void SetGains(float left, float right, bool immediate);
    /// Empties the lines, from the next block on.
    void Reset();

    /// Adds the source to the outputs.  @param left, right  null: not wanted
    /// Thread: audio.
    void Add(float* left,
             float* right,
             const float* input,
             unsigned frames,
             Scratch& scratch) noexcept TAV_NONBLOCKING;
    /// To be called in place of Add while the input carries nothing: the lines are emptied, and
    /// glides go on.
    void Rest(unsigned frames) noexcept TAV_NONBLOCKING;

private:
    struct GainTargets {
        std::uint32_t numJumps = 0;  // when it has grown, the gains first jump to `jump`
        std::array<float, 2> jump{};
        std::array<float, 2> target{};
        float glideMs = 0.f;
    };
    struct Side {
        tav::Delay delay;
        tav::Ramp gain;
    };

    void TakeTargets() noexcept TAV_NONBLOCKING;
    static void AddSide(Side& side,
                        float* output,
                        const float* input,
                        unsigned frames,
                        Scratch& scratch) noexcept TAV_NONBLOCKING;

    std::array<Side, 2> sides_;  // left, right
    // control only
    GainTargets newest_;
    // shared: control writes, audio reads
    tav::SharedCell<GainTargets> shared_;
    // audio only
    GainTargets taken_;
};

}  // namespace Quilo
