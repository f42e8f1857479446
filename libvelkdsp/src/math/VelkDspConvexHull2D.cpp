// SPDX-License-Identifier: MIT
#include "math/VelkDspConvexHull2D.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <tuple>
#include <vector>

namespace tav {
namespace {

/// Above 0 if c is to the left of the line from a to b, 0 if it is on it. In double, where
/// differences and products of floats of similar size are exact, so that collinear points are
/// recognised.
double Turn(const CartesianVector& a, const CartesianVector& b, const CartesianVector& c) noexcept {
    const auto difference = [](float to, float from) {
        return static_cast<double>(to) - static_cast<double>(from);
    };
    return difference(b.x, a.x) * difference(c.y, a.y) -
           difference(b.y, a.y) * difference(c.x, a.x);
}

bool IsBelow(const CartesianVector& a, const CartesianVector& b) noexcept {
    return std::tie(a.y, a.x, a.z) < std::tie(b.y, b.x, b.z);
}

std::vector<CartesianVector> DistinctFromBelow(const CartesianArray& points) {
    std::vector<CartesianVector> sorted;
    std::ranges::copy_if(points, std::back_inserter(sorted), IsFinite);
    std::ranges::sort(sorted, IsBelow);
    const auto same = [](const CartesianVector& a, const CartesianVector& b) {
        return a.x == b.x && a.y == b.y;
    };
    const auto repeated = std::ranges::unique(sorted, same);
    sorted.erase(repeated.begin(), repeated.end());
    return sorted;
}

/// The convex chain that runs clockwise from the first to the last point of `range`, both included.
template <class Range>
std::vector<CartesianVector> ClockwiseChain(Range&& range) {
    std::vector<CartesianVector> chain;
    for (const CartesianVector& point : range) {
        while (chain.size() >= 2 && Turn(chain[chain.size() - 2], chain.back(), point) >= 0) {
            chain.pop_back();
        }
        chain.push_back(point);
    }
    return chain;
}

}  // namespace

// A Graham scan in two halves, up the left side and down the right (Andrew's variant). Sorting by y
// instead of by angle needs no computed comparison, so no rounding.
ConvexHull2D::ConvexHull2D(const CartesianArray& points) {
    const std::vector<CartesianVector> sorted = DistinctFromBelow(points);
    if (sorted.size() < 2) return;
    std::vector<CartesianVector> corners = ClockwiseChain(sorted);
    const std::vector<CartesianVector> down = ClockwiseChain(std::views::reverse(sorted));
    // Without the ends of the second half, which are those of the first.
    corners.insert(corners.end(), down.begin() + 1, down.end() - 1);
    vertices_.Resize(corners.size());
    std::ranges::copy(corners, vertices_.begin());
}

bool ConvexHull2D::Contains(Point2D q) const noexcept {
    for (std::size_t i = 0; i < vertices_.Size(); ++i) {
        const CartesianVector& a = vertices_[i];
        const CartesianVector& b = vertices_[(i + 1) % vertices_.Size()];
        if ((b.x - a.x) * (q.y - a.y) - (b.y - a.y) * (q.x - a.x) > 0.f) return false;
    }
    return true;
}

std::optional<CartesianVector> ConvexHull2D::NearestVertex(
    const CartesianVector& q) const noexcept {
    if (vertices_.Empty()) return std::nullopt;
    const auto squaredDistance = [&q](const CartesianVector& v) {
        return (v.x - q.x) * (v.x - q.x) + (v.y - q.y) * (v.y - q.y) + (v.z - q.z) * (v.z - q.z);
    };
    return *std::ranges::min_element(vertices_, {}, squaredDistance);
}

}  // namespace tav
