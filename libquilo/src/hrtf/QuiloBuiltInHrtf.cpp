// SPDX-License-Identifier: MIT
#include "hrtf/QuiloBuiltInHrtf.h"

#include "filterdesign/VelkDspBiquadCells.h"
#include "hrtf/QuiloKemarTables.h"
#include "math/VelkDspKdTreeHelper.h"

#include <algorithm>

namespace Quilo {

namespace {

tav::CartesianVector PositionOf(std::size_t index) {
    const auto& [x, y, z] = kKemarPositions[index];
    return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

void StoreCells(std::size_t row, std::span<float> filter) {
    const auto cells = tav::CellsFromTable(kKemarCoefficients[row]);
    std::ranges::transform(tav::CellsToMemory(cells), filter.begin(),
                           [](double value) { return static_cast<float>(value); });
}

}  // namespace

HrtfData BuiltInHrtf() {
    HrtfData set;
    set.filtersLength = 6 * kNumKemarCells;
    set.numChannels = 2;
    set.samplingRate = 44100.f;
    set.numPoints = kNumKemarPoints;
    set.infos = {{HrtfInfo::kOrganization, "MIT"},
                 {HrtfInfo::kListenerShortName, "KEMAR"},
                 {HrtfInfo::kLicense, "MIT"}};

    tav::CartesianArray positions(kNumKemarPoints);
    for (std::size_t i = 0; i < kNumKemarPoints; ++i) positions[i] = PositionOf(i);
    const tav::KdTreeHelper nearest(positions);
    for (std::size_t i = 0; i < kNumKemarPoints; ++i) {
        const tav::CartesianVector& p = positions[i];
        HrtfPoint point{p, static_cast<float>(kKemarDelays[i][0]),
                        tav::Matrix<float>(set.numChannels, set.filtersLength),
                        static_cast<std::uint32_t>(i)};
        StoreCells(i, point.filters.Row(0));
        StoreCells(nearest.NearestIndex({-p.x, p.y, p.z}), point.filters.Row(1));
        set.points.push_back(std::move(point));
    }
    return set;
}

}  // namespace Quilo
