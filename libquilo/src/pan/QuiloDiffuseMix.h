// SPDX-License-Identifier: MIT
// What the diffuse panners have in common: all sources in one signal, and many decorrelated copies.
#pragma once

#include "containers/VelkDspAudioBuffer.h"
#include "processors/VelkDspDecorrelationBank.h"
#include "processors/VelkDspSignalMatrix.h"

#include <span>

namespace Quilo {

/// The mono sum of the sources of a panner, each at full level or muted, through a decorrelation
/// bank whose outputs are the panner's.
/// Thread: Perform audio; the rest control, under the panner's lock.
class DiffuseMix {
public:
    /// @param owner  the panner; outlives this      @param weights  one per output
    DiffuseMix(const tav::AudioProcessorWithAutoMute& owner, std::span<const float> weights);

    void SetSampleRate(float hz);
    void Reset();
    void SetInterpolationTime(float ms);
    /// The source glides to silence or back.
    void SetSourceMute(unsigned index, bool muted);
    void SetWeights(std::span<const float> weights) { bank_.SetWeights(weights); }

    /// Adds to the outputs.
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

private:
    static constexpr unsigned kMaxFrames = 512;

    tav::SignalMatrix sum_;
    tav::AudioBuffer mono_;  // one channel
    tav::DecorrelationBank bank_;
    std::vector<const float*> inputs_;  // audio only
    std::vector<float*> outputs_;
};

}  // namespace Quilo
