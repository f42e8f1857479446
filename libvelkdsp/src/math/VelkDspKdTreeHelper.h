// SPDX-License-Identifier: MIT
// Nearest-neighbour queries over a fixed set of points in space.
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
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

    std::size_t Size() const noexcept { return indices_.size(); }

    /// The k points nearest to `query` with their Euclidean distances, nearest first. With k at or
    /// above the number of points (unless that is 1) all of them, in their own order.
    /// @param query  finite
    /// @param indices, distances  overwritten; nothing allocates where they have room for k
    void Nearest(const CartesianVector& query,
                 std::size_t k,
                 std::vector<std::size_t>& indices,
                 std::vector<float>& distances) const;

    /// The index of the one point nearest to `query`. Nothing allocates.
    /// Size() is not 0      @param query  finite
    std::size_t NearestIndex(const CartesianVector& query) const noexcept;

private:
    /// Inner nodes halve the points [first, last) at `split`; children follow in the array, the
    /// lower one at once and the upper one at `upper`. A leaf has upper 0.
    struct Node {
        std::uint32_t first;
        std::uint32_t last;
        std::uint32_t upper;
        std::uint32_t axis;
        float split;
    };
    struct Entry {
        NPoint<3> point;
        std::uint32_t index;
    };
    class Search;

    static constexpr std::size_t kRun = 16;  // points that are looked at together; most of a leaf

    void Build(std::span<Entry> entries, std::size_t first);
    /// Of the run from point `first` on; what is behind the last point means nothing.
    std::array<float, kRun> SquaredDistances(const NPoint<3>& query,
                                             std::size_t first) const noexcept;

    // In tree order; without a tree in their own.
    std::array<std::vector<float>, 3> coordinates_;  // a run longer than there are points
    std::vector<std::uint32_t> indices_;
    std::vector<Node> nodes_;
};

}  // namespace tav
