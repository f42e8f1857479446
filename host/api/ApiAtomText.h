// SPDX-License-Identifier: MIT
// Text to atoms and back; inside the library only. ParseAtoms and AtomText are in HostBridge.h.
#pragma once

#include "ApiAtoms.h"
#include "HostBridge.h"

#include <cstdarg>
#include <span>
#include <string_view>
#include <vector>

namespace HostApi {

/// The atoms that an atom_setformat format and its arguments describe.
std::vector<t_atom> FormatAtoms(const char* format, std::va_list arguments);

/// Copies atoms into the caller's memory, or into new sysmem memory when *atoms is null.
t_max_err HandOut(std::span<const t_atom> from, max_long* count, t_atom** atoms);

}  // namespace HostApi
