// SPDX-License-Identifier: MIT
// The coordinate formats in which positions arrive from users.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspSpherical.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tav {

/// Format keywords and how each of them sets or changes a position.
class Coordinates {
public:
    enum class Format : std::int32_t {
        Xyz,
        Xy,
        AddX,
        AddY,
        AddZ,
        Ade,
        Aed,
        Ae,
        Ad,
        Az,
        Azim,
        AddAzim,
        Elev,
        AddElev,
        Dist,
        AddDist,
        MulDist,
        Quilo3,
        Wfs,
        X,
        Y,
        Z,
        None
    };

    /// The keyword; "" for a value outside the enumeration.
    static std::string_view FormatText(Format format) noexcept;
    /// Exact match, case-sensitive; "none" is not accepted.
    static std::optional<Format> ParseFormat(std::string_view keyword) noexcept;
    /// Number of values of a position in this format, 0 to 3.
    static unsigned NumValues(Format format) noexcept;

    /// Sets or changes `position`. Returns false, with nothing changed, if there are too few
    /// values, a needed value is not finite (pass NaN for an atom that is no number), the new
    /// position is not finite, or the format is none. Surplus values are ignored.
    /// Thread: any.  Throws: nothing.
    static bool Apply(CartesianVector& position,
                      Format format,
                      std::span<const float> values) noexcept;
};

}  // namespace tav
