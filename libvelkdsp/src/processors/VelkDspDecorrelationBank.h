// SPDX-License-Identifier: MIT
// Turns one signal into many that sound alike and have little to do with each other.
//
// Each output is the input through four all-pass sections in series, w = v - g w[n - D] and
// v' = g w + w[n - D]. Their product has magnitude 1 at every frequency, so an output is not
// coloured, and the powers of the outputs add up exactly. Delays and signs are stratified numbers
// of low discrepancy: hundreds of outputs stay distinct without a table.
#pragma once

#include "processors/VelkDspAudioProcessorWithAutoMute.h"
#include "processors/VelkDspGainRows.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspRamp.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

/// One section of a chain.
struct AllPassSection {
    std::uint32_t delay = 1;  // samples, at least 1
    float gain = 0.f;         // 0.5 or -0.5
};
inline constexpr unsigned kAllPassSections = 4;

/// The chain of an output: delays of 2 to 20 ms, each section in a range of its own.
/// @see "Natural sounding artificial reverberation", JAES 10(3), 1962; "The decorrelation of audio
/// signals and its impact on spatial imagery", Computer Music Journal 19(4), 1995
std::array<AllPassSection, kAllPassSections> DecorrelationChain(unsigned output,
                                                                float sampleRateHz) noexcept;

/// One input, any number of outputs, a weight each. A single output is the input itself.
/// A channel that is not connected costs nothing, and so do all of them half a second after input
/// and chains have fallen silent. One whose weight is 0 runs on unheard: from an empty chain it
/// would come back with a click for each of its delays.
class DecorrelationBank : public AudioProcessorWithAutoMute {
public:
    /// @param weights  one per output
    explicit DecorrelationBank(std::span<const float> weights);
    ~DecorrelationBank() override;

    using AudioProcessorBase::Process;
    /// Perform into zeroed outputs.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    std::string Name() const override;
    /// The chains start empty.
    void SetSampleRate(float hz) override;
    void Reset() override;

    /// Adds to the connected outputs. Input that is no number, or beyond 1e12, counts as silence.
    /// Thread: audio.
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

    /// Glides there.  @param weights  one per output, finite  Thread: control.
    void SetWeights(std::span<const float> weights) noexcept;
    /// Milliseconds of the glides to come; negative or not finite: ignored.  Thread: control.
    void SetInterpolationTime(float ms) noexcept;

private:
    static constexpr unsigned kMaxFrames = 512;
    struct Chains;

    void TakeWeights() noexcept TAV_NONBLOCKING;
    void PerformPiece(float* const* outputs,
                      unsigned offset,
                      const float* input,
                      unsigned frames) noexcept TAV_NONBLOCKING;
    void AddWeighted(unsigned output, float* to, unsigned frames) noexcept TAV_NONBLOCKING;

    // shared: control writes, audio reads
    GainRows targets_;  // one row of weights
    std::atomic<float> glideMs_;
    HandOver<Chains> chains_;
    // audio only
    std::uint32_t seenTargets_ = 0;
    std::vector<float> row_;
    std::vector<Ramp> weights_;
    std::uint64_t quietSamples_ = 0;
    std::array<float, kMaxFrames> work_{};
    std::array<float, kMaxFrames> gains_{};
};

}  // namespace tav
