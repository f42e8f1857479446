// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralModelPanning.h"

#include "laws/QuiloHeadShadow.h"
#include "laws/QuiloLateralGains.h"

#include <algorithm>
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
    EarDelays delays = itd.Delays({std::abs(position.x), position.y, position.z}, std::nullopt);
    for (float* const ms : {&delays.left, &delays.right}) *ms *= DelayPart();
    return position.x < 0.f ? EarDelays{delays.right, delays.left} : delays;
}

void BinauralModelPanning::ApplySampleRate() {
    if (newest_->RateHz() == SampleRate()) return;
    auto bank = std::make_unique<DelayAndFilterBank>(NumInputs(), SampleRate(), hasTorso_);
    newest_ = bank.get();
    PublishSettings();
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

EarPaths BinauralPanningITD::PathsFrom(const tav::CartesianVector& position) const {
    const EarDelays delays = DelaysFrom(position, Itd::Type::LarcherJot);
    const EarGains gains = LateralGains(CosineToRightEar(position));
    return {.direct = {EarPath{.delayMs = delays.left, .gain = gains.left},
                       EarPath{.delayMs = delays.right, .gain = gains.right}}};
}

EarPaths BinauralPanningSphericalHeadModel::PathsFrom(const tav::CartesianVector& position) const {
    const EarDelays delays = DelaysFrom(position, Itd::Type::Miller);
    const float cosine = CosineToRightEar(position);
    return {.direct = {EarPath{.delayMs = delays.left, .headShadow = HeadShadow(-cosine)},
                       EarPath{.delayMs = delays.right, .headShadow = HeadShadow(cosine)}}};
}

ShadowCorners BinauralPanningSphericalHeadModel::Corners() const {
    return {.headHz = ShadowCornerHz(Itd().headRadius)};
}

float BinauralPanningSphericalHeadModel::HeadShadow(float cosine) const {
    return Itd().headRadius > 0.f ? HeadShadowAlpha(cosine) : 1.f;
}

EarPaths BinauralPanningSnowmanModel::PathsFrom(const tav::CartesianVector& position) const {
    const Snowman listener{Itd().headRadius, torso_};
    const tav::CartesianVector source = OutsideTorso(listener, position);
    EarPaths paths = BinauralPanningSphericalHeadModel::PathsFrom(source);
    for (std::size_t e = 0; e < paths.direct.size(); ++e) {
        const TorsoPaths torso = TorsoPathsTo(e == 0 ? Ear::Left : Ear::Right, listener, source);
        EarPath& direct = paths.direct[e];
        paths.reflected[e] = {.delayMs = direct.delayMs + torso.reflectedDelayMs,
                              .gain = torso.reflectedGain,
                              .headShadow = HeadShadow(torso.reflectedCosine)};
        direct.delayMs += torso.directDelayMs;
        direct.torsoShadow = torso.shadow;
    }
    return paths;
}

ShadowCorners BinauralPanningSnowmanModel::Corners() const {
    ShadowCorners corners = BinauralPanningSphericalHeadModel::Corners();
    corners.torsoHz = ShadowCornerHz(torso_.radius);
    return corners;
}

void BinauralPanningSnowmanModel::SetTorso(float Torso::*value, float number, float largest) {
    const tav::ControlGuard guard(controlLock_);
    if (!std::isfinite(number)) return;
    const float clamped = std::clamp(number, 0.f, largest);
    if (std::exchange(torso_.*value, clamped) != clamped) RecomputeSources();
}

Torso BinauralPanningSnowmanModel::GetTorso() const {
    const tav::ControlGuard guard(controlLock_);
    return torso_;
}

}  // namespace Quilo
