// SPDX-License-Identifier: MIT
#include "math/VelkDspSpherePoints.h"

#include "math/VelkDspHoaEncodingVector.h"
#include "reference/PlainHarmonics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>

namespace tav {
namespace {

constexpr double kRadians = std::numbers::pi / 180;

std::array<double, 3> PointOf(const SphereDirection& direction) {
    const double azimuth = kRadians * direction.azimuthDeg,
                 height = kRadians * direction.elevationDeg;
    return {std::sin(azimuth) * std::cos(height), std::cos(azimuth) * std::cos(height),
            std::sin(height)};
}

double Cosine(const SphereDirection& a, const SphereDirection& b) {
    const auto p = PointOf(a), q = PointOf(b);
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

double SmallestAngleDeg(std::span<const SphereDirection> directions) {
    double cosine = -1;
    for (std::size_t a = 0; a < directions.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b)
            cosine = std::max(cosine, Cosine(directions[a], directions[b]));
    }
    return std::acos(std::min(cosine, 1.0)) / kRadians;
}

/// Mean square of all orthonormal harmonics of a degree over the points, by the addition theorem.
double Quadrature(std::span<const SphereDirection> directions, int degree) {
    double sum = 0;
    for (const SphereDirection& a : directions) {
        for (const SphereDirection& b : directions) {
            sum +=
                std::legendre(static_cast<unsigned>(degree), std::clamp(Cosine(a, b), -1.0, 1.0));
        }
    }
    return sum / static_cast<double>(directions.size() * directions.size());
}

TEST(SphereSets, AreWhatTheirFiguresSay) {
    for (const SphereSet& set : SphereSets()) {
        SCOPED_TRACE(std::string(set.name));
        EXPECT_NEAR(SmallestAngleDeg(set.directions), set.smallestAngleDeg, 1e-3);
        for (int degree = 1; degree <= set.designDegree; ++degree) {
            EXPECT_NEAR(Quadrature(set.directions, degree), 0, 1e-14) << degree;
        }
        EXPECT_GT(Quadrature(set.directions, set.designDegree + 1), 1e-10);
        const std::string name(set.name);
        if (name.starts_with("sphere-")) {
            EXPECT_EQ(std::stoul(name.substr(7)), set.directions.size());
        }
        // Left before right, and its mirror image.
        for (std::size_t k = 0; k < set.directions.size(); ++k) {
            const double azimuth = set.directions[k].azimuthDeg;
            if (azimuth >= 0) continue;
            EXPECT_EQ(set.directions[k + 1].azimuthDeg, -azimuth);
            EXPECT_EQ(set.directions[k + 1].elevationDeg, set.directions[k].elevationDeg);
        }
    }
}

TEST(SphereSets, OfTheSolidsHaveTheirNeighbours) {
    const std::pair<std::string, long> solids[] = {
        {"tetrahedron", 3}, {"octahedron", 4}, {"icosahedron", 5}, {"dodecahedron", 3}};
    for (const auto& [name, numNeighbours] : solids) {
        const auto* set = &*std::ranges::find(SphereSets(), name, &SphereSet::name);
        for (const SphereDirection& a : set->directions) {
            const double edge = std::cos(kRadians * (set->smallestAngleDeg + 0.01));
            EXPECT_EQ(std::ranges::count_if(set->directions,
                                            [&](const SphereDirection& b) {
                                                return Cosine(a, b) > edge && Cosine(a, b) < 0.999;
                                            }),
                      numNeighbours)
                << name;
        }
    }
}

/// A design of twice the order is what makes channels of an ambisonic field independent.
TEST(SphereSets, MakeHarmonicsOrthonormal) {
    const auto* set = &*std::ranges::find(SphereSets(), "sphere-60", &SphereSet::name);
    ASSERT_GE(set->designDegree, 8);
    constexpr unsigned kOrder = 4;
    HoaEncodingVector encoding(kOrder, 3, SphericalHarmonic::Normalization::N3D);
    const std::size_t numChannels = encoding.NumChannels();
    std::vector<double> products(numChannels * numChannels);
    Vector<double> gains;
    for (const SphereDirection& direction : set->directions) {
        const auto point = PointOf(direction);
        encoding.Compute({static_cast<float>(point[0]), static_cast<float>(point[1]),
                          static_cast<float>(point[2])},
                         gains);
        for (std::size_t a = 0; a < numChannels; ++a) {
            for (std::size_t b = 0; b < numChannels; ++b) {
                products[a * numChannels + b] += gains[a] * gains[b] / 60;
            }
        }
    }
    for (std::size_t a = 0; a < numChannels; ++a) {
        for (std::size_t b = 0; b < numChannels; ++b) {
            EXPECT_NEAR(products[a * numChannels + b], a == b ? 1 : 0, 1e-6) << a << " " << b;
        }
    }
}

TEST(FibonacciGrid, IsEvenForAnyNumberOfPoints) {
    EXPECT_TRUE(FibonacciGrid(0).empty());
    for (const std::size_t count : {1u, 2u, 17u, 48u, 250u}) {
        const auto grid = FibonacciGrid(count);
        ASSERT_EQ(grid.size(), count);
        for (const SphereDirection& direction : grid) {
            EXPECT_TRUE(direction.azimuthDeg > -180 && direction.azimuthDeg <= 180);
        }
        if (count < 17) continue;
        // Known of this lattice: the closest pair is some 3.1 / sqrt(n) apart.
        EXPECT_GT(kRadians * SmallestAngleDeg(grid), 3.0 / std::sqrt(static_cast<double>(count)));
        EXPECT_LT(Quadrature(grid, 1), 1 / static_cast<double>(count * count));
    }
}

}  // namespace
}  // namespace tav
