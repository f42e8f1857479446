// SPDX-License-Identifier: MIT
// Which panner an object has, and the accessors of attributes that only some panners have: each
// uses the engine, or posts why it cannot.
#pragma once

#include "QuiloPanObject.h"

namespace Quilo {

/// Types that share attributes or messages.
enum class Family : std::uint8_t {
    Binaural,
    Dbap,
    Hoa,  // with or without near-field compensation
    Knn,
    NfcHoa,
    Nearfield,  // binaural, of that subtype
    Panr,
    Snowman,    // binaural, of that subtype
    Spreading,  // all whose sources have a width
    Subwoofers,
};

/// Decided by the type, and for one of its subtypes by that. With the subtype diffuse the engine is
/// a diffuse panner instead: the object still has the attributes of its type's family, but refuses
/// to set those that no diffuse panner has.
bool IsOf(const Pan& engine, Family family);
bool IsOf(const PanObject& object, Family family);  // false without an engine

// ---- Distance-based panners

t_symbol* SpreadMode(const PanObject& object);
void SetSpreadMode(PanObject& object, std::string_view mode);
max_long MuteOutside(const PanObject& object);
void SetMuteOutside(PanObject& object, max_long on);
/// x, y and z of each source, percent.
std::span<const float> SpreadXyz(const PanObject& object);
/// Values from the first source on; sources beyond the list keep theirs.
void SetSpreadXyz(PanObject& object, const std::vector<float>& values);
/// Spread of one source along x, y and z, percent.  @return false for other panners
bool SetSourceSpreadXyz(PanObject& object, unsigned index, std::span<const float> xyz);

// ---- Ambisonic panners

t_symbol* Encoding(const PanObject& object);
void SetEncoding(PanObject& object, std::string_view encoding);
t_symbol* HoaMode(const PanObject& object);
void SetHoaMode(PanObject& object, std::string_view mode);

max_long NfcHighPass(const PanObject& object);
void SetNfcHighPass(PanObject& object, max_long on);
float SpeakersRadius(const PanObject& object);
void SetSpeakersRadius(PanObject& object, float metres);

// ---- Subwoofers

float Cutoff(const PanObject& object);
void SetCutoff(PanObject& object, float hz);

// ---- The recursive panner

/// For objects of type panr; posts a refusal when the engine is a diffuse panner.
/// @param azimuthsDeg  four
void SetCorners(PanObject& object, std::span<const float> azimuthsDeg);

}  // namespace Quilo
