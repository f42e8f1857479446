// SPDX-License-Identifier: MIT
// The script of a run, read: the box text and what happens on the timeline.
//
// A script is checked as a whole before anything sounds, so that a slip in its last line costs
// nothing and leaves no output behind.
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
    bool timed = false;                       // false: before the audio starts
    double seconds = 0;                       // finite, not negative; 0 unless timed
    const DirectiveRow* directive = nullptr;  // null: a message to the object
    std::vector<Atom> atoms;                  // the message with its selector, or the arguments

    bool Says(std::string_view keyword) const { return directive && directive->keyword == keyword; }
};

struct Script {
    std::string name;                   // as faults show it
    std::vector<Statement> before;      // the object: search path, dialogs, failures
    int objectLine = 0;                 // of the `object` statement
    std::string objectText;             // likewise, without blanks at its ends
    std::vector<Atom> box;              // the box text; the first atom is the class name
    std::vector<Statement> statements;  // as they happen: untimed ones, then by time

    bool Says(std::string_view keyword) const {  // host KEYWORD, anywhere
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
