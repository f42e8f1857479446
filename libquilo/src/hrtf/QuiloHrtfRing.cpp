// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfRing.h"

#include "hrtf/QuiloHrtfResampling.h"
#include "math/VelkDspSpherical.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

namespace Quilo {

namespace {

constexpr float kLongestLagMs = 1.5f;
constexpr float kNoDistance = 1.4f;  // metres: where the points do not say one

/// The mean distance of the points of a set.
float DistanceOf(const Hrtf& set) {
    double sum = 0.0;
    for (const tav::CartesianVector& p : set.Positions()) {
        sum += static_cast<double>(tav::Distance(p));
    }
    const auto mean = static_cast<float>(sum / static_cast<double>(set.Positions().Size()));
    return std::isfinite(mean) && mean > 0.f ? mean : kNoDistance;
}

/// Samples by which the left response is later: the peak of the correlation of both, between
/// samples by a parabola.
double LagOf(std::span<const float> left, std::span<const float> right, int longest) {
    const int count = static_cast<int>(left.size());
    std::vector<double> correlations;
    for (int lag = -longest - 1; lag <= longest + 1; ++lag) {
        double sum = 0.0;
        for (int t = std::max(lag, 0); t < std::min(count, count + lag); ++t) {
            sum += static_cast<double>(left[static_cast<std::size_t>(t)]) *
                   static_cast<double>(right[static_cast<std::size_t>(t - lag)]);
        }
        correlations.push_back(sum);
    }
    const auto peak = std::max_element(correlations.begin() + 1, correlations.end() - 1);
    const double before = peak[-1], here = peak[0], after = peak[1];
    const double bend = before - 2.0 * here + after;
    const double shift = bend < 0.0 ? 0.5 * (before - after) / bend : 0.0;
    return static_cast<double>(peak - correlations.begin()) - longest - 1 + shift;
}

}  // namespace

tav::CartesianVector HrtfRing::Direction(std::size_t point) {
    constexpr float kStepDeg = 360.f / static_cast<float>(kNumPoints);
    return tav::FromNavigational(kStepDeg * static_cast<float>(point), 0.f, 1.f);
}

HrtfRing::HrtfRing(const Hrtf& whole) {
    HrtfData data;
    data.filterType = whole.Data().filterType;
    data.filtersLength = whole.Data().filtersLength;
    data.numChannels = whole.Data().numChannels;
    data.samplingRate = whole.Data().samplingRate;
    data.numPoints = kNumPoints;
    const float distance = DistanceOf(whole);
    const float samplesPerMs = data.samplingRate * 0.001f;
    const int longest = static_cast<int>(std::ceil(kLongestLagMs * samplesPerMs));
    for (std::size_t k = 0; k < kNumPoints; ++k) {
        const tav::CartesianVector d = Direction(k);
        HrtfPoint point = *whole.NearestPoint({distance * d.x, distance * d.y, distance * d.z});
        point.position = d;
        point.delay = 0.f;
        if (data.filterType == Hrtfs::FilterType::Fir) {
            const double lag = LagOf(point.filters.Row(0), point.filters.Row(1), longest);
            delaysMs[k] = static_cast<float>(lag) / samplesPerMs;
            for (std::size_t ear = 0; ear < 2; ++ear) {
                std::ranges::copy(MinimumPhaseResponse(point.filters.Row(ear)),
                                  point.filters.Row(ear).begin());
            }
        }
        data.points.push_back(std::move(point));
    }
    set = std::make_shared<const Hrtf>(std::move(data));
}

}  // namespace Quilo
