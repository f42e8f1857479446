// SPDX-License-Identifier: MIT
// Makes many signals of equal spectrum and low mutual correlation from one.
//
// Each output is the input through four all-pass sections in series, w = v - g w[n - D] and
// v' = g w + w[n - D]. Each chain has magnitude 1 at every frequency, so an output is not coloured
// and has the power of the input. Delays and signs come from a low-discrepancy sequence, so that
// hundreds of outputs differ without a table.
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

/// The chain of an output: delays of 2 to 20 ms, with a separate range for each section.
/// @see "Natural sounding artificial reverberation", JAES 10(3), 1962; "The decorrelation of audio
/// signals and its impact on spatial imagery", Computer Music Journal 19(4), 1995
std::array<AllPassSection, kAllPassSections> DecorrelationChain(unsigned output,
                                                                float sampleRateHz) noexcept;

/// One input, any number of outputs with a weight each. A single output is the unfiltered input.
/// Unconnected outputs are not computed; nothing is, half a second after input and chains have
/// become silent. An output with the weight 0 is still computed: if its chain were empty when the
/// weight rises, each of its delays would click.
class DecorrelationBank : public AudioProcessorWithAutoMute {
public:
    /// @param weights  one per output
    explicit DecorrelationBank(std::span<const float> weights);
    ~DecorrelationBank() override;

    using AudioProcessorBase::Process;
    /// Zeroes the outputs, then calls Perform.
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;
    std::string Name() const override;
    /// Also empties the chains.
    void SetSampleRate(float hz) override;
    void Reset() override;

    /// Adds to the connected outputs. Input with NaN or magnitudes beyond 1e12 counts as silence.
    /// Thread: audio.
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

    /// Starts a glide to new weights. @param weights  one per output, finite  Thread: control.
    void SetWeights(std::span<const float> weights) noexcept;
    /// Milliseconds, for later glides; negative or not finite: ignored.  Thread: control.
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
