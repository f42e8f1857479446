// SPDX-License-Identifier: MIT
#include "QuiloPanNearfield.h"

#include "QuiloPanEngine.h"
#include "QuiloPanSymbols.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxStateTexts.h"

#include <optional>
#include <string>

namespace Quilo {

using VelkMax::Error;
using VelkMax::Post;

namespace {

using Nearfield = BinauralPanningNearfield;

Nearfield* NearfieldOrRefuse(const PanObject& object) {
    return PannerOrRefusal<Nearfield>(object, kOnlyNearfield);
}

/// Empty for the built-in filters; none, and said so, for a file that cannot be found.
/// Thread: main, outside the door
std::optional<std::string> NearfieldPathOf(const PanObject& object, const std::string& name) {
    if (name.empty() || name == PanSymbols::Get().noHrtf->s_name) return std::string();
    if (const auto place = VelkMax::LocateFile(name.c_str())) return VelkMax::FullPath(*place);
    Error(object, VelkMax::kNotLocated, name.c_str());
    return std::nullopt;
}

/// The load takes its turn inside the door and leaves it to search and to read.
/// @param name  as the user wrote it, for the console
void LoadNearfieldNamed(PanObject& object, const std::string& name) {
    auto* const panner = NearfieldOrRefuse(object);
    if (panner == nullptr) return;
    Nearfield::NearfieldLoad load(*panner);
    t_symbol* source = nullptr;  // of filters that were read
    bool isThere = false;
    object.TheDoor().StepOutside([&] {
        const auto path = NearfieldPathOf(object, name);
        isThere = path.has_value();
        VelkMax::Guarded(object, &object_error, [&] {
            if (!path || !load.Read(*path)) return;
            source = path->empty() ? PanSymbols::Get().noHrtf : gensym(path->c_str());
        });
    });
    if (!isThere) return;
    if (source == nullptr) return Error(object, kNearfieldNotLoaded, name.c_str());
    // A load that was asked for later is in force and has been announced.
    if (!load.Install()) return;
    object.SetNearfieldSource(source);
    Post(object, kNearfieldLoaded, name.c_str());
    object.TheDoor().Changed(PanSymbols::Get().nearfieldFile);
}

/// An errand: loads what the atom names.
void LoadNearfieldInMain(void* x, t_symbol*, Atoms name) noexcept {
    PanObject& object = PanObject::Of(x);
    VelkMax::Guarded(object, &object_error, [&] {
        const VelkMax::Door::Visit inside(object.TheDoor());
        LoadNearfieldNamed(object, name.First(1).Text());
    });
}

/// The scheduler waits for no disk: the main thread reads the file.
void LoadNearfieldSoon(PanObject& object, const std::string& name) {
    if (systhread_ismainthread() != 0) return LoadNearfieldNamed(object, name);
    object.TheDoor().StepOutside([&] {
        t_atom atom{};
        atom_setsym(&atom, gensym(name.c_str()));
        object.TheDoor().SendToMain(
            {&LoadNearfieldInMain, VelkMax::Letter::Pace::InMain, nullptr, Atoms(1, &atom)});
    });
}

}  // namespace

void SetNearfieldFile(PanObject& object, std::string_view name) {
    if (NearfieldOrRefuse(object) == nullptr) return;
    // A state says again what is in force.
    if (name != object.NearfieldSource()->s_name) LoadNearfieldSoon(object, std::string(name));
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
    if (NearfieldOrRefuse(object) != nullptr) LoadNearfieldSoon(object, name->s_name);
}

}  // namespace Quilo
