// SPDX-License-Identifier: MIT
#include "math/VelkDspConvexHull2D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace tav {
namespace {

struct GridPoint {
    int x, y;
    friend bool operator==(const GridPoint&, const GridPoint&) = default;
};

int Turn(GridPoint a, GridPoint b, GridPoint c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

GridPoint OnGrid(const CartesianVector& v) {
    return {static_cast<int>(v.x), static_cast<int>(v.y)};
}

bool TriangleContains(GridPoint a, GridPoint b, GridPoint c, GridPoint q) {
    const int turns[] = {Turn(a, b, q), Turn(b, c, q), Turn(c, a, q)};
    return Turn(a, b, c) != 0 && (std::ranges::all_of(turns, [](int turn) { return turn >= 0; }) ||
                                  std::ranges::all_of(turns, [](int turn) { return turn <= 0; }));
}

// A point is in the hull exactly when it is in a triangle of three of the points.
bool AnyTriangleContains(const std::vector<GridPoint>& points, GridPoint q) {
    for (const GridPoint a : points) {
        for (const GridPoint b : points) {
            for (const GridPoint c : points) {
                if (TriangleContains(a, b, c, q)) return true;
            }
        }
    }
    return false;
}

CartesianArray Layout(const std::vector<GridPoint>& points) {
    CartesianArray layout(points.size());
    for (std::size_t k = 0; k < points.size(); ++k) {
        layout[k] = {static_cast<float>(points[k].x), static_cast<float>(points[k].y),
                     static_cast<float>(k)};
    }
    return layout;
}

void ExpectCornersOf(const ConvexHull2D& hull, const CartesianArray& layout) {
    const CartesianArray& corners = hull.Vertices();
    for (std::size_t k = 0; k < corners.Size(); ++k) {
        ASSERT_NE(std::ranges::find(layout, corners[k]), layout.end());
        const auto corner = [&](std::size_t i) { return OnGrid(corners[i % corners.Size()]); };
        if (corners.Size() > 2) {
            ASSERT_LT(Turn(corner(k), corner(k + 1), corner(k + 2)), 0);
        }
    }
}

// A coarse grid, so that repeated points and points on a line are common.
TEST(ConvexHull2D, ContainsWhatTheTrianglesOfItsPointsContain) {
    std::mt19937 random(2);
    std::uniform_int_distribution<int> coordinate(-3, 3);
    int polygons = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<GridPoint> points(static_cast<std::size_t>(3 + round % 7));
        for (GridPoint& point : points) point = {coordinate(random), coordinate(random)};
        const CartesianArray layout = Layout(points);
        const ConvexHull2D hull(layout);
        ASSERT_NO_FATAL_FAILURE(ExpectCornersOf(hull, layout));
        if (hull.Vertices().Size() < 3) continue;
        ++polygons;
        for (int x = -4; x <= 4; ++x) {
            for (int y = -4; y <= 4; ++y) {
                ASSERT_EQ(hull.Contains({static_cast<float>(x), static_cast<float>(y)}),
                          AnyTriangleContains(points, {x, y}))
                    << "round " << round << " at " << x << " " << y;
            }
        }
    }
    EXPECT_GT(polygons, 250);
}

TEST(ConvexHull2D, GoesClockwiseFromTheLowestPoint) {
    const CartesianArray square{{1, 1, 0}, {-1, -1, 5}, {0, 0, 0}, {1, -1, 0}, {-1, 1, 0}};
    EXPECT_EQ(ConvexHull2D(square).Vertices(),
              (CartesianArray{{-1, -1, 5}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}}));
}

TEST(ConvexHull2D, PointsOnALineHaveTwoEdgesAndContainTheLine) {
    const CartesianArray pair{{2, 1, 0}, {-2, -1, 0}};
    const CartesianArray more{{0, 0, 0}, {2, 1, 0}, {-2, -1, 0}, {2, 1, 0}, {1, 0.5f, 0}};
    for (const CartesianArray& points : {pair, more}) {
        const ConvexHull2D hull(points);
        EXPECT_EQ(hull.Vertices(), (CartesianArray{{-2, -1, 0}, {2, 1, 0}}));
        EXPECT_TRUE(hull.Contains({1.f, 0.5f}));
        EXPECT_TRUE(hull.Contains({4.f, 2.f}));
        EXPECT_FALSE(hull.Contains({1.f, 0.75f}));
        EXPECT_FALSE(hull.Contains({1.f, 0.25f}));
    }
}

TEST(ConvexHull2D, WithoutTwoDifferentPointsEverythingIsInside) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const CartesianArray sets[] = {
        {}, {{1, 2, 3}}, {{1, 2, 3}, {1, 2, 4}}, {{1, 2, 3}, {nan, 0, 0}}};
    for (const CartesianArray& points : sets) {
        const ConvexHull2D hull(points);
        EXPECT_TRUE(hull.Vertices().Empty());
        EXPECT_TRUE(hull.Contains({1e6f, -1e6f}));
        EXPECT_FALSE(hull.NearestVertex({0, 0, 0}));
    }
}

TEST(ConvexHull2D, NearestVertexIsTheNearestOfTheCorners) {
    const ConvexHull2D hull({{-1, -1, 9}, {-1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {0.5f, 0, 0}});
    EXPECT_EQ(hull.NearestVertex({0.75f, 0.25f, 0}), (CartesianVector{1, 1, 0}));
    EXPECT_EQ(hull.NearestVertex({-9, -3, 0}), (CartesianVector{-1, 1, 0})) << "9 is far up";
    EXPECT_EQ(hull.NearestVertex({-9, -3, 6}), (CartesianVector{-1, -1, 9}));
    EXPECT_EQ(hull.NearestVertex({0, 1, 0}), (CartesianVector{-1, 1, 0})) << "the first of two";
}

}  // namespace
}  // namespace tav
