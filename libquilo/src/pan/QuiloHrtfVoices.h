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
#include <utility>
#include <vector>

namespace Quilo {

/// Where to read a signal: its sample k is the sum over t of taps[t] * signal[k - t].
/// Readings that glide have no taps. Their sample k lies at place + k step, where 0 is
/// signal[k - 2] and 1 is signal[k - 1]. What rests beside them is read at its place, too.
struct PathReading {
    const float* signal = nullptr;
    std::array<float, static_cast<std::size_t>(tav::kReadingTaps)> taps{};
    float place = 0.f;
    float step = 0.f;  // other than 0: it glides
};

/// Reads what the sources of one group hear into rows.  Thread: audio.
class GroupReader {
public:
    static constexpr std::size_t kLongest = 64;  // frames

    void Set(std::size_t lane, const PathReading& reading) noexcept TAV_NONBLOCKING;
    void SetSilent(std::size_t lane) noexcept TAV_NONBLOCKING { Set(lane, {Silence(), {}}); }
    /// @param count  of lanes; those behind are silent      @param rows  of `frames` samples
    void Read(std::size_t count, float* rows, std::size_t frames) noexcept TAV_NONBLOCKING;

private:
    static constexpr std::size_t kAround = 8;  // samples that a kernel may read on either side

    const float* Silence() const noexcept TAV_NONBLOCKING { return silence_.data() + kAround; }

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    tav::ReadingLanes lanes_{};
    bool glides_ = false;  // one of the lanes
    std::array<float, kLongest + 2 * kAround> silence_{};
};

enum class SourceState : std::uint8_t {
    Asleep,  // nothing comes
    Muted,   // something comes and is not to be heard
    Awake,
};

/// @param present  something comes      @param sounds  the gain is not to become 0
/// @param isSilenced  it has been 0 for as long as anybody remembers
constexpr SourceState NextState(SourceState now, bool present, bool sounds, bool isSilenced) {
    if (!present) return SourceState::Asleep;
    const bool goesOn = now == SourceState::Awake && !isSilenced;
    return sounds || goesOn ? SourceState::Awake : SourceState::Muted;
}

/// Every source has a gain, a delay for each path to an ear, and a window of its newest samples, as
/// short as the delays allow. A source is delayed first and filtered then: one memory serves all
/// paths, and what comes out of the filters only has to be added up.
/// Pattern, piece by piece: (Wake? SetGain* SetDelay* Take (ReadingOf | PastOf)*)*; all of a source
/// that does not sleep.
/// Thread: the constructor control, the rest audio.
class HrtfVoices {
public:
    /// The largest head, of 1 m, gives 8 ms, or 15 ms at a scale of 200 %.
    static constexpr float kLongestDelayMs = 20.f;
    /// Windows hold this much until a longer delay is set; then they hold kLongestDelayMs.
    static constexpr float kUsualDelayMs = 5.f;
    /// Delays of a voice, each a path to an ear.
    static constexpr std::size_t kMostPaths = 4;

    /// @param longestPiece  samples that Take may be given
    /// @param past  the farthest that PastOf goes back, in samples
    /// @param numWindows  1, or 2 where what reaches the ears differs in more than delay
    /// @param numPaths  2 to kMostPaths
    /// Throws: std::bad_alloc.
    HrtfVoices(unsigned numVoices,
               float rateHz,
               std::size_t longestPiece,
               std::size_t past,
               std::size_t numWindows = 1,
               std::size_t numPaths = 2);

    void SetKind(tav::DelayKind kind) noexcept TAV_NONBLOCKING;

    /// Silence behind it; the gain is 1, delays are 0.
    void Wake(unsigned voice) noexcept TAV_NONBLOCKING;
    /// @param glideSamples  0: at once
    void SetGain(unsigned voice, float gain, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;
    /// @param ms  clamped to 0 .. kLongestDelayMs
    /// @param glideSamples  0: at once. Lengthened where the delay goes beyond what the window
    /// remembers: what was before a window of kUsualDelayMs is forgotten, and the path must not
    /// read silence there
    void SetDelay(unsigned voice,
                  std::size_t path,
                  float ms,
                  std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;
    /// There has been no sound, by the gain, for as long as the longer window remembers and `tail`
    /// samples more, in which filters ring out.
    bool IsSilenced(unsigned voice, std::size_t tail = 0) const noexcept TAV_NONBLOCKING;

    /// The next piece; delays glide on.
    void Take(unsigned voice, std::span<const float> input) noexcept TAV_NONBLOCKING {
        Take(voice, input, input);
    }
    /// The same with two windows: one for each of the first two paths.
    void Take(unsigned voice,
              std::span<const float> left,
              std::span<const float> right) noexcept TAV_NONBLOCKING;
    /// The piece at the end of a path, with what kernels read on both sides of it.
    const PathReading& ReadingOf(unsigned voice, std::size_t path) noexcept TAV_NONBLOCKING {
        Path& p = voices_[voice].paths[path];
        if (!std::exchange(p.isRead, true)) p.reading = FindReading(voice, path);
        return p.reading;
    }
    /// What came by the path before the piece, as if the delay had always been the one with which
    /// the piece begins.  @param before  samples to the piece, at most `past`
    PathReading PastOf(unsigned voice,
                       std::size_t path,
                       std::size_t before) noexcept TAV_NONBLOCKING;
    /// The piece at the end of a path, in `room` or wherever it already stands.
    /// @param room  as long as the piece
    const float* Delayed(unsigned voice,
                         std::size_t path,
                         std::span<float> room) noexcept TAV_NONBLOCKING;
    /// The piece without delays.
    const float* Piece(unsigned voice, std::size_t path = 0) const noexcept TAV_NONBLOCKING {
        return samples_.data() + WindowOf(voice, path) * length_ + voices_[voice].piece;
    }

private:
    struct Path {
        tav::Ramp delay;          // samples; at the end of the newest piece
        float before = 0.f;       // the delay before that piece
        float after = 0.f;        // and at its end
        std::uint32_t glide = 0;  // samples of it in which the delay moves, from its start on
        bool isMoved = false;     // it stands in moved_
        bool isRead = false;      // `reading` is that of the newest piece
        PathReading reading;
        float allpass = 0.f;   // what that kernel remembers
        float tapsFor = -1.f;  // the delay that `taps` are for; none yet
        std::array<float, 4> taps{};
    };
    struct Voice {
        tav::Ramp gain{1.f};
        std::array<Path, kMostPaths> paths;
        std::size_t piece = 0;    // where the newest piece begins in the window
        std::size_t end = 0;      // and where it ends
        std::size_t known = 0;    // samples before `end` that were received, or silent since Wake
        std::size_t silence = 0;  // samples since the gain became 0
        bool isLong = false;      // the window holds kLongestDelayMs
    };

    std::size_t WindowOf(unsigned voice, std::size_t path) const noexcept TAV_NONBLOCKING {
        return voice * numWindows_ + (numWindows_ == 2 ? path : 0);
    }
    /// Samples before a piece that somebody may read.
    std::size_t Kept(const Voice& voice) const noexcept TAV_NONBLOCKING {
        return longestKept_ - (voice.isLong ? 0 : saved_);
    }
    /// Makes the window a long one.
    void Lengthen(unsigned voice) noexcept TAV_NONBLOCKING;
    PathReading FindReading(unsigned voice, std::size_t path) noexcept TAV_NONBLOCKING;
    float* MovedPiece(unsigned voice, std::size_t path) noexcept TAV_NONBLOCKING;
    /// The delay moves, or the kind of delay remembers.
    bool Moves(const Path& path) const noexcept TAV_NONBLOCKING {
        return path.glide > 0 || kind_ == tav::DelayKind::Allpass;
    }
    /// The piece at the end of a path, sample by sample.
    const float* Moved(unsigned voice, std::size_t path) noexcept TAV_NONBLOCKING;
    PathReading Read(Path& path, float delay, const float* piece) const noexcept TAV_NONBLOCKING;
    void Move(Path& path, const float* piece, std::span<float> output) noexcept TAV_NONBLOCKING;
    void MoveOneByOne(Path& path,
                      const float* piece,
                      std::span<float> output) noexcept TAV_NONBLOCKING;

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const tav::ConvolutionKernels& fir_ = tav::BestKernels<tav::ConvolutionKernels>();
    float samplesPerMs_;
    float longestDelay_;  // samples
    float usualDelay_;
    std::size_t saved_;        // samples that a usual window is shorter than a long one
    std::size_t longestKept_;  // of a long window
    std::size_t length_;       // of a long window: it is moved back to its start when it is full
    std::size_t numWindows_;   // of a voice
    std::size_t numPaths_;     // of a voice
    std::size_t movedLength_;
    std::vector<float> samples_;
    std::vector<float> moved_;  // of each path, the newest piece in which its delay moved
    std::vector<Voice> voices_;
    std::vector<float> glide_;  // a piece of gains
    tav::DelayKind kind_ = tav::DelayKind::Lagrange;
};

}  // namespace Quilo
