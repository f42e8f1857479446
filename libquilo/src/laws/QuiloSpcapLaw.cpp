// SPDX-License-Identifier: MIT
#include "laws/QuiloSpcapLaw.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

struct UnitDirection {
    double x = 0.0;
    double y = 0.0;
};

/// The unit vector of the azimuth atan2(y, x), without the angle.
UnitDirection DirectionTo(const tav::CartesianVector& point) noexcept {
    const auto x = static_cast<double>(point.x);
    const auto y = static_cast<double>(point.y);
    const double length = std::sqrt(x * x + y * y);
    if (length == 0.0) return {std::copysign(1.0, x), 0.0};
    return {x / length, y / length};
}

}  // namespace

void SpcapLaw::SetSpeakers(std::span<const tav::CartesianVector> speakers) {
    const auto count = static_cast<double>(speakers.size());
    UnitDirection sum;
    for (const tav::CartesianVector& s : speakers) {
        const UnitDirection d = DirectionTo(s);
        sum.x += d.x;
        sum.y += d.y;
    }
    tav::CartesianArray numbers(speakers.size());
    for (std::size_t k = 0; k < speakers.size(); ++k) {
        const UnitDirection d = DirectionTo(speakers[k]);
        // The sum of (1 + cos) / 2 over the angles to all loudspeakers, itself included.
        const double density = 0.5 * (count + d.x * sum.x + d.y * sum.y);
        numbers[k] = {static_cast<float>(d.x), static_cast<float>(d.y),
                      static_cast<float>(0.5 / std::max(density, 1.0))};
    }
    speakers_ = SpeakerRows(numbers);
}

void SpcapLaw::Gains(const tav::CartesianVector& source,
                     float spread,
                     std::span<float> gains) const noexcept {
    const std::size_t count = std::min(speakers_.Size(), gains.size());
    std::ranges::fill(gains.subspan(count), 0.f);
    if (count == 0) return;
    const UnitDirection d = DirectionTo(source);
    const auto fill = [&](float exponent) {
        return kernel_(speakers_.Data(), speakers_.Stride(), static_cast<int>(count),
                       static_cast<float>(d.x), static_cast<float>(d.y), exponent, gains.data());
    };
    // Where all loudspeakers are exactly opposite to the source, every gain is 0 and cannot be
    // scaled to unit energy. Their densities alone decide then, as they do for a source close to
    // that point.
    if (!fill(1.f - 0.01f * spread)) fill(0.f);
}

}  // namespace Quilo
