// SPDX-License-Identifier: MIT
#pragma once

#include "math/VelkDspAmbix.h"
#include "math/VelkDspCartesian.h"

#include <span>
#include <vector>

namespace Quilo {

/// First-order B-format encoding of a direction; the distance does not matter.
/// Three outputs (W, X, Y) carry the same energy from everywhere, elevation moving it into W; four
/// (W, X, Y, Z) use another weighting, on purpose. X points to the right and Y to the front, as all
/// positions do here. A source at the origin is encoded as one on the right.
/// @param gains  3 or 4 values, overwritten; another number of them is left as it is
/// Thread: control.  Throws: nothing.
/// @see "Periphony: with-height sound reproduction", JAES 21(1), 1973
void BformatGains(const tav::CartesianVector& source, std::span<float> gains);

/// What makes an AmbiX field of the four outputs. Of three there is none: their W depends on the
/// elevation.  Throws: std::bad_alloc.
std::vector<tav::AmbixChannel> BformatToAmbix();

}  // namespace Quilo
