// SPDX-License-Identifier: MIT
// Which panner an object has, and what only some panners have as the accessors of attributes: each
// asks the engine or says why it cannot be asked.
#pragma once

#include "QuiloPanObject.h"

namespace Quilo {

/// Types that share attributes or messages.
enum class Family : std::uint8_t {
    Binaural,
    Dbap,
    Hoa,  // near-field compensated or not
    Knn,
    NfcHoa,
    Panr,
    Spreading,  // all whose sources have a width
    Subwoofers,
};

/// By the type, which decides what an object has. For the subtype diffuse another panner stands in
/// for that of the type: then the object belongs to the family and what it sets is refused.
bool IsOf(const Pan& engine, Family family);
bool IsOf(const PanObject& object, Family family);  // no, without an engine

// ---- Distance-based panners

t_symbol* SpreadMode(const PanObject& object);
void SetSpreadMode(PanObject& object, std::string_view mode);
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

/// For objects of its family; says so where another panner stands in.  @param azimuthsDeg  four
void SetCorners(PanObject& object, std::span<const float> azimuthsDeg);

}  // namespace Quilo
