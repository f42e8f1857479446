// SPDX-License-Identifier: MIT
#include "laws/QuiloTriangulation.h"

#include "laws/QuiloDefaultLayouts.h"
#include "laws/QuiloTriangulationArcs.h"
#include "math/VelkDspSpherical.h"
#include "reference/PlainTriangulation.h"
#include "reference/RandomPoints.h"
#include "support/ByName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

namespace Quilo {
namespace {

using tav::CartesianArray;
using tav::CartesianVector;
using Generator = std::mt19937;
using Tests::Uniform;

CartesianArray InCube(std::size_t count, Generator& generator) {
    return Tests::RandomLayout(generator, count, 1.f);
}

CartesianArray OnSphere(std::size_t count, Generator&) {
    return DefaultSpeakers(LayoutKind::Periphonic, static_cast<unsigned>(count));
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

/// All within a few degrees, in every third layout nearly or exactly in one plane with the
/// listener.
CartesianArray OneCluster(std::size_t count, Generator& generator) {
    const float width = std::pow(10.f, -1.2f + 1.2f * Uniform(generator));
    const float flatness =
        generator() % 3 == 0 ? std::pow(10.f, -4.f + 4.f * Uniform(generator)) : 1;
    CartesianArray layout(count);
    for (CartesianVector& v : layout) {
        const float across = width * Uniform(generator);
        v = {across - 0.4f, 1.f + 0.3f * across, 0.5f + width * flatness * Uniform(generator)};
    }
    return layout;
}

/// Straight rows in front, which have one plane with the listener but for rounding, and others.
CartesianArray Lines(std::size_t count, Generator& generator) {
    CartesianArray layout = InCube(count, generator);
    const float slope = generator() % 2 == 0 ? 0.f : Uniform(generator);
    for (std::size_t i = 3; i < count; ++i) {
        const float along = 6.f * static_cast<float>(i) / static_cast<float>(count) - 3.f;
        layout[i] = {along, 2.f + slope * along, 0.5f + 0.3f * slope * along};
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
    {"InCube", InCube}, {"OnSphere", OnSphere}, {"OnGrid", OnGrid},
    {"Equator", Equator}, {"Clusters", Clusters}, {"OneCluster", OneCluster}, {"Lines", Lines},
    {"ExtremeDistances", ExtremeDistances},
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

INSTANTIATE_TEST_SUITE_P(Layouts, TriangulationOf, testing::ValuesIn(kFamilies), Tests::kByName);

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

}  // namespace
}  // namespace Quilo
