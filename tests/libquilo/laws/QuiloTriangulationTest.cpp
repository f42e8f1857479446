// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulation.h"

#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloTriangulationArcs.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainTriangulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Quilo {
namespace {

using tav::CartesianArray;
using tav::CartesianVector;
using Generator = std::mt19937;

/// In [-1, 1), the same on every platform.
float Uniform(Generator& generator) {
    return static_cast<float>(static_cast<double>(generator()) / 2147483648.0 - 1.0);
}

CartesianArray InCube(std::size_t count, Generator& generator) {
    CartesianArray layout(count);
    for (CartesianVector& v : layout) {
        v = {Uniform(generator), Uniform(generator), Uniform(generator)};
    }
    return layout;
}

CartesianArray OnSphere(std::size_t count, Generator&) {
    return DefaultSpeakers(LayoutKind::Periphonic, static_cast<unsigned>(count));
}

/// Rings of up to eight, one above the other, and a zenith: many equal arcs and crossings.
CartesianArray Rings(std::size_t count, Generator& generator) {
    const std::size_t perRing = 3 + generator() % 6;
    CartesianArray layout(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto ring = static_cast<float>(i / perRing);
        const float azimuthDeg =
            360.f / static_cast<float>(perRing) * static_cast<float>(i % perRing);
        layout[i] = tav::FromNavigational(azimuthDeg, -40.f + 25.f * ring, 1.f);
    }
    if (count > 0) layout[count - 1] = {0.f, 0.f, 1.f};
    return layout;
}

/// Points of a coarse grid: exact ties, opposite and coincident loudspeakers, some at the listener.
CartesianArray OnGrid(std::size_t count, Generator& generator) {
    CartesianArray layout(count);
    for (CartesianVector& v : layout) {
        const auto step = [&] { return static_cast<float>(generator() % 5) - 2.f; };
        v = {step(), step(), step()};
    }
    return layout;
}

/// A full equator, whose arcs all lie in one plane, and a few above it.
CartesianArray Equator(std::size_t count, Generator& generator) {
    CartesianArray layout(count);
    const std::size_t raised = 1 + generator() % 3;
    for (std::size_t i = 0; i < count; ++i) {
        const float azimuthDeg = 360.f / static_cast<float>(count) * static_cast<float>(i);
        layout[i] = tav::FromNavigational(azimuthDeg, i < raised ? 50.f : 0.f, 1.f);
    }
    return layout;
}

/// Clusters narrower and wider than the tolerance of crossings, and arcs of nearly a half circle.
CartesianArray Clusters(std::size_t count, Generator& generator) {
    CartesianArray layout = InCube(count, generator);
    for (std::size_t i = 1; i < count; ++i) {
        if (generator() % 2 == 0) continue;
        const CartesianVector& other = layout[generator() % i];
        const float sign = generator() % 3 == 0 ? -1.f : 1.f;
        const float width = std::pow(10.f, -1.f - 2.5f * std::fabs(Uniform(generator)));
        layout[i] = {sign * other.x + width * Uniform(generator),
                     sign * other.y + width * Uniform(generator),
                     sign * other.z + width * Uniform(generator)};
    }
    return layout;
}

/// Distances from where squares underflow to where they overflow.
CartesianArray ExtremeDistances(std::size_t count, Generator& generator) {
    CartesianArray layout = InCube(count, generator);
    for (CartesianVector& v : layout) {
        const float factor = std::pow(10.f, 28.f * Uniform(generator) * Uniform(generator));
        v = {v.x * factor, v.y * factor, v.z * factor};
    }
    return layout;
}

struct Family {
    const char* name;
    CartesianArray (*make)(std::size_t count, Generator& generator);
};
// clang-format off
constexpr Family kFamilies[] = {
    {"InCube", InCube}, {"OnSphere", OnSphere}, {"Rings", Rings}, {"OnGrid", OnGrid},
    {"Equator", Equator}, {"Clusters", Clusters}, {"ExtremeDistances", ExtremeDistances},
};
// clang-format on

/// Equal to the last bit; what is no number, as extreme distances make it, equals itself.
bool Same(const Triplet& a, const Triplet& b) {
    return a.speakers == b.speakers &&
           std::ranges::equal(a.inverse, b.inverse, [](float x, float y) {
               return x == y || (std::isnan(x) && std::isnan(y));
           });
}

class TriangulationOf : public testing::TestWithParam<Family> {};

TEST_P(TriangulationOf, EqualsThePlainProcedure) {
    constexpr std::array<std::size_t, 22> kCounts{0,  1,  2,  3,  4,  4,  5,  6,  7,  8,  9,
                                                  10, 12, 12, 14, 16, 20, 24, 26, 30, 36, 60};
    unsigned seed = 0;
    for (const std::size_t count : kCounts) {
        Generator generator(++seed);
        const CartesianArray layout = GetParam().make(count, generator);
        EXPECT_TRUE(std::ranges::equal(Triangulate(layout), Plain::Triangulate(layout), Same))
            << count << " loudspeakers, seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts,
                         TriangulationOf,
                         testing::ValuesIn(kFamilies),
                         [](const auto& test) { return std::string(test.param.name); });

using Corners = std::set<std::uint16_t>;

/// The triplets without their order.
std::set<Corners> Faces(const tav::Vector<Triplet>& triplets) {
    std::set<Corners> faces;
    for (const Triplet& t : triplets) faces.insert(Corners(t.speakers.begin(), t.speakers.end()));
    return faces;
}

TEST(Triangulation, CoversTheSphereOnce) {
    // Euler: a closed surface of triangles over n corners has 2 n - 4 of them, and each of its
    // edges belongs to two.
    Generator generator(1);
    for (const std::size_t count : {4U, 6U, 8U, 16U, 32U, 40U}) {
        const auto triplets = Triangulate(OnSphere(count, generator));
        EXPECT_EQ(triplets.Size(), 2 * count - 4);
        std::multiset<std::pair<int, int>> edges;
        for (const Triplet& t : triplets) {
            const auto [a, b, c] = t.speakers;
            for (const auto& edge : {std::pair<int, int>(a, b), {a, c}, {b, c}}) {
                edges.insert(edge);
            }
        }
        for (const auto& edge : edges) EXPECT_EQ(edges.count(edge), 2U);
    }
}

TEST(Triangulation, RaisesTheThresholdForLargeLayouts) {
    // 182 loudspeakers have just under a million triples. Those of an even layout of 250 need the
    // threshold 0.25, which is about what its faces are worth: some are lost.
    const auto quality = [](const CartesianArray& l, const Triplet& t) {
        const Ray a = MakeRay(l[t.speakers[0]]);
        const Ray b = MakeRay(l[t.speakers[1]]);
        const Ray c = MakeRay(l[t.speakers[2]]);
        return std::fabs(Dot(UnitNormal(a.v, b.v), c.v)) /
               (AngleBetween(a, b) + AngleBetween(a, c) + AngleBetween(b, c));
    };
    const auto least = [&](const CartesianArray& layout, const tav::Vector<Triplet>& triplets) {
        float q = 1.f;
        for (const Triplet& t : triplets) q = std::min(q, quality(layout, t));
        return q;
    };
    Generator generator(5);
    const CartesianArray below = InCube(182, generator);
    const CartesianArray above = OnSphere(250, generator);
    EXPECT_LT(least(below, Triangulate(below)), 0.05f);
    const float leastAbove = least(above, Triangulate(above));
    EXPECT_GT(leastAbove, 0.25f);
    EXPECT_LT(leastAbove, 0.252f);
}

TEST(Triangulation, RemovesTheLongerOfTwoCrossingArcs) {
    // The foot is a rhombus whose short diagonal stays; seen from every order of its corners.
    const std::array<CartesianVector, 4> rhombus{
        {{0.8f, 0.f, 1.f}, {-0.8f, 0.f, 1.f}, {0.f, 0.4f, 1.f}, {0.f, -0.4f, 1.f}}};
    std::array<std::uint16_t, 4> order{0, 1, 2, 3};
    do {
        CartesianArray layout(4);
        for (std::size_t i = 0; i < 4; ++i) layout[order[i]] = rhombus[i];
        EXPECT_EQ(Faces(Triangulate(layout)), (std::set<Corners>{{order[0], order[2], order[3]},
                                                                 {order[1], order[2], order[3]}}));
    } while (std::ranges::next_permutation(order).found);
}

TEST(Triangulation, PrefersTheLaterOfEqualArcs) {
    // A square: both diagonals are equally long. The pair found later, 1-3, removes 0-2.
    const CartesianArray square{{1, 1, 1}, {-1, 1, 1}, {-1, -1, 1}, {1, -1, 1}};
    EXPECT_EQ(Faces(Triangulate(square)), (std::set<Corners>{{0, 1, 3}, {1, 2, 3}}));
}

TEST(Triangulation, MeasuresFromTheOriginByAzimuth) {
    const Ray origin = MakeRay({0, 0, 0});
    const Ray left = MakeRay({-2, 0, 5});
    EXPECT_FLOAT_EQ(AngleBetween(origin, left), 3.1415927f);
    EXPECT_FLOAT_EQ(AngleBetween(left, origin), 3.1415927f);
    EXPECT_EQ(AngleBetween(origin, origin), 0.f);
    EXPECT_FLOAT_EQ(AngleBetween(MakeRay({0, 3, 0}), left), 1.5707964f);
}

TEST(InverseOfColumns, GivesTheWeightsOfASum) {
    Generator generator(11);
    const CartesianArray l = InCube(3, generator);
    const auto m = InverseOfColumns(l[0], l[1], l[2]);
    const CartesianVector p{0.5f * l[0].x + 2.f * l[1].x - 3.f * l[2].x,
                            0.5f * l[0].y + 2.f * l[1].y - 3.f * l[2].y,
                            0.5f * l[0].z + 2.f * l[1].z - 3.f * l[2].z};
    EXPECT_NEAR(Dot({m[0], m[1], m[2]}, p), 0.5f, 1e-5f);
    EXPECT_NEAR(Dot({m[3], m[4], m[5]}, p), 2.f, 1e-5f);
    EXPECT_NEAR(Dot({m[6], m[7], m[8]}, p), -3.f, 1e-5f);
    EXPECT_EQ(InverseOfColumns({1, 0, 0}, {0, 1, 0}, {1, 1, 0}), (std::array<float, 9>{}));
}

}  // namespace
}  // namespace Quilo
