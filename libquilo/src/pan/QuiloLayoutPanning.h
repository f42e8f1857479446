// SPDX-License-Identifier: MIT
// Base of the gain panners that compute something from a layout before they can use it.
#pragma once

#include "pan/QuiloAmplitudePanning.h"

#include <memory>
#include <utility>

namespace Quilo {

/// What is computed is made without the panner's lock and exchanged for the old one under it.
/// @tparam Layout  what the gains are computed from; the default one is that of no loudspeakers,
///                 others are made from an array of finite positions, one per output at most
template <class Layout>
class LayoutPanning : public AmplitudePanning {
protected:
    LayoutPanning(unsigned numInputs, unsigned numOutputs)
        : AmplitudePanning(numInputs, numOutputs) {}

    void ApplySpeakersPositions(SpeakersLayout& layout) override TAV_REQUIRES(controlLock_) {
        std::swap(layout_, static_cast<PreparedLayout<Layout>&>(layout).prepared);
        RecomputeSources();
    }

    Layout layout_ TAV_GUARDED_BY(controlLock_);

private:
    std::unique_ptr<SpeakersLayout> MakeLayout(tav::CartesianArray positions) const override {
        return std::make_unique<PreparedLayout<Layout>>(std::move(positions));
    }
};

}  // namespace Quilo
