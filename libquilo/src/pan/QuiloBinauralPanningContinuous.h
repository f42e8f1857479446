// SPDX-License-Identifier: MIT
// Sources that move without any filter being exchanged.
#pragma once

#include "laws/QuiloVbapLaw.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloHrtfRingFiltering.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Quilo {

/// All sources share the filters of 36 directions in the horizontal plane. A source is delayed for
/// each ear and mixed into those directions that have its interaural differences (see
/// LateralRingGains), so only gains and delays move. Filters cost the same for any number of
/// sources. The spectra of elevated directions are not rendered.
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
    /// @pre  shares_ are those of the source
    float MeasuredDelay(unsigned index, const tav::CartesianVector& position)
        TAV_REQUIRES(controlLock_);
    HrtfRingFiltering* Filtering() TAV_REQUIRES(controlLock_) {
        return static_cast<HrtfRingFiltering*>(Rendering());
    }

    const SpeakerRing ring_;
    std::vector<float> shares_ TAV_GUARDED_BY(controlLock_);  // of one source, while computed
    std::vector<std::uint32_t> nearest_ TAV_GUARDED_BY(controlLock_);  // to each source, once
};

}  // namespace Quilo
