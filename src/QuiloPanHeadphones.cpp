// SPDX-License-Identifier: MIT
#include "QuiloPanHeadphones.h"

#include "QuiloPanEngine.h"
#include "QuiloPanPositions.h"
#include "QuiloPanSymbols.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxStateTexts.h"
#include "pan/QuiloBinauralModelPanning.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloKeywords.h"

#include <array>
#include <string>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Post;
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

// ---- Loading. Each load takes its turn inside the door and leaves it to search and to read.

using HrtfLoad = BinauralPanningDirect::HrtfLoad;

/// The words for the built-in set are kept as they are; a file is looked up.
/// Thread: main, outside the door
std::optional<std::string> PathOf(const PanObject& object, const std::string& name) {
    const PanSymbols& words = PanSymbols::Get();
    if (name.empty() || name == words.builtInHrtf->s_name || name == words.noHrtf->s_name) {
        return words.builtInHrtf->s_name;
    }
    auto place = VelkMax::LocateFile(name.c_str());
    if (!place) place = VelkMax::LocateFile((name + ".sofa").c_str());
    if (place) return VelkMax::FullPath(*place);
    Error(object, VelkMax::kNotLocated, name.c_str());
    return std::nullopt;
}

/// What `hrtffile` reads for a set. Makes a symbol: outside the door.
t_symbol* SourceOf(const Hrtf& set) {
    const auto url = set.Data().infos.find(HrtfInfo::kUrl);
    if (url != set.Data().infos.end()) return gensym(url->second.c_str());
    return PanSymbols::Get().builtInHrtf;
}

/// @param name  as the user wrote it, for the console
void Finish(PanObject& object, HrtfLoad& load, const std::string& path, const std::string& name) {
    t_symbol* source = nullptr;  // of a set that was read
    object.TheDoor().StepOutside([&] {
        VelkMax::Guarded(object, &object_error, [&] {
            if (load.Read(path)) source = SourceOf(load.Set());
        });
    });
    if (source == nullptr) return Error(object, kHrtfNotLoaded, name.c_str());
    // A load that was asked for later is in force and has been announced.
    if (!load.Install()) return;
    object.SetHrtfSource(source);
    Post(object, kHrtfLoaded, name.c_str());
    object.TheDoor().Changed(PanSymbols::Get().hrtfFile);
}

void LoadNamed(PanObject& object, const std::string& name) {
    auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
    if (panner == nullptr) return;
    HrtfLoad load(*panner);
    std::optional<std::string> path;
    object.TheDoor().StepOutside([&] { path = PathOf(object, name); });
    if (path) Finish(object, load, *path, name);
}

/// An errand: loads what the user chooses.
void AskAndLoad(void* x, t_symbol*, Atoms) noexcept {
    PanObject& object = PanObject::Of(x);
    VelkMax::Guarded(object, &object_error, [&] {
        const auto place = VelkMax::AskForFile({});
        if (!place) return;
        const std::string path = VelkMax::FullPath(*place);
        const VelkMax::Door::Visit inside(object.TheDoor());
        auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
        if (panner == nullptr) return;
        HrtfLoad load(*panner);
        Finish(object, load, path, place->name);
    });
}

/// An errand: loads what the atoms name.
void LoadInMain(void* x, t_symbol*, Atoms name) noexcept {
    PanObject& object = PanObject::Of(x);
    VelkMax::Guarded(object, &object_error, [&] {
        const VelkMax::Door::Visit inside(object.TheDoor());
        LoadNamed(object, WordOf(name));
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
    if (PannerOrRefuse<BinauralPanningDirect>(object) == nullptr) return;
    // A state says again what is in force.
    if (name == object.HrtfSource()->s_name) return;
    const std::string file(name);
    if (systhread_ismainthread() != 0) return LoadNamed(object, file);
    // The scheduler waits for no disk: the main thread reads the file.
    object.TheDoor().StepOutside([&] {
        t_atom atom{};
        atom_setsym(&atom, gensym(file.c_str()));
        object.TheDoor().SendToMain(
            {&LoadInMain, VelkMax::Letter::Pace::InMain, nullptr, Atoms(1, &atom)});
    });
}

float CrossfadeTime(const PanObject& object) {
    return Answer(object, &BinauralPanningDirect::CrossfadeTime,
                  BinauralPanningDirect::kDefaultCrossfadeMs);
}

void SetCrossfadeTime(PanObject& object, float ms) {
    auto* const panner = PannerOrRefuse<BinauralPanningDirect>(object);
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

void ListenerMessage(PanObject& object, Atoms atoms) {
    auto* const panner = PannerOrRefusal<BinauralPanning>(object, kOnlyBinauralListener);
    if (panner == nullptr) return;
    if (!atoms.IsSymbol(0) && !atoms.IsNumber(0)) return Reject(object, kInvalidListener, atoms);
    const auto formatted = ReadFormat(object, atoms);
    if (!formatted) return;
    if (!formatted->values.IsNumber(0)) return Reject(object, kInvalidListenerValues, atoms);
    tav::CartesianVector position = panner->ListenerPosition();
    if (!ReadPosition(object, kListenerTexts, *formatted, position)) return;
    panner->SetListenerPosition(position);
    object.TheDoor().Changed(PanSymbols::Get().listenerPosition);
}

void LoadMessage(PanObject& object, Atoms atoms) {
    if (!atoms.Empty()) return LoadNamed(object, WordOf(atoms));
    if (PannerOrRefuse<BinauralPanningDirect>(object) == nullptr) return;
    object.TheDoor().StepOutside([&] { object.TheDoor().SendToMain({&AskAndLoad}); });
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
    std::string_view keyword;
    bool (*apply)(BinauralPanningDirect& panner, Atoms value);
};

bool ApplyRealisation(BinauralPanningDirect& panner, Atoms value) {
    const auto realisation = HrtfRealisationKeywords().Parse(WordOf(value));
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
        const auto row =
            std::ranges::find(kImplementation, WordOf(pair), &ImplementationRow::keyword);
        bool isApplied = false;
        if (row != std::end(kImplementation) && pair.Size() == 2) {
            // Filters may have to be computed: others are let in meanwhile.
            object.TheDoor().StepOutside([&] { isApplied = row->apply(*panner, pair.From(1)); });
        }
        if (!isApplied) Error(object, kInvalidImplementation, pair.Text().c_str());
    }
}

}  // namespace Quilo
