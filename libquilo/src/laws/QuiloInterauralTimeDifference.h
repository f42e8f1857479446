// SPDX-License-Identifier: MIT
// By how much a sound reaches one ear later than the other.
#pragma once

#include "math/VelkDspCartesian.h"

#include <cstdint>
#include <optional>

namespace Quilo {

/// Milliseconds.
struct EarDelays {
    float left = 0.f;
    float right = 0.f;

    friend bool operator==(const EarDelays&, const EarDelays&) = default;
};

/// A model of the delays of a head, and what stands at its ears.
struct InterauralTimeDifference {
    enum class Type : std::int32_t {
        Basic,        // two points at the ends of a diameter, straight lines to them
        Woodworth,    // far sources round a sphere, in the horizontal plane
        Measurement,  // as measured with the filters
        LarcherJot,   // Woodworth's in three dimensions, for far sources
        Savioja,      // Woodworth's, less by the cosine of the elevation
        Miller,       // near sources round a sphere
        None,
    };
    enum class LatencyMode : std::int32_t {
        FixedLatency,  // a common millisecond, less or more of it at either ear
        NoLatency,     // the farther ear alone is late, by all of it
    };

    static constexpr float kDefaultHeadRadius = 0.0875f;

    Type type = Type::Measurement;
    LatencyMode latencyMode = LatencyMode::FixedLatency;
    float headRadius = kDefaultHeadRadius;  // metres

    /// A source inside the head is heard as from its surface; one beyond 1000 km as from there.
    /// @param position  metres from the centre of the head      @param measuredMs  by which the
    /// left ear is later, as measured for that direction; none: nothing was measured, and the model
    /// "measurement", which any unknown code is, delays nothing
    /// @param addedMs  to the half difference that the model gives
    /// @return 0 and 0 for an unknown latency mode.  Thread: any.  Throws: nothing.
    EarDelays Delays(const tav::CartesianVector& position,
                     std::optional<float> measuredMs,
                     float addedMs = 0.f) const;

    /// What the half difference round a sphere, after Miller, is at `near` beyond that at `far`.
    float SphereDifference(const tav::CartesianVector& near, const tav::CartesianVector& far) const;

    /// Whether the delays are those measured with the filters, as for any unknown code.
    bool Measures() const {
        return type < Type::Basic || type > Type::None || type == Type::Measurement;
    }

private:
    /// Half of what the left ear is later by, milliseconds.  @param position  finite
    float HalfDifference(const tav::CartesianVector& position, float measuredMs) const;
};

}  // namespace Quilo
