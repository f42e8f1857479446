// SPDX-License-Identifier: MIT
// What can be driven by OSC messages, and the documentation of its addresses.
#pragma once

#include "osc/VelkDspOscBundle.h"
#include "osc/VelkDspOscReader.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>
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
    /// Whether ProcessOsc would take it.  Throws: as that.
    virtual bool AcceptsOsc(const OSCMessage& message) const = 0;
    /// Appends an entry for every address.
    virtual void DocumentOsc(std::vector<OscDocumentation::Entry>& entries) const = 0;
    /// The whole state as messages that ProcessOsc takes.
    virtual OSCBundle OscState() const = 0;

    /// Carries out all messages of a preset, or none when one of them is not for this object. A
    /// preset that loads another one is refused there.
    /// Throws: tav::Exception that names the file; the first one of the messages, after the last.
    void LoadPreset(const std::filesystem::path& file);
    /// Writes the whole state.  Throws: tav::Exception that names the file.
    void ExportPreset(const std::filesystem::path& file) const;

protected:
    OscInterface() = default;

private:
    std::atomic<bool> isLoading_ = false;
};

// ---- Arguments

/// Whether one argument fits one character of a format.
bool OscValueFits(const OscValue& value, char format) noexcept TAV_NONBLOCKING;

/// Whether arguments fit a format, one character each:
///     b  T, F, i or h      f  f          i, l  i or h     s  s
///     d  d                 n  f i h d    u     i or h, 0 or more
/// Any other character fits nothing.
/// @param isExact  no more arguments than characters, either
bool OscArgumentsFit(const OscMessageView& message,
                     std::string_view format,
                     bool isExact) noexcept TAV_NONBLOCKING;

/// T is true; so are i and h when they are exactly 1; all else is false.
bool OscFlag(const OscValue& value) noexcept TAV_NONBLOCKING;

}  // namespace tav
