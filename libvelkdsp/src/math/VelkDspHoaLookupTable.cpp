// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaLookupTable.h"

#include "math/VelkDspHoaEncodingVector.h"
#include "math/VelkDspSpherical.h"

#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

namespace tav {

HoaLookupTable::HoaLookupTable(unsigned order,
                               unsigned dimension,
                               SphericalHarmonic::Normalization normalization)
    : gains_(kNumElevations * kNumAzimuths, SphericalHarmonic::NumChannels(order, dimension)) {
    HoaEncodingVector encoding(order, dimension, normalization);
    for (std::size_t row = 0; row < kNumElevations; ++row) {
        const float elevationDeg = static_cast<float>(row) - 90.f;
        for (std::size_t column = 0; column < kNumAzimuths; ++column) {
            const auto azimuthDeg = static_cast<float>(column);
            encoding.Compute(FromNavigational(azimuthDeg, elevationDeg, 1.f),
                             gains_.Row(row * kNumAzimuths + column));
        }
    }
}

std::shared_ptr<const HoaLookupTable> HoaLookupTable::Shared(
    unsigned order, unsigned dimension, SphericalHarmonic::Normalization normalization) {
    using Key = std::tuple<unsigned, unsigned, SphericalHarmonic::Normalization>;
    static std::mutex mutex;
    static std::map<Key, std::weak_ptr<const HoaLookupTable>> tables;
    const std::lock_guard lock(mutex);
    std::weak_ptr<const HoaLookupTable>& known = tables[{order, dimension, normalization}];
    std::shared_ptr<const HoaLookupTable> table = known.lock();
    if (!table) {
        // Not make_shared, which would keep the memory until the last weak_ptr is gone.
        table = std::shared_ptr<const HoaLookupTable>(
            std::make_unique<HoaLookupTable>(order, dimension, normalization));
        known = table;
    }
    return table;
}

std::size_t HoaLookupTable::IndexOf(const CartesianVector& direction) noexcept {
    // Scaled down where the squares of the coordinates would overflow; the direction does not
    // change.
    constexpr float kNearer = 1e-20f;
    const bool isFar = !std::isfinite(Distance(direction));
    const float scale = isFar ? kNearer : 1.f;
    const CartesianVector d{direction.x * scale, direction.y * scale, direction.z * scale};
    // Rounds to nearest, ties to even.
    const float column = std::nearbyint(Wrap360(NavigationalAzimuthDeg(d)));
    const float row = std::nearbyint(ElevationDeg(d)) + 90.f;
    return static_cast<std::size_t>(row) * kNumAzimuths + static_cast<std::size_t>(column);
}

}  // namespace tav
