// SPDX-License-Identifier: MIT
#include "laws/QuiloDbapLaw.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

float SquaredDistance(const tav::CartesianVector& a, const tav::CartesianVector& b) noexcept {
    const float dx = a.x - b.x;
    const float dy = a.y - b.y;
    const float dz = a.z - b.z;
    return dx * dx + dy * dy + dz * dz;
}

SpeakerCloud::SpeakerCloud(std::span<const tav::CartesianVector> speakers) : rows(speakers) {
    if (speakers.empty()) return;
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (const tav::CartesianVector& s : speakers) {
        x += static_cast<double>(s.x);
        y += static_cast<double>(s.y);
        z += static_cast<double>(s.z);
    }
    const auto count = static_cast<double>(speakers.size());
    centroid = {static_cast<float>(x / count), static_cast<float>(y / count),
                static_cast<float>(z / count)};
    for (const tav::CartesianVector& s : speakers) {
        radius = std::max(radius, std::sqrt(SquaredDistance(s, centroid)));
    }
}

DbapMetric OmniMetric(float spread,
                      const tav::CartesianVector& source,
                      const tav::CartesianVector& centroid,
                      bool isPlanar) noexcept {
    tav::CartesianVector middle = centroid;
    if (isPlanar) middle.z = source.z;
    const float rest = 1.f - spread;
    return {{rest, rest, isPlanar ? 0.f : rest}, spread * SquaredDistance(source, middle)};
}

DbapMetric DirectionalMetric(const std::array<float, 3>& spreads) noexcept {
    const auto squared = [](float value) { return value * value; };
    return {{squared(1.f - spreads[0]), squared(1.f - spreads[1]), squared(1.f - spreads[2])}, 0.f};
}

void DbapGains(const SpeakerRows& speakers,
               const tav::CartesianVector& source,
               const DbapMetric& metric,
               DbapKernel kernel,
               std::span<float> gains) noexcept {
    const std::size_t count = std::min(speakers.Size(), gains.size());
    std::ranges::fill(gains.subspan(count), 0.f);
    if (count == 0) return;
    const float numbers[] = {source.x,         source.y,         source.z,     metric.weights.x,
                             metric.weights.y, metric.weights.z, metric.offset};
    kernel(speakers.Data(), speakers.Stride(), static_cast<int>(count), numbers, gains.data());
}

float HullAttenuation(const tav::ConvexHull2D& hull,
                      const tav::CartesianVector& centroid,
                      const tav::CartesianVector& source) noexcept {
    if (hull.Contains({source.x, source.y})) return 1.f;
    const tav::CartesianVector edge = hull.NearestVertex(source).value_or(source);
    return (std::sqrt(SquaredDistance(centroid, edge)) + 1.f) /
           (std::sqrt(SquaredDistance(centroid, source)) + 1.f);
}

VdbapWeights VdbapWeightsAt(float distance, float radius) noexcept {
    const float inner = 0.7f * radius;
    const float outer = 1.3f * radius;
    if (distance > outer) return {1.f, 0.f};
    if (distance < inner || outer == inner) return {0.f, 1.f};
    const float vectorBase = (distance - inner) / (outer - inner);
    return {vectorBase, 1.f - vectorBase};
}

}  // namespace Quilo
