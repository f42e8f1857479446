// SPDX-License-Identifier: MIT
// The exception that ends the program: one line for standard error and an exit status.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Quilo::Host {

enum class ExitStatus : std::uint8_t {
    Done = 0,
    HostFailed = 1,        // the module could not be loaded, or the host itself failed
    WrongInput = 2,        // the command line, the script or a file was wrong
    ObjectComplained = 3,  // --strict, and the object posted an error or a bug
};

class Fault : public std::runtime_error {
public:
    Fault(ExitStatus status, const std::string& line) : std::runtime_error(line), status_(status) {}

    ExitStatus Status() const noexcept { return status_; }

private:
    ExitStatus status_;
};

/// A fault of the script, shown as "NAME:LINE: TEXT".
inline Fault ScriptFault(std::string_view script,
                         int line,
                         std::string_view text,
                         ExitStatus status = ExitStatus::WrongInput) {
    return {status, std::string(script) + ":" + std::to_string(line) + ": " + std::string(text)};
}

/// Why a statement cannot be carried out; AtLine adds the place in the script.
struct StatementFault : Fault {
    explicit StatementFault(const std::string& text, ExitStatus status = ExitStatus::WrongInput)
        : Fault(status, text) {}
};

/// Runs `action`, which belongs to a line of the script, and turns its StatementFault into a
/// ScriptFault.
template <class Action>
void AtLine(std::string_view script, int line, Action action) {
    try {
        action();
    } catch (const StatementFault& fault) {
        throw ScriptFault(script, line, fault.what(), fault.Status());
    }
}

}  // namespace Quilo::Host
