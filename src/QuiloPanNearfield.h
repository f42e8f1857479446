// SPDX-License-Identifier: MIT
// What only the binaural panner for near sources has: its attributes and its message.
#pragma once

#include "QuiloPanObject.h"
#include "pan/QuiloBinauralPanningNearfield.h"

#include <string_view>

namespace Quilo {

/// Loads the filters unless they are those in force.  @param name  as for LoadNearfieldMessage
void SetNearfieldFile(PanObject& object, std::string_view name);
float NearfieldRadius(const PanObject& object);
void SetNearfieldRadius(PanObject& object, float metres);

bool IsNearfieldSwitchOn(const PanObject& object, BinauralPanningNearfield::Switch which);
void SetNearfieldSwitch(PanObject& object, BinauralPanningNearfield::Switch which, bool on);
/// The accessors of one switch.
template <BinauralPanningNearfield::Switch kWhich>
max_long NearfieldSwitch(const PanObject& object) {
    return IsNearfieldSwitchOn(object, kWhich) ? 1 : 0;
}
template <BinauralPanningNearfield::Switch kWhich>
void SetNearfieldSwitch(PanObject& object, max_long on) {
    SetNearfieldSwitch(object, kWhich, on != 0);
}

/// Whether LoadNearfieldMessage would find the filters; posts why not.  Thread: main, outside the
/// door
bool AcceptsNearfieldFile(const PanObject& object, Atoms name);

/// @param name  a file, searched for as LoadMessage does; empty or "none": the built-in filters
void LoadNearfieldMessage(PanObject& object, t_symbol* name);

}  // namespace Quilo
