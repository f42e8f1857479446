// SPDX-License-Identifier: MIT
// The atoms of a script.
#pragma once

#include "reading/HostWords.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Quilo::Host {

/// A long, a float or a symbol (UTF-8).
using Atom = std::variant<std::int64_t, double, std::string>;
using Arguments = std::span<const Atom>;

/// A whole number becomes a long, or a float if it exceeds 64 bits; any other number a float; any
/// other word, and any quoted word, a symbol.
Atom AtomOf(const HostReading::Word& word);

/// The atoms of a line; nothing when a script could not contain the line.
std::optional<std::vector<Atom>> ReadAtoms(std::string_view line);

/// The atom in the spelling of scripts.
std::string AtomSpelling(const Atom& atom);

/// The same for the name of a layout, which may look like a number ("22.0").
std::string LayoutName(const Atom& atom);

/// The number that a long or float atom holds.  Throws: std::bad_variant_access for a symbol.
double AtomNumber(const Atom& atom);

}  // namespace Quilo::Host
