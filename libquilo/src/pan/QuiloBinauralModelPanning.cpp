// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralModelPanning.h"

#include "laws/QuiloHeadShadow.h"

#include <cmath>
#include <optional>
#include <utility>

namespace Quilo {

using Itd = InterauralTimeDifference;

BinauralModelPanning::BinauralModelPanning(unsigned numInputs, unsigned numOutputs, bool hasTorso)
    : BinauralPanning(numInputs, numOutputs),
      hasTorso_(hasTorso),
      inputs_(numInputs) {
    auto bank = std::make_unique<DelayAndFilterBank>(numInputs, SampleRate(), hasTorso);
    newest_ = bank.get();
    banks_.Publish(std::move(bank));
}

void BinauralModelPanning::Perform(float* const* outputs,
                                   const float* const* inputs,
                                   unsigned frames) noexcept TAV_NONBLOCKING {
    banks_.TakeNext();
    for (unsigned i = 0; i < NumInputs(); ++i) inputs_[i] = InputActive(i) ? inputs[i] : nullptr;
    banks_.Live()->Perform(OutputConnected(0) ? outputs[0] : nullptr,
                           OutputConnected(1) ? outputs[1] : nullptr, inputs_.data(), frames);
}

EarDelays BinauralModelPanning::DelaysFrom(const tav::CartesianVector& position,
                                           Itd::Type substitute) const {
    InterauralTimeDifference itd = Itd();
    if (itd.Measures()) itd.type = substitute;
    // As on the right, so that both sides are the same to the last bit.
    const EarDelays delays =
        itd.Delays({std::abs(position.x), position.y, position.z}, std::nullopt);
    return position.x < 0.f ? EarDelays{delays.right, delays.left} : delays;
}

void BinauralModelPanning::ApplySampleRate() {
    if (newest_->RateHz() == SampleRate()) return;
    auto bank = std::make_unique<DelayAndFilterBank>(NumInputs(), SampleRate(), hasTorso_);
    newest_ = bank.get();
    RecomputeAll(true);
    // Audio takes it with its next block, and the sources begin in it with nothing behind them.
    banks_.Publish(std::move(bank));
}

void BinauralModelPanning::RecomputeAll(bool immediate) {
    newest_->SetCorners(Corners(), immediate ? 0.f : glideMs_);
    BinauralPanning::RecomputeAll(immediate);
}

void BinauralModelPanning::ComputeSource(unsigned index, bool immediate, bool) {
    newest_->SetSource(index, PathsFrom(HeardPosition(index)), IsMuted(index) ? 0.f : 1.f,
                       immediate ? 0.f : glideMs_);
}

EarPaths BinauralPanningSphericalHeadModel::PathsFrom(const tav::CartesianVector& position) const {
    const EarDelays delays = DelaysFrom(position, Itd::Type::Miller);
    const float cosine = CosineToRightEar(position);
    const bool shadows = Itd().headRadius > 0.f;
    return {.direct = {EarPath{.delayMs = delays.left,
                               .headShadow = shadows ? HeadShadowAlpha(-cosine) : 1.f},
                       EarPath{.delayMs = delays.right,
                               .headShadow = shadows ? HeadShadowAlpha(cosine) : 1.f}}};
}

ShadowCorners BinauralPanningSphericalHeadModel::Corners() const {
    return {.headHz = ShadowCornerHz(Itd().headRadius)};
}

}  // namespace Quilo
