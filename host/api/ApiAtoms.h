// SPDX-License-Identifier: MIT
// Lists of atoms, and atoms of numbers; inside the library only.
#pragma once

#include "ext.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace HostApi {

/// A long for a whole number, a float for any other and for a whole one beyond 64 bits; nothing
/// when the text is no number or one beyond the range of double.
std::optional<t_atom> ParseNumber(std::string_view text);

inline std::span<const t_atom> Atoms(max_long argc, const t_atom* argv) {
    return argc > 0 && argv ? std::span(argv, static_cast<std::size_t>(argc))
                            : std::span<const t_atom>();
}

}  // namespace HostApi
