// SPDX-License-Identifier: MIT
#include "laws/QuiloKnnLaw.h"

#include "reference/RandomPoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Quilo {
namespace {

using Gains = tav::Vector<float>;

double DistanceBetween(const tav::CartesianVector& a, const tav::CartesianVector& b) {
    const auto difference = [](float p, float q) {
        return static_cast<double>(p) - static_cast<double>(q);
    };
    return std::hypot(difference(a.x, b.x), difference(a.y, b.y), difference(a.z, b.z));
}

TEST(KnnLaw, EqualsASortInDoublePrecisionOverRandomLayouts) {
    std::mt19937 generator(2);
    for (int n = 0; n < 3000; ++n) {
        const auto layout = Tests::RandomLayout(generator, 1 + generator() % 60, 5.f);
        KnnLaw law(layout);
        const std::size_t size = layout.Size();
        const std::size_t k = 1 + generator() % 8;
        const auto p = n % 10 == 0 ? layout[0] : Tests::RandomPoint(generator, 6.f);

        std::vector<double> distances(size);
        std::ranges::transform(layout, distances.begin(),
                               [&](const auto& s) { return DistanceBetween(p, s); });
        std::vector<std::size_t> order(size);
        std::iota(order.begin(), order.end(), 0);
        std::ranges::sort(order, {}, [&](std::size_t i) { return distances[i]; });
        order.resize(std::min(k, size));
        std::vector<double> expected(size + 1);
        double energy = 0.0;
        for (const std::size_t i : order) {
            expected[i] = 1.0 / std::max(distances[i], 1e-10);
            energy += expected[i] * expected[i];
        }
        Gains gains(size + 1, 9.f);
        law.Gains(p, static_cast<unsigned>(k), gains);
        for (std::size_t i = 0; i <= size; ++i) {
            ASSERT_NEAR(static_cast<double>(gains[i]), expected[i] / std::sqrt(energy), 3e-6)
                << n << " " << i;
        }
    }
}

TEST(KnnLaw, IsPlanarWhereLoudspeakersAreLevel) {
    struct Row {
        tav::CartesianArray layout;
        bool isPlanar;
    };
    const Row rows[] = {{{}, true},
                        {{{0, 0, 0}, {0, 2, 0.0034f}, {9, 0, -0.015f}}, true},
                        {{{0, 2, 0}, {0, 2, 0.0036f}}, false},
                        {{{9, 0, -0.017f}}, false}};
    for (const Row& row : rows) EXPECT_EQ(KnnLaw(row.layout).IsPlanar(), row.isPlanar);
}

}  // namespace
}  // namespace Quilo
