// SPDX-License-Identifier: MIT
// Converts this library's ambisonic channels to those that other programs expect in files.
//
// Positions here have x to the right and y to the front, and the harmonics count phi from +x. The
// AmbiX convention has x to the front and y to the left: its field is ours rotated by a quarter
// turn about the vertical axis. This maps cos(m phi) and sin(m phi) to each other or themselves, up
// to the sign, so that each channel of one field is a multiple of one channel of the other.
#pragma once

#include "math/VelkDspSphericalHarmonic.h"

#include <optional>
#include <vector>

namespace tav {

/// How to compute one channel of an AmbiX field (ACN, SN3D, x front, y left).
struct AmbixChannel {
    std::optional<unsigned> source;  // channel of the given field; none: silence
    double gain = 0.0;
};

/// The conversion of an encoded field in ACN order.
/// A field of two dimensions becomes one of three whose channels with n != |m| are silent: they
/// describe height, which the field does not contain.
/// @param dimension  2 or 3
/// @return (order + 1)^2 channels in ACN order; empty if the normalisation is not defined at this
/// order (FuMa and MaxN end at 3)
/// Thread: any.  Throws: std::bad_alloc.
/// @see "AMBIX - A Suggested Ambisonics Format", Ambisonics Symposium, 2011
std::vector<AmbixChannel> AmbixFromHoa(unsigned order,
                                       unsigned dimension,
                                       SphericalHarmonic::Normalization normalization);

}  // namespace tav
