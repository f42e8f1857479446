// SPDX-License-Identifier: MIT
#include "osc/VelkDspOscAddress.h"

#include "text/VelkDspException.h"

#include <algorithm>
#include <cstddef>

namespace tav {

namespace {

constexpr SourceSite kAddressSite{"libvelkdsp/src/osc/VelkDspOscAddress", 0};
constexpr std::size_t kLongestPattern = 256;

std::vector<std::string> SplitAtSlashes(std::string_view text) {
    std::vector<std::string> parts;
    if (text.starts_with('/')) text.remove_prefix(1);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('/'), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

/// A pattern as a non-deterministic automaton: its state k stands before the k-th character. Steps
/// that read nothing (past a *, into or out of braces) only lead forward, so that one pass from
/// left to right finds all states that they reach.
class PartMatcher {
public:
    explicit PartMatcher(std::string_view pattern)
        : pattern_(pattern),
          close_(pattern.size(), std::string_view::npos),
          states_(pattern.size() + 1),
          next_(pattern.size() + 1) {}

    bool Matches(std::string_view text) {
        if (!FindBrackets()) return false;
        states_[0] = true;
        Spread(states_);
        for (const char c : text) {
            std::ranges::fill(next_, false);
            for (std::size_t k = 0; k < pattern_.size(); ++k) {
                if (states_[k]) Read(k, c);
            }
            Spread(next_);
            states_.swap(next_);
        }
        return states_.back();
    }

private:
    static constexpr std::size_t kNone = std::string_view::npos;

    /// Notes for every character inside brackets where these end.
    bool FindBrackets() {
        for (std::size_t k = 0; k < pattern_.size(); ++k) {
            if (pattern_[k] != '[' && pattern_[k] != '{') continue;
            const std::size_t end = pattern_.find(pattern_[k] == '[' ? ']' : '}', k);
            if (end == kNone) return false;
            for (; k <= end; ++k) close_[k] = end;
            k = end;
        }
        return true;
    }

    bool IsInBraces(std::size_t k) const {
        return close_[k] != kNone && pattern_[close_[k]] == '}';
    }

    void Spread(std::vector<char>& states) const {
        for (std::size_t k = 0; k < pattern_.size(); ++k) {
            if (!states[k]) continue;
            const char c = pattern_[k];
            if (IsInBraces(k)) {
                if (c == ',' || c == '}') states[close_[k] + 1] = true;
                if (c == '{') EnterBraces(k, states);
            } else if (c == '*') {
                states[k + 1] = true;
            }
        }
    }

    void EnterBraces(std::size_t open, std::vector<char>& states) const {
        for (std::size_t k = open; k < close_[open]; ++k) {
            if (k == open || pattern_[k] == ',') states[k + 1] = true;
        }
    }

    /// From state k with the character c.
    void Read(std::size_t k, char c) {
        const char p = pattern_[k];
        if (IsInBraces(k)) {
            if (p == c && p != ',' && p != '}' && p != '{') next_[k + 1] = true;
        } else if (p == '[' && close_[k] != kNone) {
            if (IsInSet(pattern_.substr(k + 1, close_[k] - k - 1), c)) next_[close_[k] + 1] = true;
        } else if (p == '*') {
            next_[k] = true;
        } else if (p == '?' || p == c) {
            next_[k + 1] = true;
        }
    }

    static bool IsInSet(std::string_view set, char c) {
        const bool isNegated = set.starts_with('!');
        if (isNegated) set.remove_prefix(1);
        for (std::size_t k = 0; k < set.size(); ++k) {
            // A "-" at the end is a character like others.
            const bool isRange = k + 2 < set.size() && set[k + 1] == '-';
            if (isRange ? (set[k] <= c && c <= set[k + 2]) : set[k] == c) return !isNegated;
            if (isRange) k += 2;
        }
        return isNegated;
    }

    std::string_view pattern_;
    std::vector<std::size_t> close_;  // for characters in brackets: the index of their end
    std::vector<char> states_;
    std::vector<char> next_;
};

}  // namespace

OSCAddress::OSCAddress(std::string_view text)
    : text_(text.ends_with('/') ? text.substr(0, text.size() - 1) : text),
      parts_(SplitAtSlashes(text_)),
      isPattern_(IsOscPattern(text_)) {}

void OSCAddress::Validate(std::string_view text) {
    // Beyond ASCII, all bytes of a character are above 0x7E.
    const auto isAllowed = [](char c) {
        return c > ' ' && c <= '~' &&
               std::string_view("#*,?[]{}").find(c) == std::string_view::npos;
    };
    for (const std::string& part : SplitAtSlashes(text)) {
        if (std::ranges::all_of(part, isAllowed)) continue;
        throw Exception(
            "OSC format error: encountered characters not allowed in address string : " +
                std::string(text),
            kAddressSite);
    }
}

bool IsOscPattern(std::string_view text) noexcept {
    return std::ranges::any_of(text, [](char c) {
        return c == '*' || c == '?' || c == '{' || c == '}' || c == '[' || c == ']';
    });
}

bool OscPartMatches(std::string_view pattern, std::string_view text) {
    if (!IsOscPattern(pattern)) return pattern == text;
    return pattern.size() <= kLongestPattern && PartMatcher(pattern).Matches(text);
}

bool OscAddressMatches(const OSCAddress& pattern, const OSCAddress& address) {
    return std::ranges::equal(pattern.Parts(), address.Parts(), OscPartMatches);
}

}  // namespace tav
