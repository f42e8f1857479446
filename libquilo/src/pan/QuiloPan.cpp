// SPDX-License-Identifier: MIT
#include "pan/QuiloPan.h"

#include "pan/QuiloKeywords.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

Pan::Pan(unsigned numInputs, unsigned numOutputs)
    : AudioProcessorWithAutoMute(numInputs, numOutputs),
      positions_(numInputs),
      mutes_(numInputs) {}

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

void Pan::SetSampleRate(float hz) {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::SetSampleRate(hz);
    ApplySampleRate();
}

void Pan::SetBufferSize(unsigned frames) {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::SetBufferSize(frames);
}

void Pan::Reset() {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::Reset();
    ApplyReset();
}

void Pan::SetConnections(std::span<const short> inletCounts, std::span<const short> outletCounts) {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::SetConnections(inletCounts, outletCounts);
}

void Pan::SetAutoMute(bool on) {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::SetAutoMute(on);
}

void Pan::SetAutoMuteTime(float seconds) {
    const ControlLock lock = LockControl();
    AudioProcessorWithAutoMute::SetAutoMuteTime(seconds);
}

void Pan::SetSourcesPositions(const tav::CartesianArray& positions, bool immediate) {
    const ControlLock lock = LockControl();
    const auto count = static_cast<unsigned>(std::min<std::size_t>(NumInputs(), positions.Size()));
    for (unsigned i = 0; i < count; ++i) SetSourcePosition(i, positions[i], immediate, false);
}

void Pan::SetSpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    if (!std::ranges::all_of(positions, tav::IsFinite)) return;
    ApplySpeakersPositions(positions);
}

void Pan::SetInterpolationTime(float ms) {
    const ControlLock lock = LockControl();
    if (!std::isfinite(ms)) return;
    const float clamped = std::clamp(ms, 0.f, kMaxInterpolationTimeMs);
    if (clamped == interpolationTimeMs_) return;
    interpolationTimeMs_ = clamped;
    ApplyInterpolationTime(clamped);
}

void Pan::SetSpreadingMode(SpreadingMode) {}
void Pan::SetSpreadingMode(std::string_view) {}
void Pan::SetSourceSpread(unsigned, float) {}
void Pan::SetSpread(float) {}
void Pan::SetSpreadsByDirection(std::span<const float>) {}
void Pan::SetSpreadByDirection(unsigned, std::span<const float>) {}
bool Pan::SupportsSpread() const { return false; }
unsigned Pan::GetOrder() const { return 1; }
void Pan::SetOrder(unsigned) {}
void Pan::SetNearfieldCompensation(unsigned, bool) {}
void Pan::SetSpeakersRadius(float) {}
void Pan::SetNormalization(tav::SphericalHarmonic::Normalization) {}
tav::SphericalHarmonic::Normalization Pan::GetNormalization() const {
    return tav::SphericalHarmonic::Normalization::SN3D;
}
void Pan::SetComputationMode(std::string_view) {}
void Pan::SetComputationMode(tav::HoaEncodingVector::Mode) {}
tav::HoaEncodingVector::Mode Pan::GetComputationMode() const {
    return tav::HoaEncodingVector::Mode::Precise;
}
void Pan::SetNumNeighbors(unsigned, unsigned) {}

void Pan::Dump(std::vector<std::string>& lines) {
    const ControlLock lock = LockControl();
    lines.clear();
    lines.push_back("panning type : " + std::string(GetTypeName()));
    lines.push_back("panning subtype : " + std::string(GetSubTypeName()));
}

float Pan::GetInterpolationTime() const {
    const ControlLock lock = LockControl();
    return interpolationTimeMs_;
}

tav::CartesianVector Pan::SourcePosition(unsigned index) const {
    const ControlLock lock = LockControl();
    return index < NumInputs() ? positions_[index] : tav::CartesianVector{};
}

float Pan::SourceSpread(unsigned) const { return 0.f; }

void Pan::SetSourceMute(unsigned index, bool muted) {
    const ControlLock lock = LockControl();
    if (index >= NumInputs() || SourceMute(index) == muted) return;
    mutes_[index] = muted ? 1 : 0;
    ApplySourceMute(index);
}

bool Pan::SourceMute(unsigned index) const {
    const ControlLock lock = LockControl();
    return index < NumInputs() && IsMuted(index);
}

bool Pan::StoreSourcePosition(unsigned index, const tav::CartesianVector& position, bool force) {
    if (index >= NumInputs() || !tav::IsFinite(position)) return false;
    if (!force && position == positions_[index]) return false;
    positions_[index] = position;
    return true;
}

void Pan::RecomputeSource(unsigned index) {
    SetSourcePosition(index, StoredPosition(index), false, true);
}

void Pan::RecomputeSources(bool immediate) {
    const ControlLock lock = LockControl();
    RecomputeAll(immediate);
}

void Pan::RecomputeAll(bool immediate) {
    for (unsigned i = 0; i < NumInputs(); ++i) {
        SetSourcePosition(i, tav::CartesianVector(positions_[i]), immediate, true);
    }
}

void Pan::ApplySourceMute(unsigned index) { RecomputeSource(index); }

}  // namespace Quilo
