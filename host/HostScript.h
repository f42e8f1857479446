// SPDX-License-Identifier: MIT
// The script of a run, read: the box text and what happens on the timeline.
//
// A script is checked as a whole before anything sounds, so that a slip in its last line costs
// nothing and leaves no output behind.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Quilo::Host {

/// A long, a float or a symbol (UTF-8).
using Atom = std::variant<std::int64_t, double, std::string>;

/// What a script says to the host itself ("host ...").
enum class Directive : std::uint8_t {
    None,
    Connect,
    Rate,
    Vector,
    Inspect,
    Assist,
    Methods,
    Sync,
    Layout,
    SearchPath,
    Open,
    SaveAs,
    Osc,
    Dsp,
    From,
    Preset,
    Pattr,
    Dictionary,
    Watch,
    Remake,
    Fail,
    Free,
    Coverage
};

struct Statement {
    int line = 0;                           // in the script, from 1
    bool timed = false;                     // false: before the audio starts
    double seconds = 0;                     // finite, not negative; 0 unless timed
    Directive directive = Directive::None;  // None: a message to the object
    std::vector<Atom> atoms;                // the message with its selector, or the arguments
};

struct Script {
    std::string name;                   // as faults show it
    std::vector<Statement> before;      // the object: search path, dialogs, failures
    int objectLine = 0;                 // of the `object` statement
    std::vector<Atom> box;              // the box text; the first atom is the class name
    std::vector<Statement> statements;  // as they happen: untimed ones, then by time

    bool HasDirective(Directive directive) const {
        const auto has = [=](const Statement& s) { return s.directive == directive; };
        return std::ranges::any_of(before, has) || std::ranges::any_of(statements, has);
    }
};

/// Reads a script. Statements of the same time keep their order.
/// @param text  UTF-8, with or without byte order mark, lines ended by LF or CR LF
/// @param name  of the file, for faults
/// Throws: Fault (WrongInput) that names the script, the line and what is wrong with it.
Script ParseScript(std::string_view text, const std::string& name);

/// The atom as a script would spell it.
std::string AtomSpelling(const Atom& atom);

/// The same for the name of a layout: "22.0" reads as a number.
std::string LayoutName(const Atom& atom);

/// The number that a long or float atom holds.  Throws: std::bad_variant_access for a symbol.
double AtomNumber(const Atom& atom);

}  // namespace Quilo::Host
