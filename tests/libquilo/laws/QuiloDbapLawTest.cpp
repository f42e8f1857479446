// SPDX-License-Identifier: MIT
#include "laws/QuiloDbapLaw.h"

#include "kernels/VelkDspSpeakerKernels.h"
#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quilo {
namespace {

using tav::CartesianVector;
using Gains = tav::Vector<float>;

double Square(float a, float b) {
    const double difference = static_cast<double>(a) - static_cast<double>(b);
    return difference * difference;
}

TEST(DbapGains, EqualTheLawInDoublePrecisionOverRandomLayouts) {
    std::mt19937 generator(1);
    for (int n = 0; n < 4000; ++n) {
        const auto layout = Tests::RandomLayout(generator, 1 + generator() % 40, 10.f);
        const SpeakerCloud cloud(layout);
        const CartesianVector p = Tests::RandomPoint(generator, 12.f);
        const std::array<float, 3> b{std::fabs(Tests::Uniform(generator)),
                                     std::fabs(Tests::Uniform(generator)), n % 7 == 0 ? 1.f : 0.5f};
        const bool isPlanar = n % 2 == 0;
        const bool isOmni = n % 3 != 0;
        const DbapMetric metric =
            isOmni ? OmniMetric(b[0], p, cloud.centroid, isPlanar) : DirectionalMetric(b);
        CartesianVector c;
        for (const auto& s : layout) {
            const auto count = static_cast<float>(layout.Size());
            c = {c.x + s.x / count, c.y + s.y / count, c.z + s.z / count};
        }
        const double height = isPlanar ? 0.0 : 1.0;
        const double toMiddle = Square(p.x, c.x) + Square(p.y, c.y) + height * Square(p.z, c.z);
        std::vector<double> expected;
        double energy = 0.0;
        for (const auto& s : layout) {
            const double x = Square(p.x, s.x), y = Square(p.y, s.y), z = Square(p.z, s.z);
            const auto share = [&](std::size_t i) { return std::pow(1.0 - double{b[i]}, 2.0); };
            const double omni =
                (1.0 - double{b[0]}) * (x + y + height * z) + double{b[0]} * toMiddle;
            const double d = isOmni ? omni : share(0) * x + share(1) * y + share(2) * z;
            expected.push_back(1.0 / std::sqrt(d + 1e-10));
            energy += 1.0 / (d + 1e-10);
        }
        Gains gains(layout.Size() + 2, 9.f);
        DbapGains(cloud.rows, p, metric, tav::BestKernels<tav::SpeakerKernels>().gainsByDistance,
                  gains);
        for (std::size_t k = 0; k < layout.Size(); ++k) {
            // Differences to a loudspeaker 10 m away are right to 1e-6 m; so is its distance.
            const double e = expected[k] / std::sqrt(energy);
            ASSERT_NEAR(double{gains[k]}, e, 1e-5 * e + 1e-7) << n << " " << k;
        }
        EXPECT_EQ(gains[layout.Size()] + gains[layout.Size() + 1], 0.f);
    }
}

TEST(VdbapWeights, CrossfadeRoundTheRadius) {
    struct Row {
        float distance, radius, vectorBase;
    };
    for (const Row& row : {Row{1.3f, 2, 0}, Row{2.7f, 2, 1}, Row{2, 2, 0.5f}, Row{1.7f, 2, 0.25f},
                           Row{0, 0, 0}, Row{1, 0, 1}}) {
        const VdbapWeights weights = VdbapWeightsAt(row.distance, row.radius);
        EXPECT_NEAR(weights.vectorBase, row.vectorBase, 1e-6f);
        EXPECT_NEAR(weights.vectorBase + weights.distanceBased, 1.f, 1e-7f);
    }
}

}  // namespace
}  // namespace Quilo
