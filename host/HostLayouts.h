// SPDX-License-Identifier: MIT
// Named loudspeaker layouts, sent to the object (`host layout NAME`).
#pragma once

#include "HostScript.h"

#include <string_view>

namespace Quilo::Host {

class Console;
class Object;

/// Throws: Fault (WrongInput) when a layout in the script does not have as many loudspeakers as the
/// object has signal outlets.
void RefuseLayoutsOfOtherSizes(const Script& script, const Object& object);

/// Sends `speakers ae ...` and writes "layout: OUTPUT LABEL AZIMUTH ELEVATION" for each outlet;
/// nothing once the object is free.
/// @param name  of an existing layout
void SendLayout(std::string_view name, Object& object, Console& console);

}  // namespace Quilo::Host
