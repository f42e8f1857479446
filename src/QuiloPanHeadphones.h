// SPDX-License-Identifier: MIT
// What only binaural panners have: their attributes and their messages.
#pragma once

#include "QuiloPanObject.h"

#include <span>
#include <string_view>
#include <vector>

namespace Quilo {

// ---- Attributes: each asks the engine or says why it cannot be asked.

/// x, y, z, metres.
std::span<const float> ListenerPosition(const PanObject& object);
/// What the list does not reach stays.
void SetListenerPosition(PanObject& object, const std::vector<float>& xyz);
/// Loads the set unless it is the one in force.  @param name  as for LoadMessage
void SetHrtfFile(PanObject& object, std::string_view name);
float CrossfadeTime(const PanObject& object);
void SetCrossfadeTime(PanObject& object, float ms);
t_symbol* ItdType(const PanObject& object);
void SetItdType(PanObject& object, std::string_view type);
t_symbol* ItdLatency(const PanObject& object);
void SetItdLatency(PanObject& object, std::string_view mode);
float HeadRadius(const PanObject& object);
void SetHeadRadius(PanObject& object, float metres);

// Of the subtype snowman.
float TorsoReflection(const PanObject& object);
void SetTorsoReflection(PanObject& object, float coefficient);
float TorsoRadius(const PanObject& object);
void SetTorsoRadius(PanObject& object, float metres);
float NeckHeight(const PanObject& object);
void SetNeckHeight(PanObject& object, float metres);

// ---- Messages

void ListenerMessage(PanObject& object, Atoms atoms);
/// A file in the search path, with or without ".sofa", or "kemar" or "none" for the built-in set;
/// without a name the user is asked. A full path that leads nowhere is searched for by the name of
/// its file. The file is read with nobody held up.  Thread: main
void LoadMessage(PanObject& object, Atoms atoms);
void CrossfadeTypeMessage(PanObject& object, t_symbol* shape);
/// Pairs of a keyword and a value.
void ImplementationMessage(PanObject& object, Atoms atoms);

// ---- Whether the object would take such a message with these values. Each posts why not.
// Thread: main, outside the door

bool AcceptsHrtfFile(const PanObject& object, Atoms name);
bool AcceptsListener(const PanObject& object, Atoms atoms);
bool AcceptsCrossfadeType(const PanObject& object, Atoms shape);
bool AcceptsImplementation(const PanObject& object, Atoms atoms);

}  // namespace Quilo
