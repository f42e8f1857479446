// SPDX-License-Identifier: MIT
// The convex hull of a layout seen from above.
#pragma once

#include "math/VelkDspCartesian.h"

#include <optional>

namespace tav {

struct Point2D {
    float x = 0;
    float y = 0;
};

/// Hull of the x and y of a set of points, with tests against it.
class ConvexHull2D {
public:
    /// The hull of no points, which contains everything.
    ConvexHull2D() = default;
    /// Points that are not finite are ignored. Fewer than two different points give no vertices,
    /// points on one line the two outermost ones.
    explicit ConvexHull2D(const CartesianArray& points);

    /// The corners, clockwise seen from above, from the one with the smallest y (then x) on. Each
    /// is one of the points, height included (of points above each other the lowest); no three of
    /// them are on one line.
    const CartesianArray& Vertices() const noexcept { return vertices_; }

    /// Points on an edge are inside. A hull of two vertices contains the line through them, one
    /// without vertices contains every point.
    bool Contains(Point2D point) const noexcept;

    /// The vertex nearest to `point` in space, the first of several; none without any.
    std::optional<CartesianVector> NearestVertex(const CartesianVector& point) const noexcept;

private:
    CartesianArray vertices_;
};

}  // namespace tav
