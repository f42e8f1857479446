// SPDX-License-Identifier: MIT
// Suggestions for misspelled words.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo::Host {

/// The least number of letters to insert, delete, replace or swap with a neighbour that makes the
/// words equal. Case is ignored.
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The nearest of `words`, of equals the first; "" when even that differs by more than a third of
/// its letters (one letter is always allowed).
std::string NearestWord(std::string_view word, std::span<const std::string> words);

/// The words of a text that are separated by blanks.
std::vector<std::string> WordsOf(std::string_view text);

std::string ListText(std::span<const std::string> words);  // "one of: WORDS"

/// "did you mean NEAREST?", or the list of all words when none is near.
std::string SuggestionText(std::string_view word, std::span<const std::string> words);

}  // namespace Quilo::Host
