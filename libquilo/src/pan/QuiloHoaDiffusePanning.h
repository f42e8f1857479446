// SPDX-License-Identifier: MIT
// An isotropic diffuse field in ambisonic channels.
#pragma once

#include "pan/QuiloDiffusePanning.h"
#include "pan/QuiloHoaEncoding.h"

namespace Quilo {

/// Every channel carries the mono sum of the sources through a decorrelation chain of its own, as
/// loud as the channels of a direct source are on average over all directions: however the field is
/// decoded, it comes alike from everywhere. Positions are kept and do not matter.
class HoaDiffusePanning : public DiffusePanning {
public:
    /// @param numOutputs  channels of a whole order; where they are not, only (0, 0) sounds
    HoaDiffusePanning(unsigned numInputs, unsigned numOutputs, unsigned dimension);

    std::string OutputLabel(unsigned output) const override;

private:
    /// Channels above `order` glide to silence.
    void ApplyOrder(unsigned order) override TAV_REQUIRES(controlLock_);
    void ApplyNormalization(tav::SphericalHarmonic::Normalization normalization) override
        TAV_REQUIRES(controlLock_);
    tav::SphericalHarmonic::Normalization NormalizationInUse() const override
        TAV_REQUIRES(controlLock_) {
        return normalization_;
    }
    void UpdateWeights() TAV_REQUIRES(controlLock_);

    const unsigned dimension_;
    unsigned order_ TAV_GUARDED_BY(controlLock_);
    tav::SphericalHarmonic::Normalization normalization_ TAV_GUARDED_BY(controlLock_);
};

using HoaDiffusePanning2D = HoaOfDimension<HoaDiffusePanning, 2>;
using HoaDiffusePanning3D = HoaOfDimension<HoaDiffusePanning, 3>;

/// Root mean square, over all directions of the dimension, of the gain of each channel; 0 for
/// channels above `order`.  @return numOutputs weights
std::vector<float> DiffuseWeights(unsigned numOutputs,
                                  unsigned dimension,
                                  unsigned order,
                                  tav::SphericalHarmonic::Normalization normalization);

}  // namespace Quilo
