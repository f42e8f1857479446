// SPDX-License-Identifier: MIT
// Loading what comes in files: head-related filters and those of the near field go the same way.
//
// A load takes its turn inside the object's door, leaves it to search and to read, and comes back
// to install what was read.
#pragma once

#include "QuiloPanObject.h"
#include "max/VelkMaxStateTexts.h"

#include <optional>
#include <string>

namespace Quilo {

/// `Kind` says what is loaded:
///     using Load                  of the panner: Read and Install
///     PannerFor(object, name)     the panner to load into; null, and refused, for any other
///     PathOf(object, name)        outside the door; none, and said so, for what cannot be found
///     SourceOf(load, path)        outside the door: what the attribute reads once it is loaded
///     SetSource(object, source)
///     Attribute()                 its name
///     kLoaded, kNotLoaded         the console's texts, with the name as the user wrote it
template <class Kind>
class SetLoading {
public:
    /// @param name  as the user wrote it      Thread: main, inside the door
    static void LoadNamed(PanObject& object, const std::string& name) {
        auto* const panner = Kind::PannerFor(object, name);
        if (panner == nullptr) return;
        typename Kind::Load load(*panner);
        std::optional<std::string> path;
        object.TheDoor().StepOutside([&] { path = Kind::PathOf(object, name); });
        if (path) Finish(object, load, *path, name);
    }

    /// The scheduler waits for no disk: the main thread reads the file.  Thread: inside the door
    static void LoadSoon(PanObject& object, const std::string& name) {
        if (systhread_ismainthread() != 0) return LoadNamed(object, name);
        object.TheDoor().StepOutside([&] {
            t_atom atom{};
            atom_setsym(&atom, gensym(name.c_str()));
            object.TheDoor().SendToMain(
                {&LoadInMain, VelkMax::Letter::Pace::InMain, nullptr, Atoms(1, &atom)});
        });
    }

    /// Loads a file that was found.  Thread: main, inside the door
    static void LoadFile(PanObject& object, const std::string& path, const std::string& name) {
        auto* const panner = Kind::PannerFor(object, name);
        if (panner == nullptr) return;
        typename Kind::Load load(*panner);
        Finish(object, load, path, name);
    }

private:
    static void Finish(PanObject& object,
                       typename Kind::Load& load,
                       const std::string& path,
                       const std::string& name) {
        t_symbol* source = nullptr;  // of what was read
        object.TheDoor().StepOutside([&] {
            VelkMax::Guarded(object, &object_error, [&] {
                if (load.Read(path)) source = Kind::SourceOf(load, path);
            });
        });
        if (source == nullptr) return VelkMax::Error(object, Kind::kNotLoaded, name.c_str());
        // A load that was asked for later is in force and has been announced.
        if (!load.Install()) return;
        Kind::SetSource(object, source);
        VelkMax::Post(object, Kind::kLoaded, name.c_str());
        object.TheDoor().Changed(Kind::Attribute());
    }

    /// An errand: loads what the atom names.
    static void LoadInMain(void* x, t_symbol*, Atoms name) noexcept {
        PanObject& object = PanObject::Of(x);
        VelkMax::Guarded(object, &object_error, [&] {
            const VelkMax::Door::Visit inside(object.TheDoor());
            LoadNamed(object, name.First(1).Text());
        });
    }
};

}  // namespace Quilo
