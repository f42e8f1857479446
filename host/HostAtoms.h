// SPDX-License-Identifier: MIT
// From a line of a script to its words: where they are split and what kind each is.
#pragma once

#include "HostScript.h"

#include <optional>
#include <string_view>
#include <vector>

namespace Quilo::Host {

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
