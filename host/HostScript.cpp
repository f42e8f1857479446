// SPDX-License-Identifier: MIT
#include "HostScript.h"

#include "ApiFailingCalls.h"
#include "HostAtoms.h"
#include "HostFault.h"
#include "HostLimits.h"
#include "laws/QuiloNamedLayouts.h"
#include "text/VelkDspUtf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <tuple>

namespace Quilo::Host {

namespace {

using Arguments = std::span<const Atom>;

bool None(Arguments arguments) { return arguments.empty(); }

bool InletAndFlag(Arguments arguments) {
    if (arguments.size() != 2) return false;
    const auto* inlet = std::get_if<std::int64_t>(&arguments[0]);
    const auto* flag = std::get_if<std::int64_t>(&arguments[1]);
    return inlet && flag && *inlet >= 1 && (*flag == 0 || *flag == 1);
}

bool OneRate(Arguments arguments) {
    return arguments.size() == 1 && !std::holds_alternative<std::string>(arguments[0]) &&
           IsSamplingRate(AtomNumber(arguments[0]));
}

bool OneVectorSize(Arguments arguments) {
    return arguments.size() == 1 && std::holds_alternative<std::int64_t>(arguments[0]) &&
           IsVectorSize(std::get<std::int64_t>(arguments[0]));
}

bool OneLayout(Arguments arguments) {
    return arguments.size() == 1 && FindNamedLayout(LayoutName(arguments[0]));
}

bool OneWord(Arguments arguments) { return arguments.size() == 1; }

bool WordOrNone(Arguments arguments) { return arguments.size() <= 1; }

bool OneFlag(Arguments arguments) {
    return arguments.size() == 1 &&
           (arguments[0] == Atom(std::int64_t{0}) || arguments[0] == Atom(std::int64_t{1}));
}

bool IsOneOf(Arguments arguments, std::size_t at, std::initializer_list<std::string_view> words) {
    const auto* word = at < arguments.size() ? std::get_if<std::string>(&arguments[at]) : nullptr;
    return word && std::ranges::find(words, *word) != words.end();
}

bool IsCount(Arguments arguments, std::size_t at) {
    const auto* n = at < arguments.size() ? std::get_if<std::int64_t>(&arguments[at]) : nullptr;
    return n && *n >= 0 && *n <= 1'000'000'000;
}

bool ThreadAndMessage(Arguments arguments) {
    return arguments.size() >= 2 && IsOneOf(arguments, 0, {"main", "scheduler", "audio"});
}

bool PresetAndSlot(Arguments arguments) {
    return arguments.size() == 2 && IsOneOf(arguments, 0, {"store", "recall", "print"}) &&
           IsCount(arguments, 1);
}

bool PattrAction(Arguments arguments) {
    if (IsOneOf(arguments, 0, {"set"})) return true;
    if (IsOneOf(arguments, 0, {"cut"})) return arguments.size() == 2 && IsCount(arguments, 1);
    return arguments.size() == 1 && IsOneOf(arguments, 0, {"get", "print"});
}

bool DictionaryAction(Arguments arguments) {
    if (IsOneOf(arguments, 1, {"set"})) return arguments.size() >= 3;
    if (IsOneOf(arguments, 1, {"read", "write"})) return arguments.size() == 3;
    return arguments.size() == 2 && IsOneOf(arguments, 1, {"clear", "print"});
}

bool BoxOrNone(Arguments arguments) {
    return arguments.empty() || std::holds_alternative<std::string>(arguments[0]);
}

bool CallAndNumber(Arguments arguments) {
    if (arguments.size() < 2 || arguments.size() > 3 || !IsCount(arguments, 1)) return false;
    const bool isAllocation = IsOneOf(arguments, 0, {"allocation"});
    return (isAllocation && arguments.size() == 2) ||
           (!isAllocation && HostApi::CanFail(AtomSpelling(arguments[0])) &&
            (arguments.size() == 2 || std::holds_alternative<std::int64_t>(arguments[2])));
}

struct DirectiveRow {
    std::string_view keyword;
    Directive directive;
    bool (*fits)(Arguments);
    std::string_view expects;
};

// clang-format off
constexpr DirectiveRow kDirectives[] = {
    // keyword       directive              fits              expects
    {"connect",    Directive::Connect,    InletAndFlag,     "INLET 0|1"},
    {"rate",       Directive::Rate,       OneRate,          "HZ (a whole number, 1000 to 768000)"},
    {"vector",     Directive::Vector,     OneVectorSize,    "N (a power of two, 1 to 4096)"},
    {"dsp",        Directive::Dsp,        OneFlag,          "0|1"},
    {"inspect",    Directive::Inspect,    None,             "nothing"},
    {"assist",     Directive::Assist,     None,             "nothing"},
    {"methods",    Directive::Methods,    None,             "nothing"},
    {"watch",      Directive::Watch,      OneFlag,          "0|1"},
    {"sync",       Directive::Sync,       None,             "nothing"},
    {"from",       Directive::From,       ThreadAndMessage, "main|scheduler|audio MESSAGE ATOMS..."},
    {"layout",     Directive::Layout,     OneLayout,        "NAME, one of: "},
    {"coverage",   Directive::Coverage,   None,             "nothing"},
    {"searchpath", Directive::SearchPath, OneWord,          "DIR"},
    {"open",       Directive::Open,       WordOrNone,       "FILE, or nothing (cancelled)"},
    {"saveas",     Directive::SaveAs,     WordOrNone,       "FILE, or nothing (cancelled)"},
    {"osc",        Directive::Osc,        OneWord,          "FILE"},
    {"preset",     Directive::Preset,     PresetAndSlot,    "store|recall|print SLOT"},
    {"pattr",      Directive::Pattr,      PattrAction,      "get, set [VALUES...], cut N or print"},
    {"dictionary", Directive::Dictionary, DictionaryAction, "NAME set KEY VALUES..., clear, print, read FILE or write FILE"},
    {"fail",       Directive::Fail,       CallAndNumber,    "allocation N, or FUNCTION N [CODE] with a function that can fail"},
    {"remake",     Directive::Remake,     BoxOrNone,        "nothing or BOX TEXT"},
    {"free",       Directive::Free,       None,             "nothing"},
};
// clang-format on

/// Whether a directive may stand before the object.
bool NeedsNoObject(Directive directive) {
    return directive == Directive::SearchPath || directive == Directive::Open ||
           directive == Directive::SaveAs || directive == Directive::Fail;
}

/// Reads the statements of one script; `line_` follows for the faults.
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
        // A line holds one statement, so lines keep statements of the same time in their order.
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
        const auto words = SplitWords(line);
        if (!words) Fail("a quotation mark has no partner or stands inside a word");
        ReadStatement(*words);
    }

    void ReadStatement(std::span<const Word> words) {
        const bool isEarly = script_.box.empty() && words.size() > 1 &&
                             words.front().IsKeyword("host") && IsPreparation(words[1]);
        if (script_.box.empty() && !isEarly) return ReadObject(words);
        Statement statement;
        statement.line = line_;
        if (words.front().IsKeyword("at")) {
            statement.timed = true;
            statement.seconds = ReadTime(words);
            words = words.subspan(2);
            if (words.empty()) Fail("nothing stands behind the time");
            if (words.front().IsKeyword("at")) Fail("a statement has one time only");
        }
        if (words.front().IsKeyword("object")) Fail("the object has been made already");
        if (words.front().IsKeyword("host")) {
            if (words.size() < 2) Fail("host: a directive is missing");
            statement.directive = ReadDirective(words[1]);
            words = words.subspan(2);
        }
        for (const Word& word : words) statement.atoms.push_back(word.atom);
        CheckArguments(statement);
        (isEarly ? script_.before : script_.statements).push_back(std::move(statement));
    }

    static bool IsPreparation(const Word& word) {
        const auto* row =
            std::ranges::find(kDirectives, AtomSpelling(word.atom), &DirectiveRow::keyword);
        return row != std::end(kDirectives) && NeedsNoObject(row->directive);
    }

    void ReadObject(std::span<const Word> words) {
        if (!words.front().IsKeyword("object"))
            Fail("the first statement must be: object BOX TEXT");
        if (words.size() < 2) Fail("object: the box text is missing");
        if (!std::holds_alternative<std::string>(words[1].atom))
            Fail("object: the box text must begin with the name of a class");
        script_.objectLine = line_;
        for (const Word& word : words.subspan(1)) script_.box.push_back(word.atom);
    }

    double ReadTime(std::span<const Word> words) const {
        if (words.size() < 2) Fail("at: the time is missing");
        const Atom& time = words[1].atom;
        if (std::holds_alternative<std::string>(time) || !std::isfinite(AtomNumber(time)) ||
            AtomNumber(time) < 0)
            Fail("at: '" + AtomSpelling(time) + "' is no time (seconds, 0 or more)");
        return AtomNumber(time);
    }

    Directive ReadDirective(const Word& word) const {
        const std::string spelling = AtomSpelling(word.atom);
        const auto* row = std::ranges::find(kDirectives, spelling, &DirectiveRow::keyword);
        if (row == std::end(kDirectives)) Fail("unknown directive 'host " + spelling + "'");
        return row->directive;
    }

    void CheckArguments(const Statement& statement) const {
        if (statement.directive == Directive::None) return;
        const auto* row =
            std::ranges::find(kDirectives, statement.directive, &DirectiveRow::directive);
        if (row->fits(statement.atoms)) return;
        const bool isLayout = statement.directive == Directive::Layout;
        Fail("host " + std::string(row->keyword) + " expects " + std::string(row->expects) +
             (isLayout ? LayoutNames() : ""));
    }

    void RefuseMessagesToAFreedObject() {
        bool freed = false;
        for (const Statement& statement : script_.statements) {
            line_ = statement.line;
            const bool isMessage =
                statement.directive == Directive::None || statement.directive == Directive::From;
            if (freed && isMessage) Fail("the object has been freed before this message");
            freed |= statement.directive == Directive::Free;
            freed &= statement.directive != Directive::Remake;
        }
    }

    Script script_;
    int line_ = 0;
};

}  // namespace

Script ParseScript(std::string_view text, const std::string& name) {
    return Parser(name).Read(text);
}

double AtomNumber(const Atom& atom) {
    if (const auto* whole = std::get_if<std::int64_t>(&atom)) return static_cast<double>(*whole);
    return std::get<double>(atom);
}

std::string LayoutName(const Atom& atom) {
    const bool isWholeFloat =
        std::holds_alternative<double>(atom) && std::floor(AtomNumber(atom)) == AtomNumber(atom);
    return AtomSpelling(atom) + (isWholeFloat ? ".0" : "");
}

std::string AtomSpelling(const Atom& atom) {
    if (const auto* symbol = std::get_if<std::string>(&atom)) return *symbol;
    if (const auto* whole = std::get_if<std::int64_t>(&atom)) return std::to_string(*whole);
    char text[64];
    const auto end = std::to_chars(std::begin(text), std::end(text), std::get<double>(atom)).ptr;
    return {std::begin(text), end};
}

}  // namespace Quilo::Host
