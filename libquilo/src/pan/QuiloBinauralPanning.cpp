// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanning.h"

#include "math/VelkDspSpherical.h"
#include "pan/QuiloKeywords.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

using tav::ControlGuard;

using Itd = InterauralTimeDifference;

namespace {

constexpr float kLongestCrossfadeMs = 10000.f;

}  // namespace

BinauralPanning::BinauralPanning(unsigned numInputs, unsigned numOutputs)
    : Pan(numInputs, numOutputs) {}

std::string BinauralPanning::OutputLabel(unsigned output) const {
    constexpr const char* kEars[] = {"left", "right"};
    return output < std::size(kEars) ? kEars[output] : Pan::OutputLabel(NumOutputs());
}

void BinauralPanning::SetListenerPosition(const tav::CartesianVector& position) {
    const ControlGuard guard(controlLock_);
    if (!tav::IsFinite(position) || position == listener_) return;
    listener_ = position;
    RecomputeSources();
}

tav::CartesianVector BinauralPanning::ListenerPosition() const {
    const ControlGuard guard(controlLock_);
    return listener_;
}

void BinauralPanning::SetListenerAngle(float deg) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(deg)) return;
    listenerAngle_ = deg * tav::kRadiansPerDegree;
    angleCos_ = std::cos(static_cast<double>(listenerAngle_));
    angleSin_ = std::sin(static_cast<double>(listenerAngle_));
    RecomputeSources();
}

float BinauralPanning::ListenerAngle() const {
    const ControlGuard guard(controlLock_);
    return listenerAngle_ * tav::kDegreesPerRadian;
}

void BinauralPanning::SetHeadRadius(float metres) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(metres)) return;
    const float clamped = std::clamp(metres, 0.f, kLargestHeadRadius);
    if (clamped == itd_.headRadius) return;
    itd_.headRadius = clamped;
    RecomputeSources();
}

float BinauralPanning::HeadRadius() const {
    const ControlGuard guard(controlLock_);
    return itd_.headRadius;
}

void BinauralPanning::SetItdModel(Itd::Type model) {
    const ControlGuard guard(controlLock_);
    if (model == itd_.type) return;
    itd_.type = model;
    RecomputeSources();
}

void BinauralPanning::SetItdModel(std::string_view keyword) {
    SetItdModel(ItdTypeKeywords().Parse(keyword).value_or(Itd::Type::Measurement));
}

Itd::Type BinauralPanning::ItdModel() const {
    const ControlGuard guard(controlLock_);
    return itd_.type;
}

void BinauralPanning::SetItdLatencyMode(Itd::LatencyMode mode) {
    const ControlGuard guard(controlLock_);
    if (mode == itd_.latencyMode) return;
    itd_.latencyMode = mode;
    RecomputeSources();
}

void BinauralPanning::SetItdLatencyMode(std::string_view keyword) {
    SetItdLatencyMode(ItdLatencyKeywords().Parse(keyword).value_or(Itd::LatencyMode::FixedLatency));
}

Itd::LatencyMode BinauralPanning::ItdLatencyMode() const {
    const ControlGuard guard(controlLock_);
    return itd_.latencyMode;
}

void BinauralPanning::SetCrossfadeTime(float ms) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(ms)) return;
    settings_.fadeMs = std::clamp(ms, 0.f, kLongestCrossfadeMs);
    PublishSettings();
}

float BinauralPanning::CrossfadeTime() const {
    const ControlGuard guard(controlLock_);
    return settings_.fadeMs;
}

void BinauralPanning::SetCrossfadeShape(tav::FadeShape shape) {
    const ControlGuard guard(controlLock_);
    settings_.fadeShape = shape;
    PublishSettings();
}

tav::FadeShape BinauralPanning::CrossfadeShape() const {
    const ControlGuard guard(controlLock_);
    return settings_.fadeShape;
}

void BinauralPanning::SetDelayReduction(float percent) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(percent)) return;
    delayReduction_ = std::clamp(percent, 0.f, 100.f);
    RecomputeSources();
}

float BinauralPanning::DelayReduction() const {
    const ControlGuard guard(controlLock_);
    return delayReduction_;
}

unsigned BinauralPanning::DelayKind() const {
    const ControlGuard guard(controlLock_);
    return static_cast<unsigned>(settings_.delayKind);
}

void BinauralPanning::SetDelayKind(unsigned code) {
    const ControlGuard guard(controlLock_);
    settings_.delayKind = static_cast<tav::DelayKind>(code);
    PublishSettings();
    RecomputeSources();
}

tav::CartesianVector BinauralPanning::RelativePosition(unsigned index) const {
    const tav::CartesianVector& p = StoredPosition(index);
    double x = static_cast<double>(p.x) - static_cast<double>(listener_.x);
    double y = static_cast<double>(p.y) - static_cast<double>(listener_.y);
    double z = static_cast<double>(p.z) - static_cast<double>(listener_.z);
    // What 32 bits cannot hold is taken nearer, in the same direction.
    constexpr double kFarthest = 1e30;
    const double largest = std::max({std::abs(x), std::abs(y), std::abs(z)});
    if (largest > kFarthest) {
        for (double* v : {&x, &y, &z}) *v *= kFarthest / largest;
    }
    return {static_cast<float>(x * angleCos_ - y * angleSin_),
            static_cast<float>(x * angleSin_ + y * angleCos_), static_cast<float>(z)};
}

tav::CartesianVector BinauralPanning::HeardPosition(unsigned index) const {
    constexpr float kCentre = 1e-5f;  // metres
    const tav::CartesianVector position = RelativePosition(index);
    return tav::Distance(position) < kCentre ? tav::CartesianVector{0.f, 1.f, 0.f} : position;
}

unsigned BinauralPanning::Latency() const {
    const ControlGuard guard(controlLock_);
    if (itd_.latencyMode != Itd::LatencyMode::FixedLatency || !HasDelays()) return 0;
    return static_cast<unsigned>(std::lround(0.001f * SampleRate()));
}

}  // namespace Quilo
