// SPDX-License-Identifier: MIT
#include "pan/QuiloDbapPanning.h"

#include "kernels/VelkDspSpeakerKernels.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

constexpr float kPercent = 0.01f;

}  // namespace

DbapLayout::DbapLayout(const tav::CartesianArray& speakers)
    : cloud(WithinReach(speakers)),
      hull(WithinReach(speakers)) {}

DbapPanning::DbapPanning(unsigned numInputs, unsigned numOutputs, bool isPlanar)
    : LayoutPanning(numInputs, numOutputs),
      directionalSpreads_(numInputs),
      isPlanar_(isPlanar) {}

void DbapPanning::ApplySpreadingMode(SpreadingMode mode) {
    if (mode == spreadingMode_) return;
    spreadingMode_ = mode;
    RecomputeSources();
}

void DbapPanning::ApplySpread(float spread) {
    for (unsigned i = 0; i < NumInputs(); ++i) ApplySourceSpread(i, spread);
}

void DbapPanning::ApplySpreadByDirection(unsigned index, std::span<const float> values) {
    if (values.size() < 3 || !tav::IsFinite({values[0], values[1], values[2]})) return;
    const auto percent = [](float value) { return std::clamp(value, 0.f, 100.f); };
    const SpreadByDirection spread{percent(values[0]), percent(values[1]), percent(values[2])};
    if (spread == directionalSpreads_[index]) return;
    directionalSpreads_[index] = spread;
    if (spreadingMode_ != SpreadingMode::Directional) return;  // not in use
    RecomputeSource(index);
}

Pan::SpreadingMode DbapPanning::GetSpreadingMode() const {
    const tav::ControlGuard guard(controlLock_);
    return spreadingMode_;
}

std::array<float, 3> DbapPanning::SourceSpreadByDirection(unsigned index) const {
    const tav::ControlGuard guard(controlLock_);
    if (index >= NumInputs()) return {};
    const SpreadByDirection& spread = directionalSpreads_[index];
    return {spread.x, spread.y, spread.z};
}

void DbapPanning::SetMuteOutside(bool on) {
    const tav::ControlGuard guard(controlLock_);
    if (on == muteOutside_) return;
    muteOutside_ = on;
    RecomputeSources();
}

bool DbapPanning::MuteOutside() const {
    const tav::ControlGuard guard(controlLock_);
    return muteOutside_;
}

DbapMetric DbapPanning::MetricOf(unsigned index, const tav::CartesianVector& source) const {
    if (spreadingMode_ == SpreadingMode::Directional) {
        const SpreadByDirection& spread = directionalSpreads_[index];
        return DirectionalMetric({spread.x * kPercent, spread.y * kPercent, spread.z * kPercent});
    }
    return OmniMetric(StoredSpread(index) * kPercent, source, layout_.cloud.centroid, isPlanar_);
}

void DbapPanning::ComputeGains(unsigned index,
                               const tav::CartesianVector& source,
                               std::span<float> gains) {
    const tav::CartesianVector place = WithinReach(source);
    DbapGains(layout_.cloud.rows, place, MetricOf(index, place),
              tav::BestKernels<tav::SpeakerKernels>().gainsByDistance, gains);
    const float loudness = Loudness(place);
    if (loudness == 1.f) return;
    for (float& gain : gains) gain *= loudness;
}

float DbapPanning2D::Loudness(const tav::CartesianVector& source) const {
    if (MutesOutside()) return layout_.hull.Contains({source.x, source.y}) ? 1.f : 0.f;
    return HullAttenuation(layout_.hull, layout_.cloud.centroid, source);
}

float DbapPanning3D::Loudness(const tav::CartesianVector& source) const {
    // Deliberate: the squared distance is compared with the plain radius.
    //                                          (DbapPanning3D, MutesBeyondTheRootOfTheRadius)
    const bool isOutside = SquaredDistance(source, layout_.cloud.centroid) > layout_.cloud.radius;
    return MutesOutside() && isOutside ? 0.f : 1.f;
}

}  // namespace Quilo
