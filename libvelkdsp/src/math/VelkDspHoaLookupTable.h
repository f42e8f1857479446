// SPDX-License-Identifier: MIT
// Gains of an encoding for every whole degree of azimuth and elevation.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspMatrix.h"
#include "math/VelkDspSphericalHarmonic.h"

#include <cstddef>
#include <memory>
#include <span>

namespace tav {

/// The gains of one direction stand side by side, in ACN order: whoever moves a source reads one
/// stretch of memory instead of a place for each channel. The table never changes, so that
/// encodings can share it: 4 bytes x 181 x 361 a channel, 59 MB at order 14.
/// Thread: any.
class HoaLookupTable {
public:
    static constexpr std::size_t kNumElevations = 181;  ///< -90 .. 90 degrees
    static constexpr std::size_t kNumAzimuths = 361;    ///< navigational, 0 .. 360 degrees

    /// The table of these three, made now unless somebody has it already.  Throws: std::bad_alloc.
    static std::shared_ptr<const HoaLookupTable> Shared(
        unsigned order, unsigned dimension, SphericalHarmonic::Normalization normalization);

    /// Throws: std::bad_alloc.
    HoaLookupTable(unsigned order,
                   unsigned dimension,
                   SphericalHarmonic::Normalization normalization);

    /// Where a direction stands in the table.
    /// @param direction  finite
    static std::size_t IndexOf(const CartesianVector& direction) noexcept;
    /// The gains of all channels at such a place.
    std::span<const float> Gains(std::size_t index) const noexcept { return gains_.Row(index); }

private:
    Matrix<float> gains_;  // kNumElevations * kNumAzimuths x channels
};

}  // namespace tav
