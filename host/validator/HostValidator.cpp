// SPDX-License-Identifier: MIT
#include "validator/HostValidator.h"

#include "HostAtoms.h"

#include <iostream>

namespace Quilo::Host {

namespace {

struct LevelRow {
    const char* title;
    void (*check)(Validation&);
};

// clang-format off
constexpr LevelRow kLevels[kValidatorLevels] = {
    {"is made, makes sound, is freed",               CheckThatItSounds},
    {"says what its inlets and outlets are",         CheckAssistance},
    {"attributes answer, clip and keep what is set", CheckAttributes},
    {"messages survive any arguments",               CheckMessages},
    {"the chain restarts with any settings",         CheckChain},
    {"state goes round: pattr, preset, dictionary",  CheckState},
    {"messages come from any thread",                CheckThreads},
    {"attributes walk while it plays",               CheckWalk},
    {"memory and calls fail",                        CheckFailures},
    {"everything at once, at random",                CheckStorm},
};
// clang-format on

std::vector<Atom> ReadBox(const std::string& text) {
    auto box = ReadAtoms(text);
    if (!box || box->empty() || !std::holds_alternative<std::string>(box->front()))
        throw Fault(ExitStatus::WrongInput, "--validate: '" + text + "' is no box text");
    return std::move(*box);
}

/// The arguments of a message with `count` positions on a ring.
std::string Ring(std::size_t count) {
    std::string text;
    for (std::size_t k = 0; k < count; ++k) text += " " + std::to_string(360 * k / count) + " 0 1";
    return text;
}

}  // namespace

void Report::Line(const std::string& text) { std::cout << text << '\n' << std::flush; }

void Report::Check(bool good, const std::string& what, const std::string& why) {
    ++(good ? numPassed_ : numFailed_);
    Line((good ? "  ok    " : "  FAIL  ") + what + (good || why.empty() ? "" : ": " + why));
}

void Report::Skip(const std::string& what, const std::string& why) {
    Line("  skip  " + what + ": " + why);
}

std::string Validation::Faults(unsigned vectors) {
    const Sound sound = bench.Play(vectors, random.Next());
    if (!sound.isWhole) return "samples were not written";
    if (!sound.isFinite) return "samples are no numbers";
    return bench.TakeMisuse();
}

std::string Validation::Sensible(const std::string& message) {
    const std::string angle = std::to_string(random.Below(360));
    const std::string index = std::to_string(
        1 + random.Below(std::max<std::size_t>(bench.TheObject().NumSignalInlets(), 1)));
    if (message == "source") {
        const char* const kProperties[] = {" aed ", " azim ", " spread ", " xyz "};
        return message + " " + index + kProperties[random.Below(4)] + angle + " 10 2";
    }
    if (message == "speakers" || message == "loudspeakers")
        return message + " aed" + Ring(bench.TheObject().NumSignalOutlets());
    if (message == "speaker" || message == "loudspeaker")
        return message + " 1 aed " + angle + " 0 1";
    if (message == "listener") return message + " xyz 0.1 0.2 0";
    if (message == "corners") return message + " -45 45 -135 135";
    if (message == "enable") return message + " 1";
    if (message == "dictionary") return message + " received";
    return message;
}

void Validation::Walk() {
    for (const HostApi::AttributeInfo& attribute : bench.Settable()) {
        const std::string name = attribute.name->s_name;
        bench.Set(name, LegalValues(attribute, HostApi::AttributeValue(bench.Get(), name), random));
    }
    RunDueWork();
}

ExitStatus Validate(const Options& options) {
    LoadModule(options.module);
    Validation v{Bench(ReadBox(options.script)), {}, Random(options.seed)};
    v.report.Line("validate \"" + options.script + "\", levels 1 to " +
                  std::to_string(options.validate) + ", seed " + std::to_string(options.seed));
    for (int level = 1; level <= options.validate; ++level) {
        const LevelRow& row = kLevels[level - 1];
        v.report.Line("level " + std::to_string(level) + ": " + row.title);
        row.check(v);
    }
    v.report.Line(std::to_string(v.report.NumPassed()) + " passed, " +
                  std::to_string(v.report.NumFailed()) + " failed");
    return v.report.NumFailed() == 0 ? ExitStatus::Done : ExitStatus::HostFailed;
}

}  // namespace Quilo::Host
