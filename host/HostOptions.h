// SPDX-License-Identifier: MIT
// The command line of quilo-host, read and checked.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

struct Options {
    std::string module;               // empty: the one beside the program
    std::vector<std::string> inputs;  // their channels feed the signal inlets in order
    std::string output;               // empty: no file, as for the next two
    std::string picture;
    std::string console;
    std::optional<double> rate;      // hertz; empty: that of the first input, else 48000
    unsigned vector = 64;            // frames, a power of two, 1 to 4096
    std::optional<double> duration;  // seconds, from 0; empty: that of the longest input, else 1 s
    bool strict = false;
    bool quiet = false;
    bool loop = false;
    bool realtime = false;
    unsigned oscPort = 0;  // UDP, of the loopback interface; 0: none
    bool ambix = false;
    bool settled = false;
    int validate = 0;        // levels, 1 to 10; 0: a script is run
    std::uint64_t seed = 1;  // of the validator
    bool help = false;       // if set, the other options are not checked
    bool version = false;    // likewise
    std::string script;      // a file, "-" for standard input; the box text to be validated
};

/// @param arguments  without the program's name
/// Throws: Fault (WrongInput).
Options ParseOptions(std::span<const char* const> arguments);

/// The text of --help.
std::string HelpText();

}  // namespace Quilo::Host
