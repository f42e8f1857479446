// SPDX-License-Identifier: MIT
// The word that was probably meant.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo::Host {

/// Fewest letters to be inserted, left out, replaced or swapped with their neighbour to make one
/// word of the other; capitals count as small letters.
std::size_t EditDistance(std::string_view a, std::string_view b);

/// The nearest of `words`, the first of equals; "" when every one differs in more than a third of
/// its letters (one letter in any case).
std::string NearestWord(std::string_view word, std::span<const std::string> words);

/// The words of a text that are separated by blanks.
std::vector<std::string> WordsOf(std::string_view text);

std::string ListText(std::span<const std::string> words);  // "one of: WORDS"

/// "did you mean NEAREST?", or the list when none is near.
std::string SuggestionText(std::string_view word, std::span<const std::string> words);

}  // namespace Quilo::Host
