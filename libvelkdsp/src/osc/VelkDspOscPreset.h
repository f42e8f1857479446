// SPDX-License-Identifier: MIT
// Presets: a state as a list of OSC messages, in a file of one of four formats.
//
//     .txt   a message a line: /source/1/xyz 1.0 2.0 0.5
//     .xml   <message address="/source/1/xyz"><f>1.0</f><f>2.0</f><f>0.5</f></message>
//     .json  an object with a member for each message: "/source/1/xyz": [1.0, 2.0, 0.5]
//     .osc   the packet of a bundle
//
// In text, integers are "i" or "h", numbers with a point or an exponent "f", true and false "T" and
// "F", quoted texts "s". Files that are written begin with "/preset/begin" and the number of
// messages that follow, so that one that has lost its end is noticed; others may do without.
#pragma once

#include "osc/VelkDspOscBundle.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tav {

enum class OscPresetFormat : std::uint8_t { Text, Xml, Json, Packet };

/// By the extension, in any case; nothing for others.
std::optional<OscPresetFormat> OscPresetFormatOf(const std::filesystem::path& file);

/// The content of a file.  Throws: std::bad_alloc.
std::string WriteOscPreset(const OSCBundle& state, OscPresetFormat format);
/// @return the messages, without "/preset/begin"
/// Throws: tav::Exception that says what is wrong and in which line.
OSCBundle ReadOscPreset(std::string_view content, OscPresetFormat format);

/// The same with a file. A file that cannot be written whole is not touched.
/// Throws: tav::Exception that names the file.
void SaveOscPreset(const std::filesystem::path& file, const OSCBundle& state);
OSCBundle LoadOscPreset(const std::filesystem::path& file);

}  // namespace tav
