// SPDX-License-Identifier: MIT
// The attributes of quilo.pan~: those of every object and those that only some panners have.
#pragma once

#include "max/VelkMaxAttributes.h"

namespace Quilo {

class PanObject;

/// In the order of registration; the column "order" of a row gives its place in the inspector.
std::span<const VelkMax::AttributeRow> PanClassAttributes();

/// Adds the attributes that only the object's type of panner has. Without an engine it adds none.
void AddPanInstanceAttributes(PanObject& object);

}  // namespace Quilo
