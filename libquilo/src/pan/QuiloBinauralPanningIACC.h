// SPDX-License-Identifier: MIT
// Two ears in a diffuse field.
#pragma once

#include "containers/VelkDspAudioBuffer.h"
#include "pan/QuiloBinauralPanning.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspSignalMatrix.h"

#include <array>
#include <memory>
#include <vector>

namespace Quilo {

/// Gives the ears the interaural coherence of a diffuse field. That takes two independent signals:
/// sources 1, 3, 5, ... are one of them, e, sources 2, 4, 6, ... the other one, o. With two chains
/// of all-passes A and B, left = A e + B o and right = B e + A o: every source reaches both ears
/// with unchanged spectrum and power, and of e and o that are independent and of equal power the
/// coherence is the cosine of the phase between A and B. Its target is sin(x) / x with
/// x = pi f / 550 Hz, times 1 - f / 2700 Hz until that is 0.
/// Sources that are alike are not diffuse: their sum is heard in front. Positions do not matter.
/// @see "An improved parametric model for perception-based design of virtual acoustics", AES 35th
/// Conference, 2009; "Investigations on an early-reflection-free model for BRIRs", JAES 58(9), 2010
class BinauralPanningIACC final : public BinauralPanning {
public:
    BinauralPanningIACC(unsigned numInputs, unsigned numOutputs);

    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

private:
    static constexpr unsigned kMaxFrames = 512;
    static constexpr std::size_t kMaxSections = 3;
    static constexpr std::size_t kLanes = 4;  // e and o through A and B: A e, B e, B o, A o
    using LaneValues = std::array<double, kLanes>;

    /// The chains at one rate, with their states.
    class Chains {
    public:
        explicit Chains(float rateHz);
        /// The left ear takes the place of e, the right ear that of o.
        /// @return false: the states have run away; they are cleared, and the samples are no sound
        bool Perform(float* left, float* right, unsigned frames) noexcept TAV_NONBLOCKING;

    private:
        bool AreSane() const noexcept TAV_NONBLOCKING;

        std::size_t numSections_;
        std::array<LaneValues, kMaxSections> gains_{};
        std::array<LaneValues, kMaxSections> states_{};
    };

    bool HasDelays() const override TAV_REQUIRES(controlLock_) { return false; }
    void ComputeSource(unsigned, bool, bool) override TAV_REQUIRES(controlLock_) {}
    void ApplySampleRate() override TAV_REQUIRES(controlLock_);
    void ApplyReset() override TAV_REQUIRES(controlLock_);
    void ApplySourceMute(unsigned index) override TAV_REQUIRES(controlLock_);
    void SetSourceGain(unsigned index, float gain, bool immediate);

    tav::SignalMatrix sums_;  // to e and o
    tav::HandOver<Chains> chains_;
    // audio only
    tav::AudioBuffer ears_;
    std::vector<const float*> inputs_;
};

}  // namespace Quilo
