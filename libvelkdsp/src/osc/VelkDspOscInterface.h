// SPDX-License-Identifier: MIT
// What can be driven by OSC messages, and the documentation of its addresses.
#pragma once

#include "osc/VelkDspOscBundle.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tav {

namespace OscDocumentation {

/// One address. In its text N stands for the number of a source, counted from 1, F for a coordinate
/// format.
struct Entry {
    std::string address;
    std::string help;
    std::string hint;  // of the arguments: "[number]"
};

}  // namespace OscDocumentation

/// Thread: control.
class OscInterface {
public:
    virtual ~OscInterface() = default;

    /// Carries a message out at once.
    /// @return false: there is no such address, or it has other arguments
    /// Throws: tav::Exception.
    virtual bool ProcessOsc(const OSCMessage& message) = 0;
    /// Whether a preset may hold it: ProcessOsc would take it, and it sets something of this
    /// object. Messages about presets are not accepted.  Throws: as ProcessOsc.
    virtual bool AcceptsOsc(const OSCMessage& message) const = 0;
    /// Appends an entry for every address.
    virtual void DocumentOsc(std::vector<OscDocumentation::Entry>& entries) const = 0;
    /// The whole state as messages that ProcessOsc takes.
    virtual OSCBundle OscState() const = 0;

    /// The messages of a preset in their order, all of which are accepted.
    /// Throws: tav::Exception that names the file and the message.
    std::vector<OSCMessage> ReadPreset(const std::filesystem::path& file) const;
    /// Carries out all messages of a preset, or none when one of them is not accepted.
    /// Throws: tav::Exception that names the file and the message; what the first message throws
    /// whose values are refused, after the last one.
    void LoadPreset(const std::filesystem::path& file);
    /// Writes the whole state.  Throws: tav::Exception that names the file.
    void ExportPreset(const std::filesystem::path& file) const;

protected:
    OscInterface() = default;
};

}  // namespace tav
