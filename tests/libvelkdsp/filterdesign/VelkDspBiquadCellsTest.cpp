// SPDX-License-Identifier: MIT
#include "filterdesign/VelkDspBiquadCells.h"

#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace tav {
namespace {

/// Poles and zeros anywhere inside the unit circle, a gain of up to 20 dB either way.
BiquadCell RandomCell(std::mt19937& random) {
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    const auto pair = [&] {
        const double radius = 0.98 * std::sqrt(uniform(random));
        return std::pair(-2.0 * radius * std::cos(std::numbers::pi * uniform(random)),
                         radius * radius);
    };
    const auto [a1, a2] = pair();
    const auto [b1, b2] = pair();
    const double gain = std::pow(10.0, 2.0 * uniform(random) - 1.0);
    const auto asFloat = [](double v) { return static_cast<float>(v); };
    return {asFloat(gain), asFloat(gain * b1), asFloat(gain * b2), asFloat(a1), asFloat(a2)};
}

double ValueOf(const BiquadCell& c, double x) {
    const auto d = [](float v) { return static_cast<double>(v); };
    return (d(c.b0) + d(c.b1) * x + d(c.b2) * x * x) / (1.0 + d(c.a1) * x + d(c.a2) * x * x);
}

/// The transfer function at a real point inside the circle: it tells filters apart, not cells.
double ValueOf(const BiquadCells& cells, double x) {
    double value = 1.0;
    for (const BiquadCell& c : cells) value *= ValueOf(c, x);
    return value;
}

TEST(BiquadCells, SurviveEveryLayout) {
    std::mt19937 random(4);
    for (int round = 0; round < 250; ++round) {
        const BiquadCells cells{RandomCell(random), RandomCell(random), RandomCell(random),
                                RandomCell(random)};
        EXPECT_EQ(CellsFromTable(CellsToTable(cells)), cells);
        std::vector<double> memory = CellsToMemory(cells);
        for (std::size_t i = 0; i < memory.size(); ++i) memory[i] *= i < 6 ? -3.0 : 0.5;
        const BiquadCells file = CellsFromFile(CellsToFile(cells)), six = CellsFromMemory(memory);
        for (const double x : {-0.9, -0.3, 0.2, 0.8}) {
            const double expected = ValueOf(cells, x);
            EXPECT_NEAR(ValueOf(file, x) / expected, 1.0, 4e-6);
            EXPECT_NEAR(ValueOf(six, x) / expected, 1.0, 4e-6);
        }
        for (std::size_t c = 0; c < cells.size(); ++c) {
            EXPECT_NEAR(file[c].a1, cells[c].a1, 1e-6f);
            EXPECT_NEAR(file[c].b2 * cells[c].b0, cells[c].b2 * file[c].b0,
                        1e-6f * std::abs(file[c].b0 * cells[c].b0));
        }
    }
}

TEST(BiquadCells, SetsWithTheDenominatorFirstAreFound) {
    const std::vector<double> responses[] = {{0.5, -1.8, 1.1, -1.2, 0.6},
                                             {2.0, 0.3, 0.2, 0.1, 0.1}};
    std::vector<std::vector<double>> straight(std::begin(responses), std::end(responses));
    std::vector<std::vector<double>> exchanged;
    for (const auto& r : straight) exchanged.push_back({r[0], r[3], r[4], r[1], r[2]});
    EXPECT_EQ(CellSetFromFile(exchanged), CellSetFromFile(straight));
    EXPECT_FLOAT_EQ(CellSetFromFile(straight)[0][0].b1, -0.9f);
    straight[1][4] = 1.01;  // unstable as it is, and the first one is so exchanged
    EXPECT_THROW(CellSetFromFile(straight), Exception);
}

TEST(BiquadCells, RefuseWhatTheyCannotMean) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THROW(CellsFromMemory(std::vector<double>{1, 2, 3, 1, 5}), Exception);
    EXPECT_THROW(CellsFromMemory(std::vector<double>{1, 2, 3, 0, 5, 6}), Exception);
    EXPECT_THROW(CellsFromTable(std::vector<double>{1, 2, 3, nan, 5}), Exception);
    EXPECT_THROW(CellsFromFile(std::vector<double>{}), Exception);
    EXPECT_THROW(CellsToFile(BiquadCells{{0.f, 1.f, 0.f, 0.f, 0.f}}), Exception);
    EXPECT_FALSE(IsStable({1.f, 0.f, 0.f, 0.f, 1.f}));
    EXPECT_FALSE(IsStable({1.f, 0.f, 0.f, -1.5f, 0.5f}));
    EXPECT_TRUE(IsStable({1.f, 0.f, 0.f, -1.49f, 0.5f}));
}

}  // namespace
}  // namespace tav
