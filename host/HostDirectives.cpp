// SPDX-License-Identifier: MIT
#include "HostDirectives.h"

#include "ApiFailingCalls.h"
#include "HostLimits.h"
#include "HostNearestWord.h"
#include "laws/QuiloNamedLayouts.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

namespace Quilo::Host {

namespace {

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

// clang-format off
using Acts = DirectiveActs;
constexpr DirectiveRow kDirectives[] = {
    // keyword       fits              when              acts                     expects, then help
    {"connect",    InletAndFlag,     When::OnceMade,   &Acts::Connect,          "INLET 0|1",
        "connects or cuts a signal inlet (from 1)"},
    {"rate",       OneRate,          When::OnceMade,   &Acts::SetRate,          "HZ (a whole number, 1000 to 768000)",
        "restarts the chain with another rate; the run and its files keep theirs"},
    {"vector",     OneVectorSize,    When::OnceMade,   &Acts::SetVector,        "N (a power of two, 1 to 4096)",
        "restarts the chain with another vector size"},
    {"dsp",        OneFlag,          When::OnceMade,   &Acts::SwitchAudio,      "0|1",
        "stops audio or starts it"},
    {"inspect",    None,             When::OnceMade,   &Acts::PrintAttributes,  "nothing",
        "prints every attribute with its properties"},
    {"assist",     None,             When::OnceMade,   &Acts::PrintAssistance,  "nothing",
        "prints the help texts of inlets and outlets"},
    {"methods",    None,             When::OnceMade,   &Acts::PrintMethods,     "nothing",
        "prints the registered messages"},
    {"fileusage",  None,             When::OnceMade,   &Acts::PrintCarriedFiles,"nothing",
        "prints the files that a standalone program would carry for the object"},
    {"watch",      OneFlag,          When::WhileAlive, &Acts::Watch,            "0|1",
        "prints what an inspector hears, or no longer"},
    {"sync",       None,             When::OnceMade,   &Acts::RunDue,           "nothing",
        "runs what is due and what was deferred"},
    {"from",       ThreadAndMessage, When::ToObject,   &Acts::SendFrom,         "main|scheduler|audio MESSAGE ATOMS...",
        "sends a message as if from that thread"},
    {"layout",     OneLayout,        When::WhileAlive, &Acts::SendLayout,       "NAME",
        "sends the loudspeakers of a named layout and prints them"},
    {"coverage",   None,             When::OnceMade,   &Acts::PrintCoverage,    "nothing",
        "prints which directions are silent, misplaced or not mirrored"},
    {"searchpath", OneWord,          When::Always,     &Acts::AddSearchPath,    "DIR",
        "adds a folder to the search path"},
    {"open",       WordOrNone,       When::Always,     &Acts::AnswerOpen,       "FILE, or nothing (cancelled)",
        "answers the next open dialog"},
    {"saveas",     WordOrNone,       When::Always,     &Acts::AnswerSaveAs,     "FILE, or nothing (cancelled)",
        "answers the next save dialog"},
    {"osc",        OneWord,          When::WhileAlive, &Acts::SendPacket,       "FILE",
        "sends the bytes of a file as one OSC packet"},
    {"preset",     PresetAndSlot,    When::WhileAlive, &Acts::HandlePreset,     "store|recall|print SLOT",
        "does what the preset object does"},
    {"pattr",      PattrAction,      When::WhileAlive, &Acts::HandlePattr,      "get, set [VALUES...], cut N or print",
        "asks for the object's value as pattr does, and gives it back"},
    {"dictionary", DictionaryAction, When::WhileAlive, &Acts::HandleDictionary, "NAME set KEY VALUES..., clear, print, read FILE or write FILE",
        "keeps dictionaries that the object can be sent"},
    {"fail",       CallAndNumber,    When::Always,     &Acts::PlanFailure,      "allocation N, or FUNCTION N [CODE] with a function that can fail",
        "makes the N-th call from now on fail"},
    {"remake",     BoxOrNone,        When::OnceMade,   &Acts::Remake,           "nothing or BOX TEXT",
        "frees the object and makes another one in the running chain"},
    {"free",       None,             When::WhileAlive, &Acts::Free,             "nothing",
        "frees the object"},
};
// clang-format on

}  // namespace

const DirectiveRow* FindDirective(std::string_view keyword) {
    const auto* row = std::ranges::find(kDirectives, keyword, &DirectiveRow::keyword);
    return row == std::end(kDirectives) ? nullptr : row;
}

std::string Expectation(const DirectiveRow& row, Arguments arguments) {
    std::string text = "host " + std::string(row.keyword) + " expects " + std::string(row.expects);
    if (row.fits != OneLayout) return text;
    const std::string nearest =
        arguments.empty() ? "" : NearestWord(LayoutName(arguments[0]), WordsOf(LayoutNames()));
    text += ", one of: " + LayoutNames() + ", or fibonacci-1 to fibonacci-250";
    return nearest.empty() ? text : text + "; did you mean " + nearest + "?";
}

std::vector<std::string> DirectiveKeywords() {
    std::vector<std::string> keywords;
    for (const DirectiveRow& row : kDirectives) keywords.emplace_back(row.keyword);
    return keywords;
}

std::string DirectivesHelp() {
    std::string text;
    for (const DirectiveRow& row : kDirectives) {
        text += "  host " + std::string(row.keyword);
        if (row.fits != None) text += " " + std::string(row.expects);
        text += "\n      " + std::string(row.help) + "\n";
    }
    return text;
}

}  // namespace Quilo::Host
