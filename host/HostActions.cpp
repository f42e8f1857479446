// SPDX-License-Identifier: MIT
#include "HostActions.h"

#include "HostAllocations.h"
#include "HostChain.h"
#include "HostConsole.h"
#include "HostCoverageProbe.h"
#include "HostFault.h"
#include "HostFiles.h"
#include "HostLayouts.h"
#include "HostOutputFile.h"

#include <utility>

namespace Quilo::Host {

namespace {

/// Plans a failure: `allocation N`, or `FUNCTION N [CODE]`.
void Fail(std::span<const Atom> words) {
    const std::string what = AtomSpelling(words[0]);
    const auto n = static_cast<unsigned>(AtomNumber(words[1]));
    const auto code = words.size() > 2 ? static_cast<t_max_err>(AtomNumber(words[2]))
                                       : static_cast<t_max_err>(MAX_ERR_GENERIC);
    if (what != "allocation") {
        HostApi::FailCall(what, n, code);
    } else if (!FailAllocation(n)) {
        throw StatementFault("allocations cannot be made to fail on this system");
    }
}

std::optional<std::filesystem::path> OptionalFile(std::span<const Atom> words) {
    if (words.empty()) return {};
    return PathOf(AtomSpelling(words[0]));
}

/// The next open dialog is answered with this file; a dialog shows neither devices nor pipes.
void AnswerOpen(std::span<const Atom> words) {
    const auto file = OptionalFile(words);
    if (file && HostApi::IsIrregularFile(*file))
        throw StatementFault(AtomSpelling(words[0]) + ": it is no regular file");
    HostApi::AnswerDialog(HostApi::Dialog::Open, file);
}

/// Whether it was a statement that needs no object.
bool ActWithoutObject(const Statement& statement) {
    const auto& atoms = statement.atoms;
    switch (statement.directive) {
        case Directive::SearchPath:
            HostApi::AddSearchFolder(PathOf(AtomSpelling(atoms[0])));
            return true;
        case Directive::Open: AnswerOpen(atoms); return true;
        case Directive::SaveAs:
            HostApi::AnswerDialog(HostApi::Dialog::SaveAs, OptionalFile(atoms));
            return true;
        case Directive::Fail: Fail(atoms); return true;
        default: return false;
    }
}

HostApi::ThreadKind ThreadNamed(const std::string& name) {
    if (name == "scheduler") return HostApi::ThreadKind::Scheduler;
    return name == "audio" ? HostApi::ThreadKind::Audio : HostApi::ThreadKind::Main;
}

}  // namespace

void Prepare(const Statement& statement, const Script& script) {
    AtLine(script.name, statement.line, [&] { ActWithoutObject(statement); });
}

Actions::Actions(const Script& script, Object& object, Chain& chain, Console& console)
    : script_(script),
      object_(object),
      chain_(chain),
      console_(console),
      state_(object, console) {}

void Actions::Execute(const Statement& statement) {
    AtLine(script_.name, statement.line, [&] { Act(statement); });
}

void Actions::Act(const Statement& statement) {
    if (ActWithoutObject(statement)) return;
    const std::span<const Atom> atoms = statement.atoms;
    switch (statement.directive) {
        case Directive::Connect:
            return chain_.SetConnected(static_cast<std::size_t>(AtomNumber(atoms[0])) - 1,
                                       AtomNumber(atoms[1]) != 0);
        case Directive::Rate: return chain_.SetRate(AtomNumber(atoms[0]));
        case Directive::Vector:
            return chain_.SetVector(static_cast<unsigned>(AtomNumber(atoms[0])));
        case Directive::Dsp: return AtomNumber(atoms[0]) != 0 ? chain_.Start() : chain_.Stop();
        case Directive::Inspect: return object_.PrintAttributes(console_);
        case Directive::Assist: return object_.PrintAssistance(console_);
        case Directive::Coverage:
            return PrintCoverage(MeasureCoverage(object_, hiddenSettings_), console_);
        case Directive::Methods: return object_.PrintMethods(console_);
        case Directive::Sync: RunDueWork(); return;
        case Directive::Remake: return Remake(atoms.empty() ? script_.box : atoms);
        default: break;
    }
    if (!object_.Get()) return;  // freed: there is nobody to talk to
    switch (statement.directive) {
        case Directive::None:
            if (IsHiddenSetting(atoms)) hiddenSettings_.push_back(statement.atoms);
            return object_.Send(atoms);
        case Directive::From: return SendFrom(atoms);
        case Directive::Osc: return SendPacket(AtomSpelling(atoms[0]));
        case Directive::Layout: return SendLayout(LayoutName(atoms[0]), object_, console_);
        case Directive::Preset: return state_.Preset(atoms);
        case Directive::Pattr: return state_.Pattr(atoms);
        case Directive::Dictionary: return state_.Dictionary(atoms);
        case Directive::Watch: return Watch(AtomNumber(atoms[0]) != 0);
        case Directive::Free: Watch(false); return object_.Free();
        default: return;
    }
}

void Actions::SendFrom(std::span<const Atom> words) {
    const HostApi::ThreadScope elsewhere(ThreadNamed(AtomSpelling(words[0])));
    object_.Send(words.subspan(1));
}

void Actions::SendPacket(const std::string& file) {
    auto [bytes, fault] = HostApi::ReadRegularFile(PathOf(file));
    if (!fault.empty()) throw StatementFault(file + ": the packet cannot be read: " + fault);
    object_.Send(std::vector<Atom>{
        std::string("FullPacket"), static_cast<std::int64_t>(bytes.size()),
        static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(bytes.data()))});
}

void Actions::Remake(std::span<const Atom> box) {
    const std::size_t numInlets = object_.NumSignalInlets();
    const std::size_t numOutlets = object_.NumSignalOutlets();
    const bool watched = watcher_ != nullptr;
    Watch(false);
    object_.Free();
    object_.Make(box);
    if (object_.NumSignalInlets() != numInlets || object_.NumSignalOutlets() != numOutlets)
        throw StatementFault("the new object has other signal inlets or outlets");
    Watch(watched);
    chain_.Refresh();
}

void Actions::Watch(bool on) {
    if (watcher_) object_free(std::exchange(watcher_, nullptr));
    if (!on || !object_.Get()) return;
    watcher_ = HostApi::Watch(object_.Get(), [this](t_symbol* message, t_symbol* attribute) {
        if (message == gensym("free")) return;
        std::string text = message->s_name;
        if (attribute)
            text = attribute->s_name + (" " + HostApi::AtomText(HostApi::AttributeValue(
                                                  object_.Get(), attribute->s_name)));
        console_.Write(attribute ? "changed" : "notify", text);
    });
}

}  // namespace Quilo::Host
