// SPDX-License-Identifier: MIT
#include "math/VelkDspKdTreeHelper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace tav {
namespace {

struct TreeCase {
    std::size_t numPoints;
    int reach;  // whole coordinates from -reach to reach; a small one makes ties and duplicates
    std::size_t treeFrom;
};

class KdTreeHelperCase : public testing::TestWithParam<TreeCase> {
protected:
    CartesianVector Random() {
        std::uniform_int_distribution<int> coordinate(-GetParam().reach, GetParam().reach);
        const auto next = [&] { return static_cast<float>(coordinate(random_)); };
        return {next(), next(), next()};
    }

    std::mt19937 random_{3};
};

long SquaredDistance(const CartesianVector& a, const CartesianVector& b) {
    const auto square = [](float difference) {
        return static_cast<long>(difference) * static_cast<long>(difference);
    };
    return square(a.x - b.x) + square(a.y - b.y) + square(a.z - b.z);
}

// Whole numbers: distances are exact, and so is the order of the oracle.
TEST_P(KdTreeHelperCase, FindsWhatSortingAllPointsFinds) {
    const std::size_t n = GetParam().numPoints;
    CartesianArray points(n);
    for (CartesianVector& point : points) point = Random();
    const KdTreeHelper helper(points, GetParam().treeFrom);
    ASSERT_EQ(helper.Size(), n);
    std::vector<std::size_t> indices{99};
    std::vector<float> distances{99.f};
    for (int round = 0; round < 100; ++round) {
        const CartesianVector query = Random();
        std::vector<std::pair<long, std::size_t>> sorted;
        for (std::size_t k = 0; k < n; ++k) {
            sorted.emplace_back(SquaredDistance(points[k], query), k);
        }
        std::ranges::sort(sorted);
        ASSERT_EQ(helper.NearestIndex(query), sorted.front().second);
        for (const std::size_t k : {std::size_t{1}, std::size_t{2}, n / 2, n - 1}) {
            if (k == 0 || (k >= n && k != 1)) continue;
            helper.Nearest(query, k, indices, distances);
            ASSERT_EQ(indices.size(), k);
            ASSERT_EQ(distances.size(), k);
            for (std::size_t i = 0; i < k; ++i) {
                ASSERT_EQ(indices[i], sorted[i].second) << k << " nearest, " << i;
                ASSERT_FLOAT_EQ(distances[i], std::sqrt(static_cast<float>(sorted[i].first)));
            }
        }
        for (const std::size_t k : {n, n + 1, n + 1000}) {
            if (k <= 1) continue;
            helper.Nearest(query, k, indices, distances);
            ASSERT_EQ(indices.size(), n);
            ASSERT_EQ(distances.size(), n);
            for (const auto& [squared, index] : sorted) {
                ASSERT_EQ(indices[index], index);
                ASSERT_FLOAT_EQ(distances[index], std::sqrt(static_cast<float>(squared)));
            }
        }
        helper.Nearest(query, 0, indices, distances);
        ASSERT_TRUE(indices.empty() && distances.empty());
    }
}

// clang-format off
constexpr TreeCase kScansAndTrees[] = {
    {1, 10, 1}, {2, 0, 1}, {9, 1, 1}, {23, 2, KdTreeHelper::kTreeFrom},
    {24, 2, KdTreeHelper::kTreeFrom}, {100, 0, 1}, {200, 1, 1}, {200, 1, 1000}, {500, 1000, 1},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(ScansAndTrees, KdTreeHelperCase, testing::ValuesIn(kScansAndTrees));

TEST(KdTreeHelper, WithoutPointsNothingIsFound) {
    std::vector<std::size_t> indices{1};
    std::vector<float> distances{1.f};
    for (const std::size_t k : {0u, 1u, 2u}) {
        KdTreeHelper(CartesianArray(), 0).Nearest({}, k, indices, distances);
        EXPECT_TRUE(indices.empty() && distances.empty());
    }
}

}  // namespace
}  // namespace tav
