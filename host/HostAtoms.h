// SPDX-License-Identifier: MIT
// The atoms of a script, and how a line is split into them.
#pragma once

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

/// The atom as a script would spell it.
std::string AtomSpelling(const Atom& atom);

/// The same for the name of a layout: "22.0" reads as a number.
std::string LayoutName(const Atom& atom);

/// The number that a long or float atom holds.  Throws: std::bad_variant_access for a symbol.
double AtomNumber(const Atom& atom);

struct Word {
    Atom atom;
    bool quoted = false;  // a quoted word is a symbol and never a keyword of the script

    bool IsKeyword(std::string_view keyword) const;
};

/// Splits a line at blanks and tabs; "two words" is one symbol. Nothing when a quotation mark has
/// no partner or stands inside a word.
std::optional<std::vector<Word>> SplitWords(std::string_view line);

/// A whole number is a long (a float beyond 64 bits), a decimal or exponent number a float,
/// anything else ("0x10", "nan", "1e") a symbol.
Atom ReadAtom(std::string_view word);

}  // namespace Quilo::Host
