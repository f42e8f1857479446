// SPDX-License-Identifier: MIT
// Named loudspeaker layouts, sent to the object (`host layout NAME`).
#pragma once

#include "HostScript.h"

#include <string_view>

namespace Quilo::Host {

class Console;
class Object;

/// Throws: Fault (WrongInput) when the script sends a layout that has not one loudspeaker for each
/// signal outlet of the object.
void RefuseLayoutsOfOtherSizes(const Script& script, const Object& object);

/// Sends `speakers ae ...` and writes "layout: OUTPUT LABEL AZIMUTH ELEVATION" for each outlet;
/// nothing once the object is free.
/// @param name  of a layout that there is
void SendLayout(std::string_view name, Object& object, Console& console);

}  // namespace Quilo::Host
