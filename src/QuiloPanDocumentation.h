// SPDX-License-Identifier: MIT
// The texts of quilo.pan~'s reference page: class, arguments, inlets and outlets.
#pragma once

#include "max/VelkMaxDocumentation.h"

namespace Quilo::External {

struct PanTilda {
    static const VelkMax::ClassDocumentation& Documentation();
};

}  // namespace Quilo::External
