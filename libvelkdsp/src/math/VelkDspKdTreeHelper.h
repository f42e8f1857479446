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

/// The coordinates of a point, for code that indexes them.
template <std::size_t N>
using NPoint = std::array<float, N>;

/// Finds the points nearest to a query, as exactly as a scan over all of them would: squared
/// distances in 32 bits, ties to the lower index. Few points are scanned, many stand in a k-d tree.
/// Thread: control; queries of a finished helper may run in several threads.
class KdTreeHelper {
public:
    /// From this number of points on the tree is faster (measured by KdTreeHelperBenchmark).
    static constexpr std::size_t kTreeFrom = 24;

    KdTreeHelper() = default;
    /// @param points  finite
    explicit KdTreeHelper(const CartesianArray& points, std::size_t treeFrom = kTreeFrom);

    std::size_t Size() const noexcept { return indices_.size(); }

    /// The k points nearest to `query` with their Euclidean distances, nearest first. If k is at
    /// least the number of points, and not 1, these are all points in their own order.
    /// @param query  finite
    /// @param indices, distances  overwritten; with a capacity of k, nothing allocates
    void Nearest(const CartesianVector& query,
                 std::size_t k,
                 std::vector<std::size_t>& indices,
                 std::vector<float>& distances) const;

    /// The index of the one point nearest to `query`. Nothing allocates.
    /// @pre  Size() is not 0      @param query  finite
    std::size_t NearestIndex(const CartesianVector& query) const noexcept;

private:
    /// An inner node splits the points [first, last) into halves at `split`. Its lower child is the
    /// next node of the array, its upper child is at `upper`. A leaf has upper 0.
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

    static constexpr std::size_t kRun = 16;  // points computed together; largest size of a leaf

    void Build(std::span<Entry> entries, std::size_t first);
    /// Of kRun points from `first` on; those beyond the last point mean nothing.
    std::array<float, kRun> SquaredDistances(const NPoint<3>& query,
                                             std::size_t first) const noexcept;

    // In the order of the tree; without a tree in that of the points.
    std::array<std::vector<float>, 3> coordinates_;  // padded by kRun
    std::vector<std::uint32_t> indices_;
    std::vector<Node> nodes_;
};

}  // namespace tav
