// SPDX-License-Identifier: MIT
#include "laws/QuiloSpeakerRows.h"

#include <algorithm>

namespace Quilo {

SpeakerRows::SpeakerRows(std::span<const tav::CartesianVector> speakers)
    : size_(speakers.size()),
      stride_((speakers.size() + kLanes - 1) / kLanes * kLanes),
      numbers_(3 * stride_) {
    for (std::size_t k = 0; k < size_; ++k) {
        numbers_[k] = speakers[k].x;
        numbers_[stride_ + k] = speakers[k].y;
        numbers_[2 * stride_ + k] = speakers[k].z;
    }
}

tav::CartesianVector WithinReach(const tav::CartesianVector& point) noexcept {
    constexpr float kReach = 1e18f;  // metres
    return {std::clamp(point.x, -kReach, kReach), std::clamp(point.y, -kReach, kReach),
            std::clamp(point.z, -kReach, kReach)};
}

tav::CartesianArray WithinReach(const tav::CartesianArray& points) {
    tav::CartesianArray reachable(points);
    for (tav::CartesianVector& point : reachable) point = WithinReach(point);
    return reachable;
}

}  // namespace Quilo
