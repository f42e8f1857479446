// SPDX-License-Identifier: MIT
// What the sources of a binaural panner remember of themselves, and their way to two ears.
#pragma once

#include "kernels/VelkDspBinauralKernels.h"
#include "kernels/VelkDspConvolutionKernels.h"
#include "kernels/VelkDspInstructionSet.h"
#include "processors/VelkDspDelayKernels.h"
#include "processors/VelkDspRamp.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Quilo {

/// Every source has a gain and a delay for each ear, and a window of its newest samples, as short
/// as the delays allow. A source is delayed first and filtered then: one memory serves both ears,
/// and what comes out of the filters only has to be added up.
/// Pattern, piece by piece: (Wake? SetGain* SetDelay* Take PastOf* Delayed)*; all of a source that
/// does not sleep.
/// Thread: the constructor control, the rest audio.
class HrtfVoices {
public:
    static constexpr float kLongestDelayMs = 20.f;
    /// Delays of a voice, each a path to an ear. A panner uses the first ones.
    static constexpr std::size_t kMostPaths = 4;

    /// @param longestPiece  samples that Take may be given
    /// @param past  samples that PastOf gives
    /// Throws: std::bad_alloc.
    HrtfVoices(unsigned numVoices, float rateHz, std::size_t longestPiece, std::size_t past);

    void SetKind(tav::DelayKind kind) noexcept TAV_NONBLOCKING { kind_ = kind; }

    /// Silence behind it; the gain is 1, delays are 0.
    void Wake(unsigned voice) noexcept TAV_NONBLOCKING;
    /// @param glideSamples  0: at once
    void SetGain(unsigned voice, float gain, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;
    /// @param ms  clamped to 0 .. kLongestDelayMs
    void SetDelay(unsigned voice,
                  std::size_t path,
                  float ms,
                  std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;
    /// There has been no sound, by the gain, for as long as the window remembers.
    bool IsSilenced(unsigned voice) const noexcept TAV_NONBLOCKING;

    /// The next piece.
    void Take(unsigned voice, std::span<const float> input) noexcept TAV_NONBLOCKING;
    /// The piece at the end of one path; its delay glides on. Ask for each path in use, once.
    void Delayed(unsigned voice,
                 std::size_t path,
                 std::span<float> output) noexcept TAV_NONBLOCKING;
    /// What came by the path before the piece, as if the delay had always been the present one.
    /// @param before  samples from the first of the output to the piece, at most `past`
    void PastOf(unsigned voice,
                std::size_t path,
                std::size_t before,
                std::span<float> output) const noexcept TAV_NONBLOCKING;
    /// The piece without delays.
    const float* Piece(unsigned voice) const noexcept TAV_NONBLOCKING {
        return samples_.data() + voice * length_ + voices_[voice].piece;
    }

private:
    struct Voice {
        tav::Ramp gain{1.f};
        std::array<tav::Ramp, kMostPaths> delays{tav::Ramp(), tav::Ramp(), tav::Ramp(),
                                                 tav::Ramp()};  // samples
        std::array<float, kMostPaths> allpass{};                // what that kernel remembers
        std::size_t piece = 0;    // where the newest piece begins in the window
        std::size_t end = 0;      // and where it ends
        std::size_t silence = 0;  // samples since the gain became 0
    };

    void ReadFixed(tav::DelayKind kind,
                   float delay,
                   const float* piece,
                   std::span<float> output) const noexcept TAV_NONBLOCKING;
    /// A delay that moves in a straight line.  @param first  of the first sample
    void ReadGliding(float first,
                     float step,
                     const float* piece,
                     std::span<float> output) const noexcept TAV_NONBLOCKING;
    void ReadOneByOne(Voice& voice,
                      std::size_t path,
                      const float* piece,
                      std::span<float> output) noexcept TAV_NONBLOCKING;

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const tav::ConvolutionKernels& fir_ = tav::BestKernels<tav::ConvolutionKernels>();
    float samplesPerMs_;
    float longestDelay_;  // samples
    std::size_t kept_;    // samples before a piece that somebody may read
    std::size_t length_;  // of a window: it is moved back to its start when it is full
    std::vector<float> samples_;
    std::vector<Voice> voices_;
    std::vector<float> glide_;  // a piece of gains or delays
    tav::DelayKind kind_ = tav::DelayKind::Lagrange;
};

}  // namespace Quilo
