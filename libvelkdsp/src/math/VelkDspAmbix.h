// SPDX-License-Identifier: MIT
// From the ambisonic channels of this library to those that other programs expect in a file.
//
// Positions here have x to the right and y to the front, and the harmonics count phi from +x. The
// AmbiX convention has x to the front and y to the left: its field is ours turned a quarter about
// the vertical axis. The turn makes cos(m phi) and sin(m phi) of one order into each other, up to
// the sign, so that every channel of the one is a multiple of one channel of the other.
#pragma once

#include "math/VelkDspSphericalHarmonic.h"

#include <optional>
#include <vector>

namespace tav {

/// What becomes one channel of an AmbiX field (ACN, SN3D, x front, y left).
struct AmbixChannel {
    std::optional<unsigned> source;  // channel of the field at hand; none: silence
    double gain = 0.0;
};

/// The conversion of an encoded field in ACN order.
/// A field of two dimensions becomes one of three whose channels with n != |m| are silent: they
/// hold what is above and below, of which it knows nothing.
/// @param dimension  2 or 3
/// @return (order + 1)^2 channels in ACN order; empty when the normalisation has no such order
///         (FuMa and MaxN end at 3)
/// Thread: any.  Throws: std::bad_alloc.
/// @see "AMBIX - A Suggested Ambisonics Format", Ambisonics Symposium, 2011
std::vector<AmbixChannel> AmbixFromHoa(unsigned order,
                                       unsigned dimension,
                                       SphericalHarmonic::Normalization normalization);

}  // namespace tav
