// SPDX-License-Identifier: MIT
// The message source: the position of one source, or one of its properties.
#pragma once

#include "max/VelkMaxAtoms.h"

namespace Quilo {

class PanObject;

void SourceMessage(PanObject& object, VelkMax::Atoms atoms);

}  // namespace Quilo
