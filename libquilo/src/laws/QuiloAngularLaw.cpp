// SPDX-License-Identifier: MIT
#include "laws/QuiloAngularLaw.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Quilo {

namespace {

constexpr float kHalfPi = 1.5707964f;
constexpr float kTwoPi = 6.2831855f;

}  // namespace

void AngularLaw::SetSpeakers(const tav::CartesianArray& speakers, std::size_t numOutputs) {
    outputOfAzimuth_.clear();
    for (std::size_t i = 0; i < std::min(speakers.Size(), numOutputs); ++i) {
        const float azimuth = std::atan2(speakers[i].y, speakers[i].x);
        outputOfAzimuth_[azimuth] = static_cast<std::uint32_t>(i);
    }
}

void AngularLaw::Gains(const tav::CartesianVector& source, std::span<float> gains) const {
    std::ranges::fill(gains, 0.f);
    if (gains.size() == 1) gains[0] = 1.f;
    if (gains.size() <= 1 || outputOfAzimuth_.empty()) return;

    // 1. The loudspeakers on both sides, across the wrap too.
    const float azimuth = std::atan2(source.y, source.x);
    auto next = outputOfAzimuth_.upper_bound(azimuth);
    if (next == outputOfAzimuth_.end()) next = outputOfAzimuth_.begin();
    const auto previous =
        std::prev(next == outputOfAzimuth_.begin() ? outputOfAzimuth_.end() : next);

    // 2. All three azimuths on one turn that starts at the previous loudspeaker. A loudspeaker that
    // is its own neighbour stands a whole turn away from itself.
    const float first = previous->first;
    float last = next->first;
    while (first >= last) last += kTwoPi;
    float between = azimuth;
    while (first > between) between += kTwoPi;

    // 3. The arc mapped to a quarter of a turn.
    const float t = (std::min(std::max(between, first), last) - first) * kHalfPi / (last - first);
    gains[previous->second] = std::cos(t);
    gains[next->second] = std::sin(t);
}

}  // namespace Quilo
