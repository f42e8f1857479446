// SPDX-License-Identifier: MIT
#include "QuiloPanNearfield.h"

#include "QuiloPanEngine.h"
#include "QuiloPanSetLoading.h"
#include "QuiloPanSymbols.h"

#include <optional>
#include <string>

namespace Quilo {

namespace {

using Nearfield = BinauralPanningNearfield;

Nearfield* NearfieldOrRefuse(const PanObject& object) {
    return PannerOrRefusal<Nearfield>(object, kOnlyNearfield);
}

struct NearfieldKind {
    using Panner = Nearfield;
    using Load = Nearfield::NearfieldLoad;
    static constexpr const auto& kLoaded = kNearfieldLoaded;
    static constexpr const auto& kNotLoaded = kNearfieldNotLoaded;

    static bool IsFor(const PanObject& object) { return NearfieldOrRefuse(object) != nullptr; }
    /// No path stands for the built-in filters.
    static std::optional<FoundSet> Find(const PanObject& object, const std::string& name) {
        if (name.empty() || name == PanSymbols::Get().noHrtf->s_name) return FoundSet{{}, name};
        return FindSet(object, name, {""});
    }
    static t_symbol* SourceOf(const Load&, const std::string& path) {
        return path.empty() ? PanSymbols::Get().noHrtf : gensym(path.c_str());
    }
    static void SetSource(PanObject& object, t_symbol* source) {
        object.SetNearfieldSource(source);
    }
    static t_symbol* Attribute() { return PanSymbols::Get().nearfieldFile; }
};
using NearfieldLoading = SetLoading<NearfieldKind>;

}  // namespace

void SetNearfieldFile(PanObject& object, std::string_view name) {
    if (NearfieldOrRefuse(object) == nullptr) return;
    // A state says again what is in force.
    if (name != object.NearfieldSource()->s_name)
        NearfieldLoading::LoadSoon(object, std::string(name));
}

bool AcceptsNearfieldFile(const PanObject& object, Atoms name) {
    return NearfieldLoading::Finds(object, name.First(1).Text());
}

float NearfieldRadius(const PanObject& object) {
    return Answer(object, &Nearfield::Radius, Nearfield::kSmallestRadius);
}

void SetNearfieldRadius(PanObject& object, float metres) {
    if (auto* const panner = NearfieldOrRefuse(object)) panner->SetRadius(metres);
}

bool IsNearfieldSwitchOn(const PanObject& object, Nearfield::Switch which) {
    const auto* const panner = EngineAs<Nearfield>(object);
    return panner == nullptr || panner->IsOn(which);
}

void SetNearfieldSwitch(PanObject& object, Nearfield::Switch which, bool on) {
    if (auto* const panner = NearfieldOrRefuse(object)) panner->SetSwitch(which, on);
}

void LoadNearfieldMessage(PanObject& object, t_symbol* name) {
    if (NearfieldOrRefuse(object) != nullptr) NearfieldLoading::LoadSoon(object, name->s_name);
}

}  // namespace Quilo
