// SPDX-License-Identifier: MIT
// The words of an enumeration: what is printed for a code and what is accepted for it.
//
// In some tables the printed word is deliberately not accepted; a row shows both.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

/// One row per code, in the order of the codes' documentation. The texts must outlive the table.
template <class Code>
class KeywordTable {
public:
    struct Row {
        Code code;
        std::string_view printed;
        std::vector<std::string_view> accepted;
    };

    KeywordTable(std::initializer_list<Row> rows) : rows_(rows) {}

    /// Exact match, first row wins; nothing for a word that no row accepts.
    std::optional<Code> Parse(std::string_view word) const {
        for (const Row& row : rows_) {
            for (const std::string_view accepted : row.accepted) {
                if (accepted == word) return row.code;
            }
        }
        return std::nullopt;
    }

    /// The word printed for `code`, `otherwise` for a code without a row.
    std::string_view Print(Code code, std::string_view otherwise = {}) const {
        for (const Row& row : rows_) {
            if (row.code == code) return row.printed;
        }
        return otherwise;
    }

    /// The code that prints as `word`, whether the word is accepted or not.
    std::optional<Code> FindPrinted(std::string_view word) const {
        for (const Row& row : rows_) {
            if (row.printed == word) return row.code;
        }
        return std::nullopt;
    }

    /// The first accepted word of each row that accepts any, for menus.
    std::string AcceptedKeywords(char separator = ' ') const {
        std::string words;
        for (const Row& row : rows_) {
            if (row.accepted.empty()) continue;
            if (!words.empty()) words += separator;
            words += row.accepted.front();
        }
        return words;
    }

    /// The printed words of all rows that accept any word, for menus.
    std::string PrintedKeywords(char separator = ' ') const {
        std::string words;
        for (const Row& row : rows_) {
            if (row.accepted.empty()) continue;
            if (!words.empty()) words += separator;
            words += row.printed;
        }
        return words;
    }

    const std::vector<Row>& Rows() const noexcept { return rows_; }

private:
    std::vector<Row> rows_;
};

}  // namespace tav
