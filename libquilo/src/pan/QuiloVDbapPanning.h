// SPDX-License-Identifier: MIT
// Distance-based panning among the loudspeakers, vector-base panning far outside, a crossfade
// between.
#pragma once

#include "laws/QuiloDbapLaw.h"
#include "pan/QuiloVectorBasedPanning.h"

namespace Quilo {

/// A layout as both laws read it.
struct VDbapLayout {
    VDbapLayout() = default;
    explicit VDbapLayout(const tav::CartesianArray& speakers);

    SpeakerCloud cloud;
    TripletLayout triplets;
};

/// The crossfade runs from 0.7 to 1.3 of the layout's radius round its centroid, linearly in gains.
/// The gains are those of DbapPanning3D without a spread and of VbapPanning on the same layout.
class VDbapPanning : public LayoutPanning<VDbapLayout> {
public:
    VDbapPanning(unsigned numInputs, unsigned numOutputs);

private:
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override TAV_REQUIRES(controlLock_);
    void ComputeVectorGains(const tav::CartesianVector& source, std::span<float> gains) const
        TAV_REQUIRES(controlLock_);

    tav::Vector<float> vectorGains_ TAV_GUARDED_BY(controlLock_);  // of one source, while mixed
};

}  // namespace Quilo
