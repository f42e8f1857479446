// SPDX-License-Identifier: MIT
// Stores states of objects as a patcher does: presets, the value of a pattr, dictionaries.
#pragma once

#include "HostObject.h"
#include "HostScript.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Console;

/// Outlives the objects: a state that was stored from one object can be restored to the next.
/// Thread: main.  Throws: StatementFault.
class State {
public:
    State(Object& object, Console& console);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void Preset(std::span<const Atom> words);      // store SLOT | recall SLOT | print SLOT
    void Pattr(std::span<const Atom> words);       // get | set [VALUES...] | cut N | print
    void Dictionary(std::span<const Atom> words);  // NAME set|clear|print|read|write ...

    /// Copies a dictionary that left the dump outlet; the copy has the name "received".
    void Receive(t_symbol* name);

private:
    t_dictionary* Named(const std::string& name);

    Object& object_;
    Console& console_;
    std::map<std::int64_t, std::vector<HostApi::PresetRecord>> presets_;
    std::vector<t_atom> pattr_;
    std::map<std::string, t_dictionary*> dictionaries_;  // owned; by the names in the script
};

}  // namespace Quilo::Host
