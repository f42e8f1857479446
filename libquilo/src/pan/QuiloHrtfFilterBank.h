// SPDX-License-Identifier: MIT
// The filters of all sources of a binaural panner.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "pan/QuiloHrtfVoices.h"
#include "processors/VelkDspCrossfade.h"

#include <cstddef>
#include <memory>
#include <span>

namespace Quilo {

/// A pair of filters per voice, exchanged by crossfades. Voices sleep at first.
/// Thread: audio; constructors control.
class HrtfFilterBank {
public:
    /// The bank that suits the responses.
    /// @param blockSize  frames that the host announced      Throws: std::bad_alloc.
    static std::unique_ptr<HrtfFilterBank> Make(const HrtfResponses& responses,
                                                unsigned numVoices,
                                                unsigned blockSize);

    virtual ~HrtfFilterBank() = default;

    /// The longest piece that Perform takes.
    virtual std::size_t LongestPiece() const noexcept TAV_NONBLOCKING = 0;
    /// Samples before a piece that Perform asks the voices for.
    virtual std::size_t Past() const noexcept TAV_NONBLOCKING = 0;

    /// Of the fades to come.
    virtual void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING = 0;
    /// The response of the point sounds at once; nothing did before. Beyond the points: silence.
    virtual void Wake(unsigned voice, std::size_t point) noexcept TAV_NONBLOCKING = 0;
    virtual void Sleep(unsigned voice) noexcept TAV_NONBLOCKING = 0;
    /// Fades to the response of the point.
    virtual void Load(unsigned voice, std::size_t point) noexcept TAV_NONBLOCKING = 0;

    /// Adds the piece that the voices took last, filtered, of all voices that are awake.
    /// @param starts  how many fades may still begin, counted down where beginning one is work
    virtual void Perform(HrtfVoices& voices,
                         std::span<float> left,
                         std::span<float> right,
                         unsigned& starts) noexcept TAV_NONBLOCKING = 0;
};

}  // namespace Quilo
