// SPDX-License-Identifier: MIT
// Any text as a script: refused with a fault that names the script, or read with every promise of
// Script kept: a class name, times that can be played, statements in playing order.
#include "HostFault.h"
#include "HostScript.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace Quilo::Host;

namespace {

bool KeepsItsPromises(const Script& script) {
    if (script.box.empty() || !std::holds_alternative<std::string>(script.box.front()))
        return false;
    const Statement* previous = nullptr;
    for (const Statement& statement : script.statements) {
        if (!std::isfinite(statement.seconds) || statement.seconds < 0) return false;
        if (!statement.timed && statement.seconds != 0) return false;
        if (previous &&
            (previous->timed > statement.timed || previous->seconds > statement.seconds))
            return false;
        if (!statement.directive && statement.atoms.empty()) return false;
        previous = &statement;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        if (!KeepsItsPromises(ParseScript(text, "script"))) std::abort();
    } catch (const Fault& fault) {
        if (std::string(fault.what()).find("script") == std::string::npos) std::abort();
    }
    return 0;
}
