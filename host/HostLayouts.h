// SPDX-License-Identifier: MIT
// Named loudspeaker layouts, sent to the object (`host layout NAME`).
#pragma once

#include "HostScript.h"

#include <cstdint>
#include <string_view>

namespace Quilo::Host {

class Console;
class Object;

/// Throws: Fault (WrongInput) when a layout in the script does not have as many loudspeakers as the
/// object has signal outlets.
void RefuseLayoutsOfOtherSizes(const Script& script, const Object& object);

/// What a file of the outlets says about their loudspeakers, as in WAVE_FORMAT_EXTENSIBLE: those of
/// the one layout that the script names before the audio, where no other statement places
/// loudspeakers and where a file may have them in this order; else 0.
std::uint32_t ChannelMaskOf(const Script& script);

/// Sends `speakers ae ...` and writes "layout: OUTPUT LABEL AZIMUTH ELEVATION" for each outlet;
/// nothing once the object is free.
/// @param name  of an existing layout
void SendLayout(std::string_view name, Object& object, Console& console);

}  // namespace Quilo::Host
