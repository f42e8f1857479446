// SPDX-License-Identifier: MIT
// Gains of an encoding for every whole degree of azimuth and elevation.
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspMatrix.h"
#include "math/VelkDspSphericalHarmonic.h"
#include "math/VelkDspVector.h"

#include <cstddef>
#include <memory>
#include <span>

namespace tav {

/// One table a channel, in ACN order. It never changes, so that encodings can share it: 4 bytes x
/// 181 x 361 a channel, 59 MB at order 14.
/// Thread: any.
class HoaLookupTable {
public:
    static constexpr std::size_t kNumElevations = 181;  ///< -90 .. 90 degrees
    static constexpr std::size_t kNumAzimuths = 361;    ///< navigational, 0 .. 360 degrees

    struct Channel {
        unsigned n = 0;
        int m = 0;
        SphericalHarmonic::Normalization normalization = SphericalHarmonic::Normalization::SN3D;
        Matrix<float> gains;  ///< kNumElevations x kNumAzimuths; a single one for (0, 0)
    };

    /// The table of these three, made now unless somebody has it already.  Throws: std::bad_alloc.
    static std::shared_ptr<const HoaLookupTable> Shared(
        unsigned order, unsigned dimension, SphericalHarmonic::Normalization normalization);

    /// Throws: std::bad_alloc.
    HoaLookupTable(unsigned order,
                   unsigned dimension,
                   SphericalHarmonic::Normalization normalization);

    /// Where a direction stands in the table of every channel but the first.
    /// @param direction  finite
    static std::size_t IndexOf(const CartesianVector& direction) noexcept;
    /// The gain of a channel at such a place.  @param channel  below NumChannels()
    float Gain(std::size_t channel, std::size_t index) const noexcept {
        return channels_[channel].gains.Data()[channel == 0 ? 0 : index];
    }

    unsigned Order() const { return order_; }
    unsigned Dimension() const { return dimension_; }
    std::span<const Channel> Channels() const { return {channels_.Data(), channels_.Size()}; }

private:
    unsigned order_;
    unsigned dimension_;
    Vector<Channel> channels_;
};

}  // namespace tav
