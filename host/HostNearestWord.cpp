// SPDX-License-Identifier: MIT
#include "HostNearestWord.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace Quilo::Host {

namespace {

std::string SmallLetters(std::string_view word) {
    std::string small(word);
    std::ranges::transform(small, small.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    return small;
}

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
    const std::string first = SmallLetters(a), second = SmallLetters(b);
    // Row i holds the distances of the first i letters of one word to all beginnings of the other.
    std::vector<std::size_t> beforeLast, last(second.size() + 1), row(second.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= first.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= second.size(); ++j) {
            const bool isSame = first[i - 1] == second[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            const bool isSwapped =
                i > 1 && j > 1 && first[i - 1] == second[j - 2] && first[i - 2] == second[j - 1];
            if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast = last;
        last = row;
    }
    return last.back();
}

std::string NearestWord(std::string_view word, std::span<const std::string> words) {
    std::string nearest;
    std::size_t least = std::string::npos;
    for (const std::string& other : words) {
        const std::size_t distance = EditDistance(word, other);
        const std::size_t letters = std::max(word.size(), other.size());
        if (distance >= least || distance > std::max<std::size_t>(1, letters / 3)) continue;
        least = distance;
        nearest = other;
    }
    return nearest;
}

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find(' '), text.size());
        if (length > 0) words.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return words;
}

std::string SuggestionText(std::string_view word, std::span<const std::string> words) {
    const std::string nearest = NearestWord(word, words);
    return nearest.empty() ? ListText(words) : "did you mean " + nearest + "?";
}

std::string ListText(std::span<const std::string> words) {
    std::string text = "one of:";
    for (const std::string& other : words) text += " " + other;
    return text;
}

}  // namespace Quilo::Host
