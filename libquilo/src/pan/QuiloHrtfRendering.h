// SPDX-License-Identifier: MIT
// What panners with an HRTF set exchange as a whole when the set, its rate or its realisation
// change.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "pan/QuiloBinauralSettings.h"

#include <memory>
#include <utility>

namespace Quilo {

/// Sources to two ears by one set, at one rate and one block size. Where sources are is told to the
/// derived classes.
class HrtfRendering {
public:
    using Settings = BinauralSettings;

    virtual ~HrtfRendering() = default;

    /// What the filters in use are.
    const HrtfResponses& Responses() const noexcept { return *responses_; }
    /// What they were made of.
    const std::shared_ptr<const Hrtf>& Set() const noexcept { return set_; }
    unsigned BlockSize() const noexcept TAV_NONBLOCKING { return blockSize_; }

    // Thread: control.
    virtual void SetSettings(const Settings& settings) noexcept = 0;
    /// Silence behind all sources from the next block on.
    virtual void Reset() noexcept = 0;

    // Thread: audio.
    /// Adds to the ears.  @param inputs  per source; null: nothing comes, and its past is forgotten
    virtual void Perform(float* left,
                         float* right,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING = 0;

protected:
    /// @param blockSize  frames that the host announced
    HrtfRendering(std::shared_ptr<const Hrtf> set,
                  std::shared_ptr<const HrtfResponses> responses,
                  unsigned blockSize)
        : set_(std::move(set)),
          responses_(std::move(responses)),
          blockSize_(blockSize) {}

    const std::shared_ptr<const Hrtf> set_;
    const std::shared_ptr<const HrtfResponses> responses_;
    const unsigned blockSize_;
};

}  // namespace Quilo
