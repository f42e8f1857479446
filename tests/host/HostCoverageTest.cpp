// SPDX-License-Identifier: MIT
#include "HostCoverage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>

namespace {

using namespace Quilo::Host;

const std::vector<DirectionCell> kGrid = DirectionGrid(5);

std::vector<float> GainsOf(const std::function<std::vector<float>(const DirectionCell&)>& law) {
    std::vector<float> gains;
    for (const DirectionCell& cell : kGrid)
        for (const float gain : law(cell)) gains.push_back(gain);
    return gains;
}

TEST(DirectionGrid, TilesTheSphereAndIsItsOwnMirrorImage) {
    double sphere = 0, upper = 0;
    for (std::size_t k = 0; k < kGrid.size(); ++k) {
        const DirectionCell& cell = kGrid[k];
        sphere += cell.share;
        upper += cell.upperShare;
        const auto here = UnitVector(cell), there = UnitVector(kGrid[cell.mirror]);
        EXPECT_NEAR(here.x, -there.x, 1e-6);
        EXPECT_NEAR(here.y, there.y, 1e-6);
        EXPECT_EQ(cell.elevationDeg, kGrid[cell.mirror].elevationDeg);
        EXPECT_EQ(kGrid[cell.mirror].mirror, k);
    }
    EXPECT_NEAR(sphere, 1, 1e-12);
    EXPECT_NEAR(upper, 1, 1e-12);
}

// A lone loudspeaker in front is off by 90 degrees in the mean, over the sphere and over the
// horizon; everything below the ring at -30 degrees is a cap of known size.
TEST(Coverage, AgreesWithTheGeometryOfOneLoudspeaker) {
    const auto gains = GainsOf([](const DirectionCell& cell) {
        return std::vector<float>{cell.elevationDeg < -31 ? 0.5e-4f : 2.f};
    });
    const tav::CartesianVector front{0, 3, 0};
    const Coverage coverage = SummariseCoverage(kGrid, gains, {&front, 1});
    const double edge = std::sin(32.5 * std::numbers::pi / 180);
    EXPECT_NEAR(coverage.silentShare, (1 - edge) / 2, 1e-12);
    EXPECT_EQ(coverage.silentUpperShare, 0);
    EXPECT_EQ(kGrid[coverage.quietest.cell].elevationDeg, -90) << "the middle of the silence";
    EXPECT_NEAR(coverage.meanHorizonErrorDeg, 90, 1e-9);
    EXPECT_NEAR(coverage.worstErrorDeg.value, 180, 1e-4);
    EXPECT_EQ(kGrid[coverage.worstErrorDeg.cell].azimuthDeg, 180);
    EXPECT_EQ(kGrid[coverage.worstErrorDeg.cell].elevationDeg, 0);
    EXPECT_TRUE(coverage.isFlat);
    ASSERT_TRUE(coverage.leftRight);
    EXPECT_EQ(coverage.leftRight->value, 0);
}

struct Pair {
    const char* name;
    tav::CartesianVector left, right;
    std::optional<double> difference;
    bool isFlat;
};

// The law gives a source in the middle to the left one alone: half a panner's diagonal.
TEST(Coverage, HearsThatLeftAndRightDiffer) {
    const Pair kPairs[] = {
        {"a mirror image", {-1, 2, 0}, {1, 2, 0}, 0.75, true},
        {"none, for one stands farther", {-1, 2, 0}, {1.1f, 2.2f, 0}, std::nullopt, true},
        {"above", {-1, 2, 1}, {1, 2, 1}, 0.75, false},
    };
    const auto gains = GainsOf([](const DirectionCell& cell) {
        const bool isLeft = cell.azimuthDeg <= 0 || cell.azimuthDeg == 180;
        return isLeft ? std::vector<float>{0.75f, 0} : std::vector<float>{0, 0.75f};
    });
    for (const Pair& pair : kPairs) {
        const tav::CartesianVector speakers[] = {pair.left, pair.right};
        const Coverage coverage = SummariseCoverage(kGrid, gains, speakers);
        EXPECT_EQ(coverage.isFlat, pair.isFlat) << pair.name;
        ASSERT_EQ(coverage.leftRight.has_value(), pair.difference.has_value()) << pair.name;
        if (!pair.difference) continue;
        EXPECT_NEAR(coverage.leftRight->value, *pair.difference, 1e-6) << pair.name;
        EXPECT_EQ(UnitVector(kGrid[coverage.leftRight->cell]).x, 0) << pair.name;
    }
}

}  // namespace
