// SPDX-License-Identifier: MIT
#include "pan/QuiloPan.h"

#include "hrtf/QuiloHrtf.h"
#include "math/VelkDspKeywords.h"
#include "pan/QuiloKeywords.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Quilo {

using tav::ControlGuard;
using tav::HoaEncodingVector;
using tav::SphericalHarmonic;

Pan::Pan(unsigned numInputs, unsigned numOutputs)
    : AudioProcessorWithOscInAudioInterrupt(numInputs, numOutputs),
      positions_(numInputs),
      mutes_(numInputs),
      isPlaced_(numInputs) {}

std::string_view Pan::GetTypeName() const { return PanTypeKeywords().Print(type_, "null"); }

std::string_view Pan::GetSubTypeName() const {
    return PanSubTypeKeywords().Print(subType_, "null");
}

void Pan::Process(float* const* outputs,
                  const float* const* inputs,
                  unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
    Perform(outputs, inputs, frames);
}

std::string Pan::Name() const { return "panner"; }

// ---- The frame

void Pan::SetSampleRate(float hz) {
    {
        const ControlGuard guard(controlLock_);
        AudioProcessorWithAutoMute::SetSampleRate(hz);
        ApplySampleRate();
    }
    FollowFrame();
}

void Pan::SetBufferSize(unsigned frames) {
    {
        const ControlGuard guard(controlLock_);
        AudioProcessorWithAutoMute::SetBufferSize(frames);
    }
    FollowFrame();
}

void Pan::Reset() {
    const ControlGuard guard(controlLock_);
    AudioProcessorWithAutoMute::Reset();
    ApplyReset();
}

void Pan::SetConnections(std::span<const short> inletCounts, std::span<const short> outletCounts) {
    const ControlGuard guard(controlLock_);
    AudioProcessorWithAutoMute::SetConnections(inletCounts, outletCounts);
    ApplyOutletConnections(outletCounts);
}

void Pan::SetAutoMute(bool on) {
    const ControlGuard guard(controlLock_);
    AudioProcessorWithAutoMute::SetAutoMute(on);
}

void Pan::SetAutoMuteTime(float seconds) {
    const ControlGuard guard(controlLock_);
    AudioProcessorWithAutoMute::SetAutoMuteTime(seconds);
}

// ---- Sources

void Pan::SetSourcePosition(unsigned index,
                            const tav::CartesianVector& position,
                            bool immediate,
                            bool force) {
    const ControlGuard guard(controlLock_);
    MoveSource(index, position, immediate, force);
}

void Pan::SetSourcesPositions(const tav::CartesianArray& positions, bool immediate) {
    const ControlGuard guard(controlLock_);
    const auto count = static_cast<unsigned>(std::min<std::size_t>(NumInputs(), positions.Size()));
    for (unsigned i = 0; i < count; ++i) MoveSource(i, positions[i], immediate, false);
}

void Pan::MoveSource(unsigned index,
                     const tav::CartesianVector& position,
                     bool immediate,
                     bool force) {
    if (index >= NumInputs() || !tav::IsFinite(position)) return;
    if (!force && position == positions_[index]) return;
    positions_[index] = position;
    ComputeSource(index, immediate, force);
}

void Pan::PlaceSource(unsigned index, const tav::CartesianVector& position) {
    if (index >= NumInputs() || !tav::IsFinite(position) || position == positions_[index]) return;
    positions_[index] = position;
    isPlaced_[index] = 1;
    isAnyPlaced_ = true;
}

void Pan::ComputePlacedSources() {
    if (!std::exchange(isAnyPlaced_, false)) return;
    for (unsigned i = 0; i < NumInputs(); ++i) {
        if (std::exchange(isPlaced_[i], std::uint8_t{0}) != 0) ComputeSource(i, false, false);
    }
}

void Pan::RecomputeAll(bool immediate) {
    for (unsigned i = 0; i < NumInputs(); ++i) ComputeSource(i, immediate, true);
}

tav::CartesianVector Pan::SourcePosition(unsigned index) const {
    const ControlGuard guard(controlLock_);
    return index < NumInputs() ? positions_[index] : tav::CartesianVector{};
}

void Pan::SetSourceMute(unsigned index, bool muted) {
    const ControlGuard guard(controlLock_);
    if (index >= NumInputs() || IsMuted(index) == muted) return;
    mutes_[index] = muted ? 1 : 0;
    ApplySourceMute(index);
}

bool Pan::SourceMute(unsigned index) const {
    const ControlGuard guard(controlLock_);
    return index < NumInputs() && IsMuted(index);
}

void Pan::ApplySourceMute(unsigned index) { RecomputeSource(index); }

// ---- HRTF sets

bool Pan::LoadHrtf(const std::string&) { return false; }

std::shared_ptr<const Hrtf> Pan::GetHrtf() const {
    static const auto empty = std::make_shared<const Hrtf>();
    return empty;
}

// ---- Loudspeakers

void Pan::SetSpeakersPositions(const tav::CartesianArray& positions) {
    InstallSpeakers(PrepareSpeakers(positions));
}

std::unique_ptr<SpeakersLayout> Pan::PrepareSpeakers(const tav::CartesianArray& positions) const {
    if (!std::ranges::all_of(positions, tav::IsFinite)) return nullptr;
    const std::uint64_t number = ++numLayoutsBegun_;
    tav::CartesianArray copy(positions);
    copy.Resize(std::min<std::size_t>(copy.Size(), NumOutputs()));
    auto layout = MakeLayout(std::move(copy));
    layout->panner_ = this;
    layout->number_ = number;
    return layout;
}

void Pan::InstallSpeakers(std::unique_ptr<SpeakersLayout> layout) {
    if (layout == nullptr || layout->panner_ != this) return;
    tav::CartesianArray positions = layout->Positions();  // freed, with those it replaces, unlocked
    const ControlGuard guard(controlLock_);
    if (layout->number_ < layoutInForce_) return;
    layoutInForce_ = layout->number_;
    std::swap(speakers_, positions);
    ApplySpeakersPositions(*layout);
}

tav::CartesianArray Pan::SpeakersPositions() const {
    const ControlGuard guard(controlLock_);
    return speakers_;
}

std::unique_ptr<SpeakersLayout> Pan::MakeLayout(tav::CartesianArray positions) const {
    return std::make_unique<SpeakersLayout>(std::move(positions));
}

// ---- Settings

void Pan::SetInterpolationTime(float ms) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(ms)) return;
    const float clamped = std::clamp(ms, 0.f, kMaxInterpolationTimeMs);
    if (clamped == interpolationTimeMs_) return;
    interpolationTimeMs_ = clamped;
    ApplyInterpolationTime(clamped);
}

float Pan::GetInterpolationTime() const {
    const ControlGuard guard(controlLock_);
    return interpolationTimeMs_;
}

void Pan::SetSpreadingMode(SpreadingMode mode) {
    const ControlGuard guard(controlLock_);
    ApplySpreadingMode(mode);
}

void Pan::SetSpreadingMode(std::string_view keyword) {
    SetSpreadingMode(PanSpreadingModeKeywords().Parse(keyword).value_or(SpreadingMode::Omni));
}

void Pan::SetSourceSpread(unsigned index, float spread) {
    const ControlGuard guard(controlLock_);
    if (index >= NumInputs() || !std::isfinite(spread)) return;
    ApplySourceSpread(index, std::clamp(spread, 0.f, 100.f));
}

void Pan::SetSpread(float spread) {
    const ControlGuard guard(controlLock_);
    if (std::isfinite(spread)) ApplySpread(std::clamp(spread, 0.f, 100.f));
}

void Pan::SetSpreadsByDirection(std::span<const float> values) {
    const ControlGuard guard(controlLock_);
    for (unsigned i = 0; i < NumInputs(); ++i) ApplySpreadByDirection(i, values);
}

void Pan::SetSpreadByDirection(unsigned index, std::span<const float> values) {
    const ControlGuard guard(controlLock_);
    if (index < NumInputs()) ApplySpreadByDirection(index, values);
}

bool Pan::SupportsSpread() const { return false; }

float Pan::SourceSpread(unsigned index) const {
    const ControlGuard guard(controlLock_);
    return index < NumInputs() ? StoredSpread(index) : 0.f;
}

unsigned Pan::GetOrder() const {
    const ControlGuard guard(controlLock_);
    return OrderInUse();
}

void Pan::SetOrder(unsigned order) {
    const ControlGuard guard(controlLock_);
    ApplyOrder(order);
}

void Pan::SetNearfieldCompensation(unsigned index, bool on) {
    const ControlGuard guard(controlLock_);
    if (index < NumInputs()) ApplyNearfieldCompensation(index, on);
}

void Pan::SetSpeakersRadius(float metres) {
    const ControlGuard guard(controlLock_);
    if (std::isfinite(metres)) ApplySpeakersRadius(metres);
}

void Pan::SetNormalization(SphericalHarmonic::Normalization normalization) {
    const auto table = MakeEncodingTable(GetComputationMode(), normalization);
    const ControlGuard guard(controlLock_);
    ApplyNormalization(normalization);
}

SphericalHarmonic::Normalization Pan::GetNormalization() const {
    const ControlGuard guard(controlLock_);
    return NormalizationInUse();
}

SphericalHarmonic::Normalization Pan::NormalizationInUse() const {
    return SphericalHarmonic::Normalization::SN3D;
}

void Pan::SetComputationMode(std::string_view keyword) {
    if (const auto mode = tav::HoaModeKeywords().Parse(keyword)) SetComputationMode(*mode);
}

void Pan::SetComputationMode(HoaEncodingVector::Mode mode) {
    const auto table = MakeEncodingTable(mode, GetNormalization());
    const ControlGuard guard(controlLock_);
    ApplyComputationMode(mode);
}

HoaEncodingVector::Mode Pan::GetComputationMode() const {
    const ControlGuard guard(controlLock_);
    return ComputationModeInUse();
}

HoaEncodingVector::Mode Pan::ComputationModeInUse() const {
    return HoaEncodingVector::Mode::Precise;
}

std::shared_ptr<const void> Pan::MakeEncodingTable(HoaEncodingVector::Mode,
                                                   SphericalHarmonic::Normalization) const {
    return nullptr;
}

void Pan::SetNumNeighbors(unsigned index, unsigned count) {
    const ControlGuard guard(controlLock_);
    if (index < NumInputs()) ApplyNumNeighbors(index, std::min(std::max(count, 1u), NumOutputs()));
}

// ---- OSC

tav::OSCBundle Pan::OscState() const {
    tav::OSCBundle state;
    osc_.AddState(state);
    return state;
}

// ---- Description

void Pan::Dump(std::vector<std::string>& lines) const {
    const ControlGuard guard(controlLock_);
    lines.clear();
    Describe(lines);
}

void Pan::Describe(std::vector<std::string>& lines) const {
    lines.push_back("panning type : " + std::string(GetTypeName()));
    lines.push_back("panning subtype : " + std::string(GetSubTypeName()));
}

}  // namespace Quilo
