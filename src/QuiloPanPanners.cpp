// SPDX-License-Identifier: MIT
#include "QuiloPanPanners.h"

#include "math/VelkDspKeywords.h"
#include "max/VelkMaxRestoring.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloHOAPanning.h"
#include "pan/QuiloHoaDiffusePanning.h"
#include "pan/QuiloKeywords.h"
#include "pan/QuiloNFCHOAPanning.h"
#include "pan/QuiloRecursivePanning.h"
#include "pan/QuiloSubwoofersPanning.h"

#include <algorithm>

namespace Quilo {

using VelkMax::Error;

namespace {

template <class Panner>
Panner* EngineAs(const PanObject& object) {
    return dynamic_cast<Panner*>(object.Engine());
}

template <class... Panners>
bool IsA(const PanObject& object) {
    return (... || (EngineAs<Panners>(object) != nullptr));
}

bool Is(const Pan& engine, std::initializer_list<Pan::Type> types) {
    return std::ranges::find(types, engine.GetType()) != types.end();
}

bool IsEngine(const PanObject& object, bool (*is)(const Pan&)) {
    return object.Engine() != nullptr && is(*object.Engine());
}

/// What a panner of that type answers; `otherwise` for any other engine.
template <class Panner, class Value>
Value Answer(const PanObject& object, Value (Panner::*get)() const, Value otherwise) {
    const auto* panner = EngineAs<Panner>(object);
    return panner != nullptr ? (panner->*get)() : otherwise;
}

/// Says so to whoever sets what the engine has not, but not to a state that brings back what such
/// an object answers.
template <class... Refusal>
void Refuse(const PanObject& object, const Refusal&... refusal) {
    if (!VelkMax::RestoringState::IsActive()) Error(object, refusal...);
}

/// The panner behind an attribute. Null, and refused, where another one stands in for that type.
template <class Panner, class... Refusal>
Panner* PannerElse(const PanObject& object, const Refusal&... refusal) {
    auto* const panner = EngineAs<Panner>(object);
    if (panner == nullptr) Refuse(object, refusal...);
    return panner;
}
template <class Panner>
Panner* PannerOf(const PanObject& object, const char* handler) {
    return PannerElse<Panner>(object, kNoPanner, handler);
}

/// The code of a word, by what the table accepts. A state that is restored brings printed words.
/// Where there is none, `invalid` says so.
template <class Code>
std::optional<Code> ReadKeyword(const PanObject& object,
                                const tav::KeywordTable<Code>& table,
                                const t_symbol* word,
                                const VelkMax::Text<const char*>& invalid) {
    auto code = table.Parse(word->s_name);
    if (!code && VelkMax::RestoringState::IsActive()) code = table.FindPrinted(word->s_name);
    if (!code) Error(object, invalid, word->s_name);
    return code;
}

t_symbol* Symbol(std::string_view text) { return gensym(std::string(text).c_str()); }

}  // namespace

bool IsDbap(const Pan& engine) { return Is(engine, {Pan::Type::Dbap, Pan::Type::Dbap3D}); }

bool IsNfcHoa(const Pan& engine) { return Is(engine, {Pan::Type::Nfchoa2D, Pan::Type::Nfchoa3D}); }

bool IsHoa(const Pan& engine) {
    return IsNfcHoa(engine) || Is(engine, {Pan::Type::Hoa2D, Pan::Type::Hoa3D});
}

bool IsSubwoofers(const Pan& engine) { return Is(engine, {Pan::Type::Subwoofers}); }

// ---- Distance-based panners

t_symbol* SpreadMode(const PanObject& object) {
    const auto mode = Answer(object, &DbapPanning::GetSpreadingMode, Pan::SpreadingMode::Omni);
    return Symbol(PanSpreadingModeKeywords().Print(mode));
}

void SetSpreadMode(PanObject& object, t_symbol* mode) {
    auto* const dbap = PannerElse<DbapPanning>(object, kOnlyDbap);
    if (dbap == nullptr) return;
    const auto code = ReadKeyword(object, PanSpreadingModeKeywords(), mode, kInvalidSpreadMode);
    if (code) dbap->SetSpreadingMode(*code);
}

max_long MuteOutside(const PanObject& object) {
    return Answer(object, &DbapPanning::MuteOutside, false) ? 1 : 0;
}

void SetMuteOutside(PanObject& object, max_long on) {
    auto* const dbap = PannerElse<DbapPanning>(object, kOnlyDbap);
    if (dbap != nullptr) dbap->SetMuteOutside(on != 0);
}

std::span<const float> SpreadXyz(const PanObject& object) {
    const auto* dbap = EngineAs<DbapPanning>(object);
    const std::span<float> values = object.PerSourceValues(3);
    std::ranges::fill(values, 0.f);
    for (unsigned index = 0; dbap != nullptr && index < values.size() / 3; ++index) {
        std::ranges::copy(dbap->SourceSpreadByDirection(index),
                          values.subspan(std::size_t{3} * index).begin());
    }
    return values;
}

void SetSpreadXyz(PanObject& object, const std::vector<float>& values) {
    auto* const dbap = PannerElse<DbapPanning>(object, kOnlyDbap);
    if (dbap == nullptr) return;
    const std::span<const float> before = SpreadXyz(object);
    std::vector<float> all(before.begin(), before.end());
    std::copy_n(values.begin(), std::min(values.size(), all.size()), all.begin());
    for (unsigned index = 0; index < all.size() / 3; ++index) {
        dbap->SetSpreadByDirection(index, std::span(all).subspan(std::size_t{3} * index, 3));
    }
}

bool SetSourceSpreadXyz(PanObject& object, unsigned index, std::span<const float> xyz) {
    auto* const dbap = EngineAs<DbapPanning>(object);
    if (dbap == nullptr) return false;
    dbap->SetSpreadByDirection(index, xyz);
    object.TheDoor().Changed(PanAttributeNames::Get().spreadXyz);
    return true;
}

// ---- Ambisonic panners

t_symbol* Encoding(const PanObject& object) {
    using tav::SphericalHarmonic;
    const Pan* engine = object.Engine();
    const auto code =
        engine != nullptr ? engine->GetNormalization() : SphericalHarmonic::Normalization::SN3D;
    return Symbol(tav::NormalizationKeywords().Print(code));
}

void SetEncoding(PanObject& object, t_symbol* encoding) {
    if (!IsA<HOAPanning, NFCHOAPanning, HoaDiffusePanning>(object)) {
        return Refuse(object, kOnlyHoa, "encoding");
    }
    const auto code = ReadKeyword(object, tav::NormalizationKeywords(), encoding, kInvalidEncoding);
    if (!code) return;
    object.Engine()->SetNormalization(*code);
    // One value under two names.
    object.TheDoor().Changed(PanAttributeNames::Get().encoding);
    object.TheDoor().Changed(PanAttributeNames::Get().norm);
}

t_symbol* HoaMode(const PanObject& object) {
    using Mode = tav::HoaEncodingVector::Mode;
    const Pan* engine = object.Engine();
    const Mode mode = engine != nullptr ? engine->GetComputationMode() : Mode::Precise;
    return Symbol(tav::HoaModeKeywords().Print(mode));
}

void SetHoaMode(PanObject& object, t_symbol* mode) {
    if (!IsA<HOAPanning, NFCHOAPanning>(object)) return Refuse(object, kOnlyHoa, "hoamode");
    const auto code = ReadKeyword(object, tav::HoaModeKeywords(), mode, kInvalidHoaMode);
    if (code) object.Engine()->SetComputationMode(*code);
}

max_long NfcHighPass(const PanObject& object) {
    return Answer(object, &NFCHOAPanning::HighPass, false) ? 1 : 0;
}

void SetNfcHighPass(PanObject& object, max_long on) {
    if (!IsEngine(object, IsNfcHoa)) return Error(object, kOnlyHoa, "nfchighpass");
    auto* const nfc = PannerOf<NFCHOAPanning>(object, "quilo_pan_update_nfchighpass");
    if (nfc != nullptr) nfc->SetHighPass(on != 0);
}

float SpeakersRadius(const PanObject& object) {
    return Answer(object, &NFCHOAPanning::SpeakersRadius, 1.f);
}

void SetSpeakersRadius(PanObject& object, float metres) {
    if (!IsEngine(object, IsNfcHoa)) return Error(object, kOnlyHoa, "speakersradius");
    auto* const nfc = PannerOf<NFCHOAPanning>(object, "quilo_pan_update_nfcradius");
    if (nfc != nullptr) nfc->SetSpeakersRadius(metres);
}

// ---- Subwoofers

float Cutoff(const PanObject& object) {
    return Answer(object, &SubwoofersPanning::Cutoff, SubwoofersPanning::kDefaultCutoffHz);
}

void SetCutoff(PanObject& object, float hz) {
    if (!IsEngine(object, IsSubwoofers)) return Error(object, kOnlySubwoofers, "cutoff");
    auto* const subwoofers = PannerOf<SubwoofersPanning>(object, "quilo_pan_update_subwoofers");
    if (subwoofers != nullptr) subwoofers->SetCutoff(hz);
}

// ---- The recursive panner

void SetCorners(PanObject& object, std::span<const float> azimuthsDeg) {
    auto* const panr = PannerOf<RecursivePanning>(object, "quilo_pan_corners");
    if (panr != nullptr) panr->SetCorners(azimuthsDeg);
}

}  // namespace Quilo
