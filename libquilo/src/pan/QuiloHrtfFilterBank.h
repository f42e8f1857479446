// SPDX-License-Identifier: MIT
// The filters of all sources of a binaural panner.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "pan/QuiloHrtfVoices.h"
#include "processors/VelkDspCrossfade.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Quilo {

/// The points of the set whose filters are meant.
struct EarPoints {
    constexpr EarPoints(std::uint32_t both = 0) noexcept : ears{both, both} {}
    constexpr EarPoints(std::uint32_t left, std::uint32_t right) noexcept : ears{left, right} {}

    std::array<std::uint32_t, 2> ears;
};

/// A pair of filters per voice, exchanged by crossfades. Voices sleep at first.
/// Thread: audio; constructors control.
class HrtfFilterBank {
public:
    /// The bank that suits the responses.
    /// @param blockSize  frames that the host announced
    /// @param earsDiffer  what reaches the ears differs before they are filtered
    /// Throws: std::bad_alloc.
    static std::unique_ptr<HrtfFilterBank> Make(const HrtfResponses& responses,
                                                unsigned numVoices,
                                                unsigned blockSize,
                                                bool earsDiffer);

    virtual ~HrtfFilterBank() = default;

    /// The longest piece that Perform takes.
    virtual std::size_t LongestPiece() const noexcept TAV_NONBLOCKING = 0;
    /// Samples before a piece that Perform asks the voices for.
    virtual std::size_t Past() const noexcept TAV_NONBLOCKING = 0;

    /// Of the fades to come.
    virtual void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING = 0;
    /// The responses of the points sound at once; nothing did before. Beyond the points: silence.
    virtual void Wake(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING = 0;
    virtual void Sleep(unsigned voice) noexcept TAV_NONBLOCKING = 0;
    /// Fades to the responses of the points.
    virtual void Load(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING = 0;

    /// Adds the piece that the voices took last, filtered, of all voices that are awake.
    /// @param starts  how many fades may still begin, counted down where beginning one is work
    virtual void Perform(HrtfVoices& voices,
                         std::span<float> left,
                         std::span<float> right,
                         unsigned& starts) noexcept TAV_NONBLOCKING = 0;
};

}  // namespace Quilo
