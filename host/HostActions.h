// SPDX-License-Identifier: MIT
// What each statement of a script does.
#pragma once

#include "HostScript.h"
#include "HostState.h"

#include <cstddef>
#include <span>

namespace Quilo::Host {

class Advisor;
class Chain;

/// Everything belongs to the main thread.
class Actions final : private DirectiveActs {
public:
    /// @param object  need not be made yet; until then only directives of When::Always are executed
    Actions(const Script& script, Object& object, Console& console, Advisor& advisor);
    virtual ~Actions() { Unwatch(); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    /// The `object` statement.  Throws: as Execute.
    void MakeObject();
    /// Gives the chain of the object once that is made; needed by all but directives of
    /// When::Always.
    void Attach(Chain& chain) { chain_ = &chain; }

    /// Throws: ScriptFault when the statement cannot be carried out.
    void Execute(const Statement& statement);

    /// Runs due clocks and deferred work, then tells what caused the errors that were posted in it.
    void RunPutOffWork();

    /// An OSC packet from outside reaches the object as from a network object of a patcher.
    void SendFromNetwork(std::span<const std::byte> packet);

    /// Messages sent so far whose effect no attribute shows; see MeasureCoverage.
    const std::vector<std::vector<Atom>>& HiddenSettings() const { return hiddenSettings_; }

private:
    void Connect(Arguments arguments) override;
    void SetRate(Arguments arguments) override;
    void SetVector(Arguments arguments) override;
    void SwitchAudio(Arguments arguments) override;
    void PrintAttributes(Arguments) override { object_.PrintAttributes(console_); }
    void PrintAssistance(Arguments) override { object_.PrintAssistance(console_); }
    void PrintMethods(Arguments) override { object_.PrintMethods(console_); }
    void PrintCarriedFiles(Arguments) override { object_.PrintCarriedFiles(console_); }
    void Watch(Arguments arguments) override;
    void RunDue(Arguments) override { RunDueWork(); }
    void SendFrom(Arguments arguments) override;
    void SendLayout(Arguments arguments) override;
    void PrintCoverage(Arguments arguments) override;
    void AddSearchPath(Arguments arguments) override;
    void AnswerOpen(Arguments arguments) override;
    void AnswerSaveAs(Arguments arguments) override;
    void SendPacket(Arguments arguments) override;
    void HandlePreset(Arguments arguments) override { state_.Preset(arguments); }
    void HandlePattr(Arguments arguments) override { state_.Pattr(arguments); }
    void HandleDictionary(Arguments arguments) override { state_.Dictionary(arguments); }
    void PlanFailure(Arguments arguments) override;
    void Remake(Arguments arguments) override;
    void Free(Arguments arguments) override;

    void Act(const Statement& statement);
    void HandOver(std::span<const std::byte> packet);
    void BeginWatch();
    void Unwatch();

    const Script& script_;
    Object& object_;
    Console& console_;
    Advisor& advisor_;
    State state_;
    std::vector<std::vector<Atom>> hiddenSettings_;
    Chain* chain_ = nullptr;
    t_object* watcher_ = nullptr;  // null: not watched
};

}  // namespace Quilo::Host
