// SPDX-License-Identifier: MIT
// What each statement of a script does.
#pragma once

#include "HostState.h"

namespace Quilo::Host {

class Chain;

/// Carries out a statement that comes before the object: search path, dialogs, failures.
/// Throws: Fault (WrongInput).
void Prepare(const Statement& statement, const Script& script);

/// Everything belongs to the main thread.
class Actions {
public:
    Actions(const Script& script, Object& object, Chain& chain, Console& console);
    ~Actions() { Watch(false); }
    Actions(const Actions&) = delete;
    Actions& operator=(const Actions&) = delete;

    /// Throws: Fault (WrongInput) that names the line, when the statement cannot be carried out.
    void Execute(const Statement& statement);

    /// Messages so far that set what no attribute shows; see MeasureCoverage.
    const std::vector<std::vector<Atom>>& HiddenSettings() const { return hiddenSettings_; }

private:
    void Act(const Statement& statement);
    void SendFrom(std::span<const Atom> words);
    void SendPacket(const std::string& file);
    void Remake(std::span<const Atom> box);
    void Watch(bool on);

    const Script& script_;
    Object& object_;
    Chain& chain_;
    Console& console_;
    State state_;
    std::vector<std::vector<Atom>> hiddenSettings_;
    t_object* watcher_ = nullptr;
};

}  // namespace Quilo::Host
