// SPDX-License-Identifier: MIT
#include "laws/QuiloSurroundLaw.h"

#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

void SurroundLaw::SetSpeakers(const tav::CartesianArray& speakers, std::size_t numOutputs) {
    const std::size_t right = numOutputs == 4 ? 2 : 1;
    if (speakers.Size() > 0) corners_[0] = tav::NavigationalAzimuthDeg(speakers[0]);
    if (speakers.Size() > right) corners_[1] = tav::NavigationalAzimuthDeg(speakers[right]);
}

void SurroundLaw::Gains(const tav::CartesianVector& source, std::span<float> gains) const {
    const SquareDirection direction = WarpDirection(source, corners_);
    const auto shares = CornerShares(PlaceAt(direction.azimuthDeg, direction.radius));
    const float rear = std::sqrt(std::clamp(shares[2] + shares[3], 0.f, 1.f));
    if (gains.size() == 3) {
        gains[0] = std::sqrt(shares[0]);
        gains[1] = std::sqrt(shares[1]);
        gains[2] = rear;
        return;
    }
    const SplitShares front(shares[0], shares[1]);
    gains[0] = std::sqrt(front.left);
    gains[1] = std::sqrt(front.middle);
    gains[2] = std::sqrt(front.right);
    gains[3] = rear;
}

}  // namespace Quilo
