// SPDX-License-Identifier: MIT
#include "HostActions.h"

#include "HostAdvisor.h"
#include "HostAllocations.h"
#include "HostChain.h"
#include "HostConsole.h"
#include "HostCoverageProbe.h"
#include "HostFault.h"
#include "HostLayouts.h"
#include "HostOutputFile.h"
#include "reading/HostFiles.h"

#include <utility>

namespace Quilo::Host {

namespace {

std::optional<std::filesystem::path> OptionalFile(Arguments arguments) {
    if (arguments.empty()) return {};
    return PathOf(AtomSpelling(arguments[0]));
}

HostApi::ThreadKind ThreadNamed(const std::string& name) {
    if (name == "scheduler") return HostApi::ThreadKind::Scheduler;
    return name == "audio" ? HostApi::ThreadKind::Audio : HostApi::ThreadKind::Main;
}

}  // namespace

Actions::Actions(const Script& script, Object& object, Console& console, Advisor& advisor)
    : script_(script),
      object_(object),
      console_(console),
      advisor_(advisor),
      state_(object, console) {}

void Actions::MakeObject() {
    advisor_.Begin(script_.objectLine);
    AtLine(script_.name, script_.objectLine, [&] { object_.Make(script_.box); });
    advisor_.End(script_.objectLine);
}

void Actions::RunPutOffWork() {
    RunDueWork();
    advisor_.TellWhatIsRight();
}

void Actions::Execute(const Statement& statement) {
    advisor_.Begin(statement.line);
    AtLine(script_.name, statement.line, [&] { Act(statement); });
    advisor_.End(statement.line);
}

void Actions::Act(const Statement& statement) {
    const DirectiveRow* const row = statement.directive;
    const bool needsObject = !row || row->when == When::WhileAlive || row->when == When::ToObject;
    if (needsObject && !object_.Get()) return;
    if (row) return (this->*row->act)(statement.atoms);
    if (IsHiddenSetting(statement.atoms)) hiddenSettings_.push_back(statement.atoms);
    object_.Send(statement.atoms);
}

// ---- Audio

void Actions::Connect(Arguments arguments) {
    chain_->SetConnected(static_cast<std::size_t>(AtomNumber(arguments[0])) - 1,
                         AtomNumber(arguments[1]) != 0);
}

void Actions::SetRate(Arguments arguments) { chain_->SetRate(AtomNumber(arguments[0])); }

void Actions::SetVector(Arguments arguments) {
    chain_->SetVector(static_cast<unsigned>(AtomNumber(arguments[0])));
}

void Actions::SwitchAudio(Arguments arguments) {
    if (AtomNumber(arguments[0]) != 0) return chain_->Start();
    chain_->Stop();
}

// ---- Messages

void Actions::SendFrom(Arguments arguments) {
    const HostApi::ThreadScope elsewhere(ThreadNamed(AtomSpelling(arguments[0])));
    object_.Send(arguments.subspan(1));
}

void Actions::SendLayout(Arguments arguments) {
    Host::SendLayout(LayoutName(arguments[0]), object_, console_);
}

void Actions::PrintCoverage(Arguments) {
    Host::PrintCoverage(MeasureCoverage(object_, hiddenSettings_), console_);
}

/// The message holds the packet's size and address as numbers, so the packet outlives the call.
void Actions::SendPacket(Arguments arguments) {
    const std::string file = AtomSpelling(arguments[0]);
    std::filesystem::path path = PathOf(file);
    // What is not in the present folder may stand beside the script.
    const auto beside = PathOf(script_.name).parent_path() / path;
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored) && std::filesystem::exists(beside, ignored)) {
        path = beside;
    }
    auto [bytes, fault] = HostReading::ReadRegularFile(path);
    if (!fault.empty()) throw StatementFault(file + ": the packet cannot be read: " + fault);
    HandOver(std::as_bytes(std::span(bytes)));
}

void Actions::HandOver(std::span<const std::byte> packet) {
    object_.Send(std::vector<Atom>{
        std::string("FullPacket"), static_cast<std::int64_t>(packet.size()),
        static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(packet.data()))});
}

void Actions::SendFromNetwork(std::span<const std::byte> packet) {
    if (!object_.Get()) return;
    const HostApi::ThreadScope scheduler(HostApi::ThreadKind::Scheduler);
    HandOver(packet);
}

// ---- Files and dialogs

void Actions::AddSearchPath(Arguments arguments) {
    HostApi::AddSearchFolder(PathOf(AtomSpelling(arguments[0])));
}

/// Devices and pipes are refused, since an open dialog does not offer them.
void Actions::AnswerOpen(Arguments arguments) {
    const auto file = OptionalFile(arguments);
    if (file && HostReading::IsIrregularFile(*file))
        throw StatementFault(AtomSpelling(arguments[0]) + ": it is no regular file");
    HostApi::AnswerDialog(HostApi::Dialog::Open, file);
}

void Actions::AnswerSaveAs(Arguments arguments) {
    HostApi::AnswerDialog(HostApi::Dialog::SaveAs, OptionalFile(arguments));
}

// ---- The object as a whole

void Actions::PlanFailure(Arguments arguments) {
    const std::string what = AtomSpelling(arguments[0]);
    const auto n = static_cast<unsigned>(AtomNumber(arguments[1]));
    const auto code = arguments.size() > 2 ? static_cast<t_max_err>(AtomNumber(arguments[2]))
                                           : static_cast<t_max_err>(MAX_ERR_GENERIC);
    if (what != "allocation") {
        HostApi::FailCall(what, n, code);
    } else if (!FailAllocation(n)) {
        throw StatementFault("allocations cannot be made to fail on this system");
    }
}

void Actions::Remake(Arguments arguments) {
    const std::size_t numInlets = object_.NumSignalInlets();
    const std::size_t numOutlets = object_.NumSignalOutlets();
    const bool isWatched = watcher_ != nullptr;
    Unwatch();
    object_.Free();
    object_.Make(arguments.empty() ? script_.box : arguments);
    if (object_.NumSignalInlets() != numInlets || object_.NumSignalOutlets() != numOutlets)
        throw StatementFault("the new object has other signal inlets or outlets");
    if (isWatched) BeginWatch();
    chain_->Refresh();
}

void Actions::Free(Arguments) {
    Unwatch();
    object_.Free();
}

void Actions::Watch(Arguments arguments) {
    Unwatch();
    if (AtomNumber(arguments[0]) != 0) BeginWatch();
}

void Actions::BeginWatch() {
    watcher_ = HostApi::Watch(object_.Get(), [this](t_symbol* message, t_symbol* attribute) {
        if (message == gensym("free")) return;
        std::string text = message->s_name;
        if (attribute)
            text = attribute->s_name + (" " + HostApi::AtomText(HostApi::AttributeValue(
                                                  object_.Get(), attribute->s_name)));
        console_.Write(attribute ? "changed" : "notify", text);
    });
}

void Actions::Unwatch() {
    if (watcher_) object_free(std::exchange(watcher_, nullptr));
}

}  // namespace Quilo::Host
