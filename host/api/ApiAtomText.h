// SPDX-License-Identifier: MIT
// Text to atoms and back; inside the library only. ParseAtoms and AtomText are in HostBridge.h.
#pragma once

#include "HostBridge.h"

#include <cstdarg>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace HostApi {

/// A long for a whole number, a float for any other (and for a whole one beyond 64 bits); nothing
/// for text that is no number, or one that no double holds.
std::optional<t_atom> ParseNumber(std::string_view text);

/// The atoms that an atom_setformat format and its arguments describe.
std::vector<t_atom> FormatAtoms(const char* format, std::va_list arguments);

/// Puts atoms into the caller's memory, or into sysmem memory when *atoms is null.
t_max_err HandOut(std::span<const t_atom> from, max_long* count, t_atom** atoms);

inline std::span<const t_atom> Atoms(max_long argc, const t_atom* argv) {
    return argc > 0 && argv ? std::span(argv, static_cast<std::size_t>(argc))
                            : std::span<const t_atom>();
}

}  // namespace HostApi
