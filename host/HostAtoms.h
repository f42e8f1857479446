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

/// A whole number is a long (a float beyond 64 bits), any other number a float, anything else and
/// any quoted word a symbol.
Atom AtomOf(const HostReading::Word& word);

/// The atoms of a line; nothing when it is no line of a script.
std::optional<std::vector<Atom>> ReadAtoms(std::string_view line);

/// The atom as a script would spell it.
std::string AtomSpelling(const Atom& atom);

/// The same for the name of a layout: "22.0" reads as a number.
std::string LayoutName(const Atom& atom);

/// The number that a long or float atom holds.  Throws: std::bad_variant_access for a symbol.
double AtomNumber(const Atom& atom);

}  // namespace Quilo::Host
