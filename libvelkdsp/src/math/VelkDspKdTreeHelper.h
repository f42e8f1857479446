// SPDX-License-Identifier: MIT
// Nearest-neighbour queries over a fixed set of points in space.
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tav {

/// A point by its coordinates, for code that walks them.
template <std::size_t N>
using NPoint = std::array<float, N>;

/// Finds the points nearest to a query, as exactly as a scan over all of them would: squared
/// distances in 32 bits, ties to the lower index. Few points are scanned, many stand in a k-d tree.
/// Thread: control; queries of a finished helper may run in several threads.
class KdTreeHelper {
public:
    /// From this many points on the tree is the faster way (measured by KdTreeHelperBenchmark).
    static constexpr std::size_t kTreeFrom = 24;

    KdTreeHelper() = default;
    /// @param points  finite
    explicit KdTreeHelper(const CartesianArray& points, std::size_t treeFrom = kTreeFrom);

    std::size_t Size() const noexcept { return points_.size(); }

    /// The k points nearest to `query` with their Euclidean distances, nearest first. With k at or
    /// above the number of points (unless that is 1) all of them, in their own order.
    /// @param query  finite
    /// @param indices, distances  overwritten; nothing allocates where they have room for k
    void Nearest(const CartesianVector& query,
                 std::size_t k,
                 std::vector<std::size_t>& indices,
                 std::vector<float>& distances) const;

private:
    /// Inner nodes halve points_[first, last) at `middle`; children follow in the array, the lower
    /// one at once and the upper one at `upper`. A leaf has upper 0.
    struct Node {
        std::uint32_t first;
        std::uint32_t last;
        std::uint32_t upper;
        std::uint32_t axis;
        float split;
    };
    struct Entry {
        NPoint<3> point;
        std::size_t index;
    };
    class Search;

    void Build(std::size_t first, std::size_t last);

    std::vector<Entry> points_;  // in tree order; without a tree in their own
    std::vector<Node> nodes_;
};

}  // namespace tav
