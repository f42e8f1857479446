// SPDX-License-Identifier: MIT
#include "laws/QuiloSpcapLaw.h"

#include "kernels/VelkDspSpeakerKernels.h"
#include "math/VelkDspSpherical.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Quilo {
namespace {

using Gains = tav::Vector<float>;

Gains GainsOf(const tav::CartesianArray& layout, const tav::CartesianVector& p, float spread) {
    SpcapLaw law(tav::BestKernels<tav::SpeakerKernels>().gainsByAngle);
    law.SetSpeakers(layout);
    Gains gains(layout.Size(), 9.f);
    law.Gains(p, spread, gains);
    return gains;
}

TEST(SpcapLaw, EqualsTheLawInDoublePrecisionOverRandomLayouts) {
    std::mt19937 generator(3);
    for (int n = 0; n < 3000; ++n) {
        const auto layout = Tests::RandomLayout(generator, 2 + generator() % 40, 3.f);
        const auto p = Tests::RandomPoint(generator, 3.f);
        const float spread = n % 4 == 0 ? 0.f : 50.f + 50.f * Tests::Uniform(generator);
        const double exponent = 1.0 - 0.01 * static_cast<double>(spread);
        const auto azimuth = [](const auto& v) {
            return std::atan2(static_cast<double>(v.y), static_cast<double>(v.x));
        };
        std::vector<double> expected;
        double energy = 0.0;
        bool isOpposite = false;  // 0^0 and its neighbourhood are no place to compare
        for (const auto& s : layout) {
            double density = 0.0;
            for (const auto& t : layout) density += 0.5 + 0.5 * std::cos(azimuth(s) - azimuth(t));
            const double base = 1.0 + std::cos(azimuth(s) - azimuth(p));
            isOpposite = isOpposite || base < 1e-5;
            expected.push_back(0.5 * std::pow(base, exponent) / density);
            energy += expected.back() * expected.back();
        }
        if (isOpposite) continue;
        const Gains gains = GainsOf(layout, p, spread);
        for (std::size_t k = 0; k < layout.Size(); ++k) {
            ASSERT_NEAR(static_cast<double>(gains[k]), expected[k] / std::sqrt(energy), 1e-6)
                << n << " " << k;
        }
    }
}

TEST(SpcapLaw, KeepsItsEnergyAtItsEnds) {
    const auto at = [](float azimuth) { return tav::FromNavigational(azimuth, 0.f, 1.f); };
    const float half = std::sqrt(0.5f);
    struct Row {
        const char* name;
        tav::CartesianArray layout;
        tav::CartesianVector source;
        float spread;
        std::vector<float> gains;
    };
    const Row rows[] = {
        {"both sides of the source", {at(90), at(-90)}, at(0), 0, {half, half}},
        {"one loudspeaker behind", {at(180)}, at(0), 0, {1}},
        {"opposite loudspeakers", {at(90), at(-90)}, at(90), 95, {1, 0}},
        {"all opposite", {at(180), at(180)}, at(0), 30, {half, half}},
        {"spread all round", {at(0), at(180)}, at(0), 100, {half, half}},
        {"at the listener", {{0, 0, 0}, {0, 0, 1}}, {0, 0, 0}, 0, {half, half}},
        {"a negative zero points to the left", {at(90), at(-90)}, {-0.f, 0, 0}, 0, {0, 1}},
        {"nobody", {}, at(0), 0, {}},
    };
    for (const Row& row : rows) {
        const Gains gains = GainsOf(row.layout, row.source, row.spread);
        for (std::size_t k = 0; k < row.gains.size(); ++k) {
            EXPECT_NEAR(gains[k], row.gains[k], 1e-6f) << row.name << " " << k;
        }
    }
}

}  // namespace
}  // namespace Quilo
