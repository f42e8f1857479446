// SPDX-License-Identifier: MIT
#include "pan/QuiloRecursivePanning.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

void RecursivePanning::ApplySpeakersPositions(const tav::CartesianArray& positions) {
    const ControlLock lock = LockControl();
    numSpeakers_ = std::min<std::size_t>(positions.Size(), NumOutputs());
    if (IsRecursiveLayout(numSpeakers_)) {
        corners_ = RecursiveCorners(std::span(positions.Data(), numSpeakers_));
    }
    RecomputeSources();
}

void RecursivePanning::SetCorners(std::span<const float> azimuthsDeg) {
    const ControlLock lock = LockControl();
    const auto isFinite = [](float azimuth) { return std::isfinite(azimuth); };
    const auto given = azimuthsDeg.first(std::min(azimuthsDeg.size(), corners_.size()));
    if (!std::ranges::all_of(given, isFinite)) return;
    if (std::ranges::equal(given, std::span(corners_).first(given.size()))) return;
    std::ranges::copy(given, corners_.begin());
    RecomputeSources();
}

std::array<float, 4> RecursivePanning::Corners() const {
    const ControlLock lock = LockControl();
    return corners_;
}

void RecursivePanning::ComputeGains(unsigned,
                                    const tav::CartesianVector& source,
                                    std::span<float> gains) {
    RecursiveGains(source, corners_, numSpeakers_, gains);
}

}  // namespace Quilo
