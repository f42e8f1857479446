// SPDX-License-Identifier: MIT
#include "HostScript.h"

#include "HostFault.h"
#include "HostNearestWord.h"
#include "text/VelkDspUtf8.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace Quilo::Host {

namespace {

using HostReading::Word;

/// Whether a word is this keyword; a quoted word is none.
bool IsKeyword(const Word& word, std::string_view keyword) {
    return !word.isLiteral && word.text == keyword;
}

/// Parses one script; `line_` is the present line, for faults.
class Parser {
public:
    explicit Parser(const std::string& name) { script_.name = name; }

    Script Read(std::string_view text) {
        if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
        while (!text.empty()) {
            ++line_;
            const std::size_t end = std::min(text.find('\n'), text.size());
            ReadLine(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        if (script_.box.empty()) Fail("the script has no object statement");
        // Statements of the same time stay in the order of their lines.
        std::ranges::sort(script_.statements, {}, [](const Statement& s) {
            return std::tuple(s.timed, s.seconds, s.line);
        });
        RefuseMessagesToAFreedObject();
        return std::move(script_);
    }

private:
    [[noreturn]] void Fail(const std::string& text) const {
        throw ScriptFault(script_.name, std::max(line_, 1), text);
    }

    void ReadLine(std::string_view line) {
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos || line[first] == '#') return;
        if (line.find('\0') != std::string_view::npos)
            Fail("a zero byte stands in the line (scripts are UTF-8 text)");
        const std::size_t bad = tav::FindBadUtf8(line);
        if (bad != std::string_view::npos)
            Fail("byte " + std::to_string(bad + 1) +
                 " of the line is no UTF-8 text (save the script as UTF-8)");
        text_ = line.substr(first, line.find_last_not_of(" \t") + 1 - first);
        const auto words = HostReading::SplitWords(line, HostReading::Dialect::Script);
        if (!words) Fail("a quotation mark has no partner or stands inside a word");
        ReadStatement(*words);
    }

    void ReadStatement(std::span<const Word> words) {
        const bool isEarly = script_.box.empty() && words.size() > 1 &&
                             IsKeyword(words.front(), "host") && IsPreparation(words[1]);
        if (script_.box.empty() && !isEarly) return ReadObject(words);
        Statement statement;
        statement.line = line_;
        statement.text = text_;
        if (IsKeyword(words.front(), "at")) {
            statement.timed = true;
            statement.seconds = ReadTime(words);
            words = words.subspan(2);
            if (words.empty()) Fail("nothing stands behind the time");
            if (IsKeyword(words.front(), "at")) Fail("a statement has one time only");
        }
        if (IsKeyword(words.front(), "object")) Fail("the object has been made already");
        if (IsKeyword(words.front(), "host")) {
            if (words.size() < 2) Fail("host: a directive is missing");
            const std::string& keyword = words[1].text;
            statement.directive = FindDirective(keyword);
            if (!statement.directive)
                Fail("unknown directive 'host " + keyword + "'; " +
                     SuggestionText(keyword, DirectiveKeywords()));
            words = words.subspan(2);
        }
        for (const Word& word : words) statement.atoms.push_back(AtomOf(word));
        if (statement.directive && !statement.directive->fits(statement.atoms))
            Fail(Expectation(*statement.directive, statement.atoms));
        (isEarly ? script_.before : script_.statements).push_back(std::move(statement));
    }

    static bool IsPreparation(const Word& word) {
        const DirectiveRow* row = FindDirective(word.text);
        return row && row->when == When::Always;
    }

    void ReadObject(std::span<const Word> words) {
        if (!IsKeyword(words.front(), "object"))
            Fail("the first statement must be: object BOX TEXT");
        if (words.size() < 2) Fail("object: the box text is missing");
        if (!std::holds_alternative<std::string>(AtomOf(words[1])))
            Fail("object: the box text must begin with the name of a class");
        script_.objectLine = line_;
        script_.objectText = text_;
        for (const Word& word : words.subspan(1)) script_.box.push_back(AtomOf(word));
    }

    double ReadTime(std::span<const Word> words) const {
        if (words.size() < 2) Fail("at: the time is missing");
        const Atom time = AtomOf(words[1]);
        if (std::holds_alternative<std::string>(time) || !std::isfinite(AtomNumber(time)) ||
            AtomNumber(time) < 0)
            Fail("at: '" + words[1].text + "' is no time (seconds, 0 or more)");
        return AtomNumber(time);
    }

    void RefuseMessagesToAFreedObject() {
        bool freed = false;
        for (const Statement& statement : script_.statements) {
            line_ = statement.line;
            const DirectiveRow* directive = statement.directive;
            if (freed && (!directive || directive->when == When::ToObject))
                Fail("the object has been freed before this message");
            freed |= statement.Says("free");
            freed &= !statement.Says("remake");
        }
    }

    Script script_;
    int line_ = 0;
    std::string_view text_;  // of the line, without blanks at its ends
};

}  // namespace

Script ParseScript(std::string_view text, const std::string& name) {
    return Parser(name).Read(text);
}

}  // namespace Quilo::Host
