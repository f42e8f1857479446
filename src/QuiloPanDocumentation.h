// SPDX-License-Identifier: MIT
// What quilo.pan~ says of itself to the reader of its reference page.
#pragma once

#include "max/VelkMaxDocumentation.h"

namespace Quilo::External {

struct PanTilda {
    static const VelkMax::ClassDocumentation& Documentation();
};

}  // namespace Quilo::External
