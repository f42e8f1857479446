// SPDX-License-Identifier: MIT
// Any text as a script: read or refused with a fault that names the script; and a message that was
// read can be spelled so that it reads the same again.
#include "HostFault.h"
#include "HostScript.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace Quilo::Host;

namespace {

Script Respelled(const Script& script) {
    std::string text = "object";
    for (const Atom& atom : script.box) text += " " + AtomSpelling(atom);
    text += "\n";
    for (const Statement& statement : script.statements) {
        if (statement.directive != Directive::None || statement.timed) continue;
        for (const Atom& atom : statement.atoms) text += AtomSpelling(atom) + " ";
        text += "\n";
    }
    return ParseScript(text, "respelled");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Script script;
    try {
        script = ParseScript(text, "script");
    } catch (const Fault& fault) {
        if (std::string(fault.what()).find("script") == std::string::npos) std::abort();
        return 0;
    }
    if (Respelled(script).box != script.box) std::abort();
    return 0;
}
