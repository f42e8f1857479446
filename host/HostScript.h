// SPDX-License-Identifier: MIT
// The parsed script of a run: the box text and the timed statements.
//
// The whole script is checked before the run, so that a mistake in its last line is reported at
// once and leaves no output file.
#pragma once

#include "HostDirectives.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace Quilo::Host {

struct Statement {
    int line = 0;                             // in the script, from 1
    std::string text;                         // the line, without blanks at its ends
    bool timed = false;                       // false: executed before the audio starts
    double seconds = 0;                       // finite, not negative; 0 unless timed
    const DirectiveRow* directive = nullptr;  // null: a message to the object
    std::vector<Atom> atoms;                  // the message with its selector, or the arguments

    bool Says(std::string_view keyword) const { return directive && directive->keyword == keyword; }
};

struct Script {
    std::string name;  // shown in faults
    std::vector<Statement>
        before;          // statements before `object`, such as search paths, dialogs and failures
    int objectLine = 0;  // of the `object` statement
    std::string objectText;             // likewise, without blanks at its ends
    std::vector<Atom> box;              // the box text; the first atom is the class name
    std::vector<Statement> statements;  // in the order of execution: untimed ones, then by time

    bool Says(std::string_view keyword) const {  // whether `host KEYWORD` occurs
        const auto says = [=](const Statement& s) { return s.Says(keyword); };
        return std::ranges::any_of(before, says) || std::ranges::any_of(statements, says);
    }
};

/// Reads a script. Statements of the same time keep their order.
/// @param text  UTF-8, with or without byte order mark, lines ended by LF or CR LF
/// @param name  of the file, for faults
/// Throws: Fault (WrongInput) that names the script, the line and what is wrong with it.
Script ParseScript(std::string_view text, const std::string& name);

}  // namespace Quilo::Host
