// SPDX-License-Identifier: MIT
// Sources that move without any filter being exchanged.
#pragma once

#include "laws/QuiloLateralRingLaw.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloHrtfRingFiltering.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Quilo {

/// All sources share the filters of 36 directions in the horizontal plane. A source is delayed for
/// each ear and mixed into those directions that have its interaural differences (see
/// LateralRingParts), in even steps for each ear (see HrtfRing::EvenShare), so only gains and
/// delays move. Filters cost the same for any number of sources. The spectra of elevated directions
/// are not rendered.
class BinauralPanningContinuous final : public BinauralPanningDirect {
public:
    BinauralPanningContinuous(unsigned numInputs, unsigned numOutputs);

private:
    std::unique_ptr<HrtfRendering> MakeRendering(const std::shared_ptr<const Hrtf>& set,
                                                 const HrtfFormat& format) const override;
    void ApplySet() override TAV_REQUIRES(controlLock_);
    void ApplyInterpolationTime(float ms) override TAV_REQUIRES(controlLock_);
    void ComputeSource(unsigned index, bool immediate, bool force) override
        TAV_REQUIRES(controlLock_);
    /// By how much the left ear is later, ms; 0 where another model says it.
    /// @param parts  of the source on the ring
    float MeasuredDelay(unsigned index,
                        const tav::CartesianVector& position,
                        const std::array<RingPart, 2>& parts) TAV_REQUIRES(controlLock_);
    HrtfRingFiltering* Filtering() TAV_REQUIRES(controlLock_) {
        return static_cast<HrtfRingFiltering*>(Rendering());
    }

    const SpeakerRing ring_;
    // of one source, while it is computed
    std::array<std::vector<float>, 2> shares_ TAV_GUARDED_BY(controlLock_);
    std::vector<std::uint32_t> nearest_ TAV_GUARDED_BY(controlLock_);  // to each source, once
};

}  // namespace Quilo
