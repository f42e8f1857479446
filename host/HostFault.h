// SPDX-License-Identifier: MIT
// Why the program ends early: one line for standard error and the exit status that goes with it.
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
inline Fault ScriptFault(std::string_view script, int line, std::string_view text) {
    return {ExitStatus::WrongInput,
            std::string(script) + ":" + std::to_string(line) + ": " + std::string(text)};
}

}  // namespace Quilo::Host
