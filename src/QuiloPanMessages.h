// SPDX-License-Identifier: MIT
// The messages of quilo.pan~ that users type.
#pragma once

#include "max/VelkMaxHandlers.h"

namespace Quilo {

/// In the order in which they are documented.
std::span<const VelkMax::MessageRow> PanMessages();

}  // namespace Quilo
