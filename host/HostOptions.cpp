// SPDX-License-Identifier: MIT
#include "HostOptions.h"

#include "HostDirectives.h"
#include "HostFault.h"
#include "HostLimits.h"
#include "HostOutputFile.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string_view>

namespace Quilo::Host {

namespace {

[[noreturn]] void Fail(const std::string& text) { throw Fault(ExitStatus::WrongInput, text); }

/// The number that the whole text spells; nothing if it is no number.
std::optional<double> Number(const std::string& text) {
    const auto number = HostReading::ReadNumber(text);
    if (!number) return {};
    return number->value;
}

void SetRate(Options& options, const std::string& value) {
    options.rate = Number(value);
    if (!options.rate || !IsSamplingRate(*options.rate))
        Fail("--rate expects a whole number of hertz from 1000 to 768000, not '" + value + "'");
}

void SetVector(Options& options, const std::string& value) {
    const auto frames = HostReading::ReadNumber(value);
    if (!frames || !frames->isWhole || !IsVectorSize(frames->whole))
        Fail("--vector expects a power of two from 1 to 4096, not '" + value + "'");
    options.vector = static_cast<unsigned>(frames->whole);
}

void SetDuration(Options& options, const std::string& value) {
    options.duration = Number(value);
    if (!options.duration || !std::isfinite(*options.duration) || *options.duration < 0)
        Fail("--duration expects seconds, 0 or more, not '" + value + "'");
}

template <std::string Options::*field>
void SetFile(Options& options, const std::string& value) {
    options.*field = value;
}

/// A whole number in a range.
std::int64_t WholeNumber(const std::string& value,
                         std::int64_t low,
                         std::int64_t high,
                         const std::string& expectation) {
    const auto number = HostReading::ReadNumber(value);
    if (!number || !number->isWhole || number->whole < low || number->whole > high)
        Fail(expectation + ", not '" + value + "'");
    return number->whole;
}

void SetLevel(Options& options, const std::string& value) {
    options.validate =
        static_cast<int>(WholeNumber(value, 1, 10, "--validate expects a level from 1 to 10"));
}

void SetOscPort(Options& options, const std::string& value) {
    options.oscPort =
        static_cast<unsigned>(WholeNumber(value, 1, 65535, "--osc expects a port from 1 to 65535"));
    options.realtime = true;
}

void SetSeed(Options& options, const std::string& value) {
    options.seed = static_cast<std::uint64_t>(WholeNumber(
        value, 0, std::numeric_limits<std::int64_t>::max(), "--seed expects a whole number"));
}

void AddInput(Options& options, const std::string& value) { options.inputs.push_back(value); }

template <bool Options::*field>
void SetFlag(Options& options, const std::string&) {
    options.*field = true;
}

struct OptionRow {
    std::string_view name;
    std::string_view value;                     // the name of its value in the help; "" for none
    void (*set)(Options&, const std::string&);  // null: known, but not supported
    std::string_view help;
};

// clang-format off
constexpr OptionRow kOptions[] = {
    // name         value    set                          help
    {"--module",   "FILE",  SetFile<&Options::module>,   "the module to load (the one beside the program)"},
    {"--in",       "FILE",  AddInput,                    "audio input (WAV, AIFF, MP3); its channels feed the inlets in order; repeatable"},
    {"--out",      "FILE",  SetFile<&Options::output>,   "writes the signal outlets as a 32-bit float WAV"},
    {"--rate",     "HZ",    SetRate,                     "sampling rate (that of the first input, else 48000)"},
    {"--vector",   "N",     SetVector,                   "signal vector size, a power of two, 1 to 4096 (64)"},
    {"--duration", "SEC",   SetDuration,                 "length to render (that of the longest input, else 1 s)"},
    {"--picture",  "FILE",  SetFile<&Options::picture>,  "draws the scene as SVG"},
    {"--console",  "FILE",  SetFile<&Options::console>,  "where the console lines go (standard output)"},
    {"--strict",   "",      SetFlag<&Options::strict>,   "exit 3 when the object posted an error or a bug"},
    {"--quiet",    "",      SetFlag<&Options::quiet>,    "no progress and no notes on standard error"},
    {"--loop",     "",      SetFlag<&Options::loop>,     "inputs shorter than the duration repeat"},
    {"--ambix",    "",      SetFlag<&Options::ambix>,    "writes ambisonic outlets as AmbiX: ACN, SN3D, x front, y left"},
    {"--settled",  "",      SetFlag<&Options::settled>,  "plays silence first, until every glide has arrived"},
    {"--realtime", "",      SetFlag<&Options::realtime>, "paces the vectors by the clock; an interrupt ends it well"},
    {"--help",     "",      SetFlag<&Options::help>,     "this text"},
    {"--version",  "",      SetFlag<&Options::version>,  "the version"},
    {"--osc",      "PORT",  SetOscPort,                  "takes OSC from this UDP port of the loopback interface; implies --realtime"},
    {"--validate", "LEVEL", SetLevel,                    "takes a box text for SCRIPT and puts it to the test, levels 1 to 10"},
    {"--seed",     "N",     SetSeed,                     "of what the validator draws at random (1)"},
};
// clang-format on

const OptionRow& FindOption(std::string_view name) {
    const auto* row = std::ranges::find(kOptions, name, &OptionRow::name);
    if (row == std::end(kOptions)) Fail("unknown option '" + std::string(name) + "'");
    if (!row->set) Fail(std::string(name) + " is not available in this version");
    return *row;
}

/// The path of a regular file; nothing for "" and for what several may write to, such as a device.
std::optional<std::filesystem::path> FileOf(const std::string& name) {
    if (name.empty()) return std::nullopt;
    std::error_code ignored;
    const std::filesystem::path path = PathOf(name);
    const auto status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return std::nullopt;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
}

/// Whether two names mean the same file, also through links or by different spellings.
bool AreOneFile(const std::string& a, const std::string& b) {
    const auto first = FileOf(a), second = FileOf(b);
    if (!first || !second) return false;
    std::error_code ignored;
    return first == second || std::filesystem::equivalent(*first, *second, ignored);
}

/// Refuses a file that one option writes and another one reads or writes.
void RefuseSharedFiles(const Options& options) {
    struct Row {
        const char* option;
        const std::string& name;
        bool isWritten;
    };
    std::vector<Row> rows;
    rows.reserve(options.inputs.size());
    for (const std::string& input : options.inputs) rows.push_back({"--in", input, false});
    const bool hasScriptFile = options.validate == 0 && options.script != "-";
    if (hasScriptFile) rows.push_back({"the script", options.script, false});
    rows.push_back({"--module", options.module, false});
    rows.push_back({"--out", options.output, true});
    rows.push_back({"--picture", options.picture, true});
    rows.push_back({"--console", options.console, true});
    for (const Row& row : rows)
        for (const Row* other = rows.data(); row.isWritten && other != &row; ++other)
            if (AreOneFile(other->name, row.name))
                Fail(std::string(other->option) + " and " + row.option + " name the same file '" +
                     row.name + "'");
}

}  // namespace

Options ParseOptions(std::span<const char* const> arguments) {
    Options options;
    for (std::size_t k = 0; k < arguments.size(); ++k) {
        const std::string argument = arguments[k];
        if (argument == "-" || !argument.starts_with('-')) {
            if (!options.script.empty()) Fail("more than one script: '" + argument + "'");
            if (argument.empty()) Fail("the name of the script is empty");
            options.script = argument;
            continue;
        }
        const OptionRow& row = FindOption(argument);
        std::string value;
        if (!row.value.empty()) {
            ++k;
            if (k == arguments.size() || *arguments[k] == '\0')
                Fail(argument + " expects " + std::string(row.value));
            value = arguments[k];
        }
        row.set(options, value);
        if (options.help || options.version) return options;
    }
    if (options.script.empty())
        Fail(options.validate > 0 ? "no box text is given"
                                  : "no script is given (quilo-host --help tells more)");
    RefuseSharedFiles(options);
    return options;
}

std::string HelpText() {
    std::string text =
        "quilo-host [options] SCRIPT\n\n"
        "Runs the quilo.pan~ module without a patcher: makes the object of SCRIPT (a file, or - "
        "for\n"
        "standard input), sends it the script's messages and renders what it plays.\n\n";
    for (const OptionRow& row : kOptions) {
        if (!row.set) continue;
        std::string usage = "  " + std::string(row.name) + " " + std::string(row.value);
        usage.resize(20, ' ');
        text += usage + std::string(row.help) + "\n";
    }
    text += "\nIn a script (docs/host.md tells more):\n" + DirectivesHelp();
    return text +
           "\nExit status: 0 done, 1 the module or the host failed, 2 wrong command line, script "
           "or\n"
           "file, 3 the object complained (--strict).\n";
}

}  // namespace Quilo::Host
