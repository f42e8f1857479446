// SPDX-License-Identifier: MIT
// What only some panners have, as the accessors of attributes: each asks the engine or says why it
// cannot be asked.
#pragma once

#include "QuiloPanObject.h"

namespace Quilo {

bool IsDbap(const Pan& engine);
bool IsHoa(const Pan& engine);  // near-field compensated or not
bool IsNfcHoa(const Pan& engine);
bool IsSubwoofers(const Pan& engine);

// ---- Distance-based panners

t_symbol* SpreadMode(const PanObject& object);
void SetSpreadMode(PanObject& object, t_symbol* mode);
max_long MuteOutside(const PanObject& object);
void SetMuteOutside(PanObject& object, max_long on);
/// x, y and z of each source, percent.
std::span<const float> SpreadXyz(const PanObject& object);
/// From the first source on; what the list does not reach stays.
void SetSpreadXyz(PanObject& object, const std::vector<float>& values);
/// Spread of one source along x, y and z, percent.  @return false for other panners
bool SetSourceSpreadXyz(PanObject& object, unsigned index, std::span<const float> xyz);

// ---- Ambisonic panners

t_symbol* Encoding(const PanObject& object);
void SetEncoding(PanObject& object, t_symbol* encoding);
t_symbol* HoaMode(const PanObject& object);
void SetHoaMode(PanObject& object, t_symbol* mode);

max_long NfcHighPass(const PanObject& object);
void SetNfcHighPass(PanObject& object, max_long on);
float SpeakersRadius(const PanObject& object);
void SetSpeakersRadius(PanObject& object, float metres);

// ---- Subwoofers

float Cutoff(const PanObject& object);
void SetCutoff(PanObject& object, float hz);

// ---- The recursive panner

/// Says why not where the object has another one.  @param azimuthsDeg  four
void SetCorners(PanObject& object, std::span<const float> azimuthsDeg);

}  // namespace Quilo
