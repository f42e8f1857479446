// SPDX-License-Identifier: MIT
// What a user can set in a quilo.pan~ object beyond its engine's own addresses, as OSC messages.
#pragma once

#include "max/VelkMaxAtoms.h"
#include "osc/VelkDspOscBundle.h"

namespace Quilo {

class PanObject;

/// Appends /attribute/NAME for every attribute that has no address of its own and is not fixed, and
/// the settings that are no attributes.  Thread: main, outside the door.
void AddObjectState(const PanObject& object, tav::OSCBundle& state);

/// Whether there is an attribute that a message may set.  Thread: main.
bool HasAttribute(const PanObject& object, t_symbol* name);

// Whether the object would take such values now, as its setter or its message does; each posts why
// not.  Thread: main, outside the door.

bool AcceptsAttribute(const PanObject& object, t_symbol* name, VelkMax::Atoms values);
bool AcceptsSpeakers(const PanObject& object, VelkMax::Atoms atoms);

}  // namespace Quilo
