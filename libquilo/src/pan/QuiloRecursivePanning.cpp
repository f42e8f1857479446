// SPDX-License-Identifier: MIT
#include "pan/QuiloRecursivePanning.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

void RecursivePanning::ApplySpeakersPositions(SpeakersLayout& layout) {
    numSpeakers_ = layout.Positions().Size();
    if (IsRecursiveLayout(numSpeakers_)) corners_ = RecursiveCorners(layout.Positions());
    RecomputeSources();
}

void RecursivePanning::SetCorners(std::span<const float> azimuthsDeg) {
    const tav::ControlGuard guard(controlLock_);
    const auto isFinite = [](float azimuth) { return std::isfinite(azimuth); };
    const auto given = azimuthsDeg.first(std::min(azimuthsDeg.size(), corners_.size()));
    if (!std::ranges::all_of(given, isFinite)) return;
    if (std::ranges::equal(given, std::span(corners_).first(given.size()))) return;
    std::ranges::copy(given, corners_.begin());
    RecomputeSources();
}

std::array<float, 4> RecursivePanning::Corners() const {
    const tav::ControlGuard guard(controlLock_);
    return corners_;
}

void RecursivePanning::ComputeGains(unsigned,
                                    const tav::CartesianVector& source,
                                    std::span<float> gains) {
    RecursiveGains(source, corners_, numSpeakers_, gains);
}

}  // namespace Quilo
