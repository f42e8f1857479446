// SPDX-License-Identifier: MIT
// The attributes of quilo.pan~: those of every object and those that only some panners have.
#pragma once

#include "max/VelkMaxAttributes.h"

namespace Quilo {

class PanObject;

/// In the order of registration; the place in the inspector is the rows' own.
std::span<const VelkMax::AttributeRow> PanClassAttributes();

/// Adds the attributes that this object's engine makes use of.
void AddPanInstanceAttributes(PanObject& object);

}  // namespace Quilo
