// SPDX-License-Identifier: MIT
#include "pan/QuiloNFCHOAPanningOneSource.h"

#include "laws/QuiloNearFieldLaw.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

constexpr double kNearestMetres = 0.1;

float RatioOf(const tav::CartesianVector& position, float radius) {
    const double distance =
        std::hypot(static_cast<double>(position.x), static_cast<double>(position.y),
                   static_cast<double>(position.z));
    const double ratio = static_cast<double>(radius) / std::max(distance, kNearestMetres);
    return std::min(static_cast<float>(ratio), kHighestNearFieldRatio);
}

}  // namespace

void NFCHOAPanningOneSource::SetPlace(const tav::CartesianVector& position,
                                      float radius,
                                      float glideMs,
                                      bool immediate) noexcept {
    newest_.ratio = isCompensated_ ? RatioOf(position, radius) : 1.f;
    newest_.glideMs = glideMs;
    if (immediate) {
        newest_.jump = newest_.ratio;
        ++newest_.numJumps;
    }
    shared_.Store(newest_);
}

void NFCHOAPanningOneSource::TakeTarget() noexcept TAV_NONBLOCKING {
    const std::uint32_t numJumps = taken_.numJumps;
    if (!shared_.Take(taken_)) return;
    if (taken_.numJumps != numJumps) ratio_.Set(taken_.jump, 0.f);
    if (taken_.ratio != ratio_.Target()) ratio_.Set(taken_.ratio, taken_.glideMs);
}

}  // namespace Quilo
