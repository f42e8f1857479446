// SPDX-License-Identifier: MIT
#include "QuiloPanHeadphones.h"

#include "QuiloPanEngine.h"
#include "QuiloPanPositions.h"
#include "QuiloPanSetLoading.h"
#include "QuiloPanSymbols.h"
#include "max/VelkMaxFiles.h"
#include "pan/QuiloBinauralModelPanning.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloKeywords.h"

#include <array>
#include <memory>
#include <string>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Reject;

namespace {

/// Null, and refused, for other panners.
template <class Panner>
Panner* PannerOrRefuse(const PanObject& object) {
    return PannerOrRefusal<Panner>(object, kOnlyBinaural);
}

void SetTorso(PanObject& object, void (BinauralPanningSnowmanModel::*set)(float), float value) {
    auto* const snowman = PannerOrRefusal<BinauralPanningSnowmanModel>(object, kOnlySnowman);
    if (snowman != nullptr) (snowman->*set)(value);
}

/// A word; a number is its own text. No symbol is made of it.
std::string WordOf(Atoms atoms) { return atoms.First(1).Text(); }

// ---- Loading

struct HrtfKind {
    using Panner = BinauralPanningDirect;
    using Load = BinauralPanningDirect::HrtfLoad;
    static constexpr const auto& kLoaded = kHrtfLoaded;
    static constexpr const auto& kNotLoaded = kHrtfNotLoaded;

    /// Panners by a model of the listener are for headphones, too, but load nothing.
    static bool IsFor(const PanObject& object) {
        return PannerOrRefuse<BinauralPanning>(object) != nullptr;
    }
    /// The words for the built-in set are kept as they are; a file is looked up.
    static std::optional<FoundSet> Find(const PanObject& object, const std::string& name) {
        const PanSymbols& words = PanSymbols::Get();
        if (name.empty() || name == words.builtInHrtf->s_name || name == words.noHrtf->s_name) {
            return FoundSet{words.builtInHrtf->s_name, name};
        }
        return FindSet(object, name, {"", ".sofa"});
    }
    static t_symbol* SourceOf(const Load& load, const std::string&) {
        const auto& infos = load.Set().Data().infos;
        const auto url = infos.find(HrtfInfo::kUrl);
        return url != infos.end() ? gensym(url->second.c_str()) : PanSymbols::Get().builtInHrtf;
    }
    static void SetSource(PanObject& object, t_symbol* source) { object.SetHrtfSource(source); }
    static t_symbol* Attribute() { return PanSymbols::Get().hrtfFile; }
};
using HrtfLoading = SetLoading<HrtfKind>;

/// An errand: loads what the user chooses.
void AskAndLoad(void* x, t_symbol*, Atoms) noexcept {
    PanObject& object = PanObject::Of(x);
    VelkMax::Guarded(object, &object_error, [&] {
        const auto place = VelkMax::AskForFile({});
        if (!place) return;
        const std::string path = VelkMax::FullPath(*place);
        const VelkMax::Door::Visit inside(object.TheDoor());
        HrtfLoading::LoadFile(object, {path, place->name});
    });
}

}  // namespace

// ---- Attributes

std::span<const float> ListenerPosition(const PanObject& object) {
    const std::span<float> values = object.PerSourceValues(3).first(3);
    const auto p = Answer(object, &BinauralPanning::ListenerPosition, tav::CartesianVector{});
    std::ranges::copy(std::array{p.x, p.y, p.z}, values.begin());
    return values;
}

void SetListenerPosition(PanObject& object, const std::vector<float>& xyz) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    tav::CartesianVector position = panner->ListenerPosition();
    float* const parts[] = {&position.x, &position.y, &position.z};
    for (std::size_t i = 0; i < std::min(xyz.size(), std::size(parts)); ++i) *parts[i] = xyz[i];
    panner->SetListenerPosition(position);
}

void SetHrtfFile(PanObject& object, std::string_view name) {
    if (PannerOrRefuse<BinauralPanning>(object) == nullptr) return;
    // A state says again what is in force.
    if (name != object.HrtfSource()->s_name) HrtfLoading::LoadSoon(object, std::string(name));
}

float CrossfadeTime(const PanObject& object) {
    return Answer(object, &BinauralPanning::CrossfadeTime, BinauralSettings().fadeMs);
}

void SetCrossfadeTime(PanObject& object, float ms) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner != nullptr) panner->SetCrossfadeTime(ms);
}

t_symbol* ItdType(const PanObject& object) {
    return PanSymbols::Get().itdTypes.Of(
        Answer(object, &BinauralPanning::ItdModel, InterauralTimeDifference().type));
}

void SetItdType(PanObject& object, std::string_view type) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, ItdTypeKeywords(), type, kInvalidItdType);
    if (code) panner->SetItdModel(*code);
}

t_symbol* ItdLatency(const PanObject& object) {
    return PanSymbols::Get().itdLatencies.Of(
        Answer(object, &BinauralPanning::ItdLatencyMode, InterauralTimeDifference().latencyMode));
}

void SetItdLatency(PanObject& object, std::string_view mode) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, ItdLatencyKeywords(), mode, kInvalidItdLatency);
    if (code) panner->SetItdLatencyMode(*code);
}

float HeadRadius(const PanObject& object) {
    return Answer(object, &BinauralPanning::HeadRadius,
                  InterauralTimeDifference::kDefaultHeadRadius);
}

void SetHeadRadius(PanObject& object, float metres) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner != nullptr) panner->SetHeadRadius(metres);
}

float TorsoReflection(const PanObject& object) {
    return Answer(object, &BinauralPanningSnowmanModel::TorsoReflection, Torso().reflection);
}

void SetTorsoReflection(PanObject& object, float coefficient) {
    SetTorso(object, &BinauralPanningSnowmanModel::SetTorsoReflection, coefficient);
}

float TorsoRadius(const PanObject& object) {
    return Answer(object, &BinauralPanningSnowmanModel::TorsoRadius, Torso().radius);
}

void SetTorsoRadius(PanObject& object, float metres) {
    SetTorso(object, &BinauralPanningSnowmanModel::SetTorsoRadius, metres);
}

float NeckHeight(const PanObject& object) {
    return Answer(object, &BinauralPanningSnowmanModel::NeckHeight, Torso().neckHeight);
}

void SetNeckHeight(PanObject& object, float metres) {
    SetTorso(object, &BinauralPanningSnowmanModel::SetNeckHeight, metres);
}

// ---- Messages

namespace {

/// The position that `listener` asks for; nothing, and said why, when it does not serve.
std::optional<tav::CartesianVector> ReadListener(const PanObject& object,
                                                 const BinauralPanning& panner,
                                                 Atoms atoms) {
    const auto reject = [&](const auto& text) {
        Reject(object, text, atoms);
        return std::nullopt;
    };
    if (!atoms.IsSymbol(0) && !atoms.IsNumber(0)) return reject(kInvalidListener);
    const auto formatted = ReadFormat(object, atoms);
    if (!formatted) return std::nullopt;
    if (!formatted->values.IsNumber(0)) return reject(kInvalidListenerValues);
    tav::CartesianVector position = panner.ListenerPosition();
    if (!ReadPosition(object, kListenerTexts, *formatted, position)) return std::nullopt;
    return position;
}

}  // namespace

void ListenerMessage(PanObject& object, Atoms atoms) {
    auto* const panner = PannerOrRefusal<BinauralPanning>(object, kOnlyBinauralListener);
    if (panner == nullptr) return;
    const auto position = ReadListener(object, *panner, atoms);
    if (!position) return;
    panner->SetListenerPosition(*position);
    object.TheDoor().Changed(PanSymbols::Get().listenerPosition);
}

bool AcceptsListener(const PanObject& object, Atoms atoms) {
    const auto* const panner = PannerOrRefusal<BinauralPanning>(object, kOnlyBinauralListener);
    return panner != nullptr && ReadListener(object, *panner, atoms);
}

bool AcceptsHrtfFile(const PanObject& object, Atoms name) {
    return HrtfLoading::Finds(object, WordOf(name));
}

void LoadMessage(PanObject& object, Atoms atoms) {
    if (!atoms.Empty()) return HrtfLoading::LoadNamed(object, WordOf(atoms));
    if (!HrtfKind::IsFor(object)) return;
    if (PannerOrRefusal<HrtfKind::Panner>(object, kHrtfNotLoaded, "") == nullptr) return;
    object.TheDoor().StepOutside([&] { object.TheDoor().SendToMain({&AskAndLoad}); });
}

void CrossfadeTypeMessage(PanObject& object, t_symbol* shape) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, FadeShapeKeywords(), shape->s_name, kInvalidFadeShape);
    if (code) panner->SetCrossfadeShape(*code);
}

bool AcceptsCrossfadeType(const PanObject& object, Atoms shape) {
    return PannerOrRefuse<BinauralPanning>(object) != nullptr &&
           ReadKeyword(object, FadeShapeKeywords(), WordOf(shape), kInvalidFadeShape);
}

namespace {

/// What `implementation` can be told. Where `isOfFilters`, only panners with measured filters have
/// it, and they have to be computed again.
struct ImplementationRow {
    std::string_view keyword;
    bool isOfFilters;
    bool (*fits)(Atoms value);
    void (*apply)(BinauralPanning& panner, Atoms value);
};

bool IsRealisation(Atoms value) {
    return HrtfRealisationKeywords().Parse(WordOf(value)).has_value();
}
void ApplyRealisation(BinauralPanning& panner, Atoms value) {
    const auto realisation = HrtfRealisationKeywords().Parse(WordOf(value));
    if (realisation)
        dynamic_cast<BinauralPanningDirect&>(panner).SetRealisation(
            *realisation, BinauralPanningDirect::Refitting::Later);
}

bool IsDelayKind(Atoms value) {
    return value.IsLong(0) && value.Long(0) >= 0 &&
           value.Long(0) <= static_cast<t_atom_long>(tav::DelayKind::Cardinal);
}
void ApplyDelayKind(BinauralPanning& panner, Atoms value) {
    panner.SetDelayKind(static_cast<unsigned>(value.Long(0)));
}

bool IsLength(Atoms value) {
    using Filtering = BinauralPanningDirect;
    return value.IsLong(0) && value.Long(0) >= Filtering::kShortestCut &&
           value.Long(0) <= Filtering::kLongestCut;
}
void ApplyLength(BinauralPanning& panner, Atoms value) {
    dynamic_cast<BinauralPanningDirect&>(panner).SetResponseLength(
        static_cast<unsigned>(value.Long(0)), BinauralPanningDirect::Refitting::Later);
}

bool IsReduction(Atoms value) { return value.AreNumbers(1); }
void ApplyReduction(BinauralPanning& panner, Atoms value) {
    panner.SetDelayReduction(static_cast<float>(value.Float(0)));
}

constexpr ImplementationRow kImplementation[] = {
    {"realisation", true, IsRealisation, ApplyRealisation},
    {"delay", false, IsDelayKind, ApplyDelayKind},
    {"length", true, IsLength, ApplyLength},
    {"reduction", false, IsReduction, ApplyReduction},
};

/// The row of a pair of a keyword and a value; null, and said so, when it does not serve.
const ImplementationRow* ReadImplementation(const PanObject& object, Atoms pair) {
    const bool hasFilters = EngineAs<BinauralPanningDirect>(object) != nullptr;
    for (const ImplementationRow& row : kImplementation) {
        if (row.keyword != WordOf(pair) || pair.Size() < 2) continue;
        if ((hasFilters || !row.isOfFilters) && row.fits(pair.From(1))) return &row;
    }
    Error(object, kInvalidImplementation, pair.Text().c_str());
    return nullptr;
}

}  // namespace

void ImplementationMessage(PanObject& object, Atoms atoms) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    BinauralPanningDirect* toRefit = nullptr;
    for (; !atoms.Empty(); atoms = atoms.From(2)) {
        const Atoms pair = atoms.First(2);
        const ImplementationRow* const row = ReadImplementation(object, pair);
        if (row == nullptr) continue;
        row->apply(*panner, pair.From(1));
        if (row->isOfFilters) toRefit = EngineAs<BinauralPanningDirect>(object);
    }
    if (toRefit == nullptr) return;
    object.TheDoor().CarryOut(
        std::make_unique<VelkMax::PlainWork>([toRefit] { toRefit->Refit(); }));
}

bool AcceptsImplementation(const PanObject& object, Atoms atoms) {
    if (PannerOrRefuse<BinauralPanning>(object) == nullptr) return false;
    for (; !atoms.Empty(); atoms = atoms.From(2)) {
        if (ReadImplementation(object, atoms.First(2)) == nullptr) return false;
    }
    return true;
}

}  // namespace Quilo
