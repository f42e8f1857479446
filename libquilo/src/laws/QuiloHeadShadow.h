// SPDX-License-Identifier: MIT
// What a head does to the spectrum of a sound on its way to an ear.
#pragma once

#include "math/VelkDspCartesian.h"

namespace Quilo {

/// The shadow of a rigid sphere as one first-order section: S = (1 + alpha j f/c) / (1 + j f/c) at
/// the frequency f, c = ShadowCornerHz. It is 1 at 0 Hz and alpha far above the corner. Only alpha
/// depends on the direction, so it may glide while the section runs. Within 1.2 dB rms of the
/// sphere, 100 Hz .. 16 kHz, for distant sources up to 150 degrees from the ear.
/// Thread: any.  Throws: nothing.
/// @see "Range dependence of the response of a spherical head model", JASA 104(5), 1998, for the
/// sphere; "A structural model for binaural sound synthesis", IEEE Trans. SAP 6(5), 1998, for the
/// form of the section.

/// @param cosine  of the angle between the axis through the ear, outwards, and the direction of the
/// source; clamped to -1 .. 1
float HeadShadowAlpha(float cosine);

/// @param radius  metres, 0 or more      @return infinite for a sphere without a size
float ShadowCornerHz(float radius);

/// The cosine of HeadShadowAlpha for the right ear; that of the left ear is its negative.
/// @param source  metres, finite, not the centre of the head
float CosineToRightEar(const tav::CartesianVector& source);

}  // namespace Quilo
