// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspCartesian.h"
#include "math/VelkDspVector.h"

#include <cstdint>
#include <map>
#include <span>

namespace Quilo {

/// Pairwise sine and cosine panning over loudspeakers of any azimuths.
/// It needs nothing but the azimuths: neither the elevation nor the distance of a source or of a
/// loudspeaker enters, so it suits irregular rings that vector bases refuse.
class AngularLaw {
public:
    /// Loudspeakers of the same azimuth: the last one of them is used, the others stay silent.
    /// @param speakers    metres; element i feeds output i
    /// @param numOutputs  surplus loudspeakers are ignored
    /// Thread: control.
    void SetSpeakers(const tav::CartesianArray& speakers, std::size_t numOutputs);

    /// Gains of one source: at most two are not 0, and their squares sum to 1.
    /// A single output gets 1 whatever the layout; without a layout all others get 0.
    /// @param gains  one per output, overwritten
    /// Thread: control.  Throws: nothing.  Cost: O(log loudspeakers) and clearing the gains.
    void Gains(const tav::CartesianVector& source, std::span<float> gains) const;

private:
    std::map<float, std::uint32_t> outputOfAzimuth_;  // radians, mathematical
};

}  // namespace Quilo
