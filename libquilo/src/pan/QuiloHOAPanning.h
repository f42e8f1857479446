// SPDX-License-Identifier: MIT
// Ambisonic encoding: the outputs are harmonics of the sound field, in ACN order.
#pragma once

#include "pan/QuiloHoaEncoding.h"

namespace Quilo {

/// The gains of a source are the harmonics in its direction; its distance does not matter.
class HOAPanning : public HoaEncoding<AmplitudePanning> {
public:
    /// @param numOutputs  channels of a whole order; where they are not, only (0, 0) sounds
    HOAPanning(unsigned numInputs, unsigned numOutputs, unsigned dimension)
        : HoaEncoding(numInputs, numOutputs, dimension) {}

private:
    void ComputeGains(unsigned, const tav::CartesianVector& source, std::span<float> gains) override
        TAV_REQUIRES(controlLock_) {
        Encode(source, gains);
    }
    void RecomputeAll(bool immediate) override TAV_REQUIRES(controlLock_);
};

using HOA2DPanning = HoaOfDimension<HOAPanning, 2>;
using HOA3DPanning = HoaOfDimension<HOAPanning, 3>;

}  // namespace Quilo
