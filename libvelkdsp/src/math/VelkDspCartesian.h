// SPDX-License-Identifier: MIT
// Cartesian positions: right-handed, x right, y front, z up.
#pragma once

#include "math/VelkDspVector.h"

#include <cmath>

namespace tav {

/// A point in the unit of the loudspeaker layout (usually metres), seen from the listener.
struct CartesianVector {
    float x = 0;
    float y = 0;
    float z = 0;

    friend bool operator==(const CartesianVector&, const CartesianVector&) = default;
};

/// An ordered set of positions: a loudspeaker layout, the sources.
using CartesianArray = Vector<CartesianVector>;

inline bool IsFinite(const CartesianVector& v) noexcept {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace tav
