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

/// The gains of one direction are contiguous, in ACN order, so that moving a source reads one piece
/// of memory. The table never changes, so encodings can share it. It takes 4 bytes x 181 x 361 for
/// each channel, 59 MB at order 14.
/// Thread: any.
class HoaLookupTable {
public:
    static constexpr std::size_t kNumElevations = 181;  ///< -90 .. 90 degrees
    static constexpr std::size_t kNumAzimuths = 361;    ///< navigational, 0 .. 360 degrees

    /// The shared table of these three, made now unless one exists. Throws: std::bad_alloc.
    static std::shared_ptr<const HoaLookupTable> Shared(
        unsigned order, unsigned dimension, SphericalHarmonic::Normalization normalization);

    /// Throws: std::bad_alloc.
    HoaLookupTable(unsigned order,
                   unsigned dimension,
                   SphericalHarmonic::Normalization normalization);

    /// The index of a direction in the table.
    /// @param direction  finite
    static std::size_t IndexOf(const CartesianVector& direction) noexcept;
    /// The gains of all channels for an index.
    std::span<const float> Gains(std::size_t index) const noexcept { return gains_.Row(index); }

private:
    Matrix<float> gains_;  // kNumElevations * kNumAzimuths x channels
};

}  // namespace tav
