// SPDX-License-Identifier: MIT
// What a user can set in a quilo.pan~ object beyond its engine's own addresses, as OSC messages.
#pragma once

#include "osc/VelkDspOscBundle.h"

namespace Quilo {

class PanObject;

/// Appends /attribute/NAME for every attribute that has no address of its own and is not fixed, and
/// the settings that are no attributes.  Thread: main, outside the door.
void AddObjectState(const PanObject& object, tav::OSCBundle& state);

}  // namespace Quilo
