// SPDX-License-Identifier: MIT
// Distance-based panning among the loudspeakers, vector-base panning far outside, a crossfade
// between.
#pragma once

#include "laws/QuiloDbapLaw.h"
#include "pan/QuiloAmplitudePanning.h"

#include <memory>

namespace Quilo {

class DbapPanning3D;
class VectorBasedPanning;

/// The crossfade runs from 0.7 to 1.3 of the layout's radius round its centroid, linearly in gains.
class VDbapPanning : public AmplitudePanning {
public:
    /// Throws: tav::Exception where the panners that it is made of cannot be.
    VDbapPanning(unsigned numInputs, unsigned numOutputs);
    ~VDbapPanning() override;

    void ApplySpeakersPositions(const tav::CartesianArray& positions) override;
    void ComputeGains(unsigned index,
                      const tav::CartesianVector& source,
                      std::span<float> gains) override;

private:
    std::unique_ptr<DbapPanning3D> distanceBased_;
    std::unique_ptr<VectorBasedPanning> vectorBased_;
    SpeakerCloud cloud_;
    tav::Vector<float> vectorGains_;  // one source's, while they are mixed
};

}  // namespace Quilo
