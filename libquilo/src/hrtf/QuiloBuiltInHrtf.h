// SPDX-License-Identifier: MIT
// The HRTF set that needs no file: a KEMAR dummy head, measured in 710 directions.
#pragma once

#include "hrtf/QuiloHrtfData.h"

namespace Quilo {

/// Biquad cells for 44100 Hz. Only the left ear is stored: the right ear of a direction is the left
/// ear of its mirror image, so the set is exactly symmetric.
/// Throws: std::bad_alloc.
HrtfData BuiltInHrtf();

}  // namespace Quilo
