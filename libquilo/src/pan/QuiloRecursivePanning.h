// SPDX-License-Identifier: MIT
// The legacy panner for fixed layouts of 4 to 8 or 12 loudspeakers.
#pragma once

#include "laws/QuiloRecursiveLaw.h"
#include "pan/QuiloAmplitudePanning.h"

#include <array>

namespace Quilo {

/// Sources move in a square whose corners are four of the loudspeakers. Without a layout, or with
/// one of another size, everything is silent.
class RecursivePanning : public AmplitudePanning {
public:
    RecursivePanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

    /// @param azimuthsDeg  navigational, from the first corner on. Corners beyond the list keep
    /// their azimuths; a list with a number that is not finite is refused as a whole.
    void SetCorners(std::span<const float> azimuthsDeg);
    std::array<float, 4> Corners() const;

private:
    /// The corners become those of the layout.
    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_);
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);

    SquareCorners corners_ TAV_GUARDED_BY(controlLock_) = {};
    std::size_t numSpeakers_ TAV_GUARDED_BY(controlLock_) = 0;
};

}  // namespace Quilo
