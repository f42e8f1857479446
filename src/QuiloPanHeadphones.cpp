// SPDX-License-Identifier: MIT
#include "QuiloPanHeadphones.h"

#include "QuiloPanPanners.h"
#include "QuiloPanPositions.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxRestoring.h"
#include "max/VelkMaxStateTexts.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloKeywords.h"

#include <array>
#include <string>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Post;
using VelkMax::Reject;

namespace {

constexpr char kBuiltInSet[] = "kemar";
constexpr char kNoSet[] = "none";

/// Names of the attributes that messages change too.
struct Names {
    static const Names& Get() {
        static const Names names;
        return names;
    }
    t_symbol* listener = gensym("listenerposition");
    t_symbol* hrtfFile = gensym("hrtffile");
};

template <class Panner>
Panner* EngineAs(const PanObject& object) {
    return dynamic_cast<Panner*>(object.Engine());
}

/// Null, and refused, for other panners.
template <class Panner>
Panner* PannerOrRefuse(const PanObject& object) {
    auto* const panner = EngineAs<Panner>(object);
    if (panner == nullptr && !VelkMax::RestoringState::IsActive()) Error(object, kOnlyBinaural);
    return panner;
}

/// A state that is restored brings printed words.
template <class Code>
std::optional<Code> ReadKeyword(const PanObject& object,
                                const tav::KeywordTable<Code>& table,
                                std::string_view word,
                                const VelkMax::Text<const char*>& invalid) {
    auto code = table.Parse(word);
    if (!code && VelkMax::RestoringState::IsActive()) code = table.FindPrinted(word);
    if (!code) Error(object, invalid, std::string(word).c_str());
    return code;
}

t_symbol* Symbol(std::string_view text) { return gensym(std::string(text).c_str()); }

/// The words for the built-in set are kept as they are; a file is looked up.
std::optional<std::string> PathOf(const PanObject& object, const char* name) {
    const std::string text = name;
    if (text.empty() || text == kBuiltInSet || text == kNoSet) return kBuiltInSet;
    auto place = VelkMax::LocateFile(name);
    if (!place) place = VelkMax::LocateFile((text + ".sofa").c_str());
    if (place) return VelkMax::FullPath(*place);
    Error(object, VelkMax::kNotLocated, name);
    return std::nullopt;
}

void LoadHrtf(PanObject& object, const std::string& path, const char* name) {
    bool isLoaded = false;
    object.TheDoor().StepOutside([&] {
        VelkMax::Guarded(object, &object_error,
                         [&] { isLoaded = object.Engine()->LoadHrtf(path); });
    });
    if (!isLoaded) return Error(object, kHrtfNotLoaded, name);
    Post(object, kHrtfLoaded, name);
    object.TheDoor().Changed(Names::Get().hrtfFile);
}

void LoadHrtfNamed(PanObject& object, const char* name) {
    std::optional<std::string> path;
    object.TheDoor().StepOutside([&] { path = PathOf(object, name); });
    if (path) LoadHrtf(object, *path, name);
}

void AskAndLoad(void* x, t_symbol*, Atoms) noexcept {
    PanObject& object = PanObject::Of(x);
    VelkMax::Guarded(object, &object_error, [&] {
        const auto place = VelkMax::AskForFile({});
        if (!place) return;
        const std::string path = VelkMax::FullPath(*place);
        const VelkMax::Door::Visit inside(object.TheDoor());
        LoadHrtf(object, path, place->name.c_str());
    });
}

}  // namespace

void LoadBuiltInHrtf(Pan& engine) {
    if (IsOf(engine, Family::Binaural)) engine.LoadHrtf(kBuiltInSet);
}

// ---- Attributes

std::span<const float> ListenerPosition(const PanObject& object) {
    const std::span<float> values = object.PerSourceValues(3).first(3);
    const auto* const panner = EngineAs<BinauralPanning>(object);
    const auto p = panner != nullptr ? panner->ListenerPosition() : tav::CartesianVector{};
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

t_symbol* HrtfFile(const PanObject& object) {
    if (object.Engine() == nullptr) return gensym(kNoSet);
    const auto set = object.Engine()->GetHrtf();
    const auto& infos = set->Data().infos;
    const auto url = infos.find(HrtfInfo::kUrl);
    if (url != infos.end()) return Symbol(url->second);
    return gensym(set->Data().points.empty() ? kNoSet : kBuiltInSet);
}

void SetHrtfFile(PanObject& object, std::string_view name) {
    if (PannerOrRefuse<BinauralPanning>(object) == nullptr) return;
    // A state says again what is in force.
    if (name != HrtfFile(object)->s_name) LoadHrtfNamed(object, std::string(name).c_str());
}

float CrossfadeTime(const PanObject& object) {
    const auto* const panner = EngineAs<BinauralPanningDirect>(object);
    return panner != nullptr ? panner->CrossfadeTime() : BinauralPanningDirect::kDefaultCrossfadeMs;
}

void SetCrossfadeTime(PanObject& object, float ms) {
    auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
    if (panner != nullptr) panner->SetCrossfadeTime(ms);
}

t_symbol* ItdType(const PanObject& object) {
    const auto* const panner = EngineAs<BinauralPanning>(object);
    const auto type = panner != nullptr ? panner->ItdModel() : InterauralTimeDifference().type;
    return Symbol(ItdTypeKeywords().Print(type));
}

void SetItdType(PanObject& object, std::string_view type) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, ItdTypeKeywords(), type, kInvalidItdType);
    if (code) panner->SetItdModel(*code);
}

t_symbol* ItdLatency(const PanObject& object) {
    const auto* const panner = EngineAs<BinauralPanning>(object);
    const auto mode =
        panner != nullptr ? panner->ItdLatencyMode() : InterauralTimeDifference().latencyMode;
    return Symbol(ItdLatencyKeywords().Print(mode));
}

void SetItdLatency(PanObject& object, std::string_view mode) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, ItdLatencyKeywords(), mode, kInvalidItdLatency);
    if (code) panner->SetItdLatencyMode(*code);
}

float HeadRadius(const PanObject& object) {
    const auto* const panner = EngineAs<BinauralPanning>(object);
    return panner != nullptr ? panner->HeadRadius() : InterauralTimeDifference::kDefaultHeadRadius;
}

void SetHeadRadius(PanObject& object, float metres) {
    auto* const panner = PannerOrRefuse<BinauralPanning>(object);
    if (panner != nullptr) panner->SetHeadRadius(metres);
}

// ---- Messages

void ListenerMessage(PanObject& object, Atoms atoms) {
    auto* const panner = EngineAs<BinauralPanning>(object);
    if (panner == nullptr) return Error(object, kOnlyBinauralListener);
    if (!atoms.IsSymbol(0) && !atoms.IsNumber(0)) return Reject(object, kInvalidListener, atoms);
    const auto formatted = ReadFormat(object, atoms);
    if (!formatted) return;
    if (!formatted->values.IsNumber(0)) return Reject(object, kInvalidListenerValues, atoms);
    tav::CartesianVector position = panner->ListenerPosition();
    if (!ReadPosition(object, kListenerTexts, *formatted, position)) return;
    panner->SetListenerPosition(position);
    object.TheDoor().Changed(Names::Get().listener);
}

void LoadMessage(PanObject& object, Atoms atoms) {
    if (PannerOrRefuse<BinauralPanning>(object) == nullptr) return;
    if (atoms.Empty()) {
        return object.TheDoor().StepOutside([&] { object.TheDoor().SendToMain({&AskAndLoad}); });
    }
    LoadHrtfNamed(object, atoms.Symbol(0)->s_name);
}

void CrossfadeTypeMessage(PanObject& object, t_symbol* shape) {
    auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
    if (panner == nullptr) return;
    const auto code = ReadKeyword(object, FadeShapeKeywords(), shape->s_name, kInvalidFadeShape);
    if (code) panner->SetCrossfadeShape(*code);
}

namespace {

/// What `implementation` can be told; false: the value does not serve.
struct ImplementationRow {
    const char* keyword;
    bool (*apply)(BinauralPanningDirect& panner, Atoms value);
};

bool ApplyRealisation(BinauralPanningDirect& panner, Atoms value) {
    const auto realisation = HrtfRealisationKeywords().Parse(value.Symbol(0)->s_name);
    if (realisation) panner.SetRealisation(*realisation);
    return realisation.has_value();
}

bool ApplyDelayKind(BinauralPanningDirect& panner, Atoms value) {
    const t_atom_long code = value.IsLong(0) ? value.Long(0) : -1;
    if (code < 0 || code > static_cast<t_atom_long>(tav::DelayKind::Cardinal)) return false;
    panner.SetDelayKind(static_cast<unsigned>(code));
    return true;
}

bool ApplyLength(BinauralPanningDirect& panner, Atoms value) {
    const t_atom_long taps = value.IsLong(0) ? value.Long(0) : 0;
    if (taps < BinauralPanningDirect::kShortestCut || taps > BinauralPanningDirect::kLongestCut) {
        return false;
    }
    panner.SetResponseLength(static_cast<unsigned>(taps));
    return true;
}

bool ApplyReduction(BinauralPanningDirect& panner, Atoms value) {
    if (!value.AreNumbers(1)) return false;
    panner.SetDelayReduction(static_cast<float>(value.Float(0)));
    return true;
}

constexpr ImplementationRow kImplementation[] = {
    {"realisation", ApplyRealisation},
    {"delay", ApplyDelayKind},
    {"length", ApplyLength},
    {"reduction", ApplyReduction},
};

}  // namespace

void ImplementationMessage(PanObject& object, Atoms atoms) {
    auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
    if (panner == nullptr) return;
    for (; !atoms.Empty(); atoms = atoms.From(2)) {
        const Atoms pair = atoms.First(2);
        const std::string_view keyword = pair.Symbol(0)->s_name;
        const auto row = std::ranges::find(kImplementation, keyword, &ImplementationRow::keyword);
        const bool isKnown = row != std::end(kImplementation) && pair.Size() == 2;
        if (isKnown && row->apply(*panner, pair.From(1))) continue;
        Error(object, kInvalidImplementation, pair.Text().c_str());
    }
}

}  // namespace Quilo
