// SPDX-License-Identifier: MIT
// Loading what comes in files: head-related filters and those of the near field go the same way.
//
// A load takes its turn inside the object's door and leaves it to search. Reading is long work,
// which an errand does not wait for. Installing is done inside the door and short, unless a setting
// or the rate has changed since the filters were computed: then it computes them again.
#pragma once

#include "QuiloPanEngine.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxStateTexts.h"

#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Quilo {

struct FoundSet {
    std::string path;  // as Load::Read takes it
    std::string name;  // for the console
};

/// Looks for a file of filters in Max's search path. A full path that leads nowhere is tried again
/// by the name of its file alone, under which it is then reported.
/// @param endings  tried behind the name, in this order
/// @return none, after an error was posted, for what cannot be found
inline std::optional<FoundSet> FindSet(const PanObject& object,
                                       const std::string& name,
                                       std::initializer_list<const char*> endings) {
    for (const char* const ending : endings) {
        if (const auto place = VelkMax::LocateFile((name + ending).c_str()))
            return FoundSet{VelkMax::FullPath(*place), name};
    }
    if (const auto place = VelkMax::LocateNamesake(name))
        return FoundSet{VelkMax::FullPath(*place), place->name};
    VelkMax::Error(object, VelkMax::kNotLocated, name.c_str());
    return std::nullopt;
}

/// `Kind` says what is loaded:
///     using Panner                what loads; other panners for which IsFor is true refuse what
///                                 was found
///     using Load                  of the panner: Read and Install
///     IsFor(object)               false, and refused, for panners that this is not for
///     Find(object, name)          outside the door; a FoundSet, or none after an error was posted
///     SourceOf(load, path)        outside the door: what the attribute reads once it is loaded
///     SetSource(object, source)
///     Attribute()                 its name
///     kLoaded, kNotLoaded         the console's texts, with the name of the FoundSet
template <class Kind>
class SetLoading final : public VelkMax::LongWork {
public:
    SetLoading(PanObject& object, typename Kind::Panner& panner) : object_(object), load_(panner) {}

    /// @param name  as the user wrote it      Thread: main, inside the door
    static void LoadNamed(PanObject& object, const std::string& name) {
        if (!Kind::IsFor(object)) return;
        auto loading = Begin(object);
        std::optional<FoundSet> found;
        object.TheDoor().StepOutside([&] { found = Kind::Find(object, name); });
        if (found) CarryOut(object, std::move(loading), *found);
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
    static void LoadFile(PanObject& object, const FoundSet& found) {
        if (!Kind::IsFor(object)) return;
        CarryOut(object, Begin(object), found);
    }

    void Compute() override {
        try {
            isRead_ = load_.Read(found_.path);
        } catch (...) {
            fault_ = std::current_exception();
        }
    }
    void Finish() override {
        t_symbol* source = nullptr;  // of what was read
        object_.TheDoor().StepOutside([&] {
            VelkMax::Guarded(object_, &object_error, [&] {
                if (fault_ != nullptr) std::rethrow_exception(fault_);
                if (isRead_) source = Kind::SourceOf(load_, found_.path);
            });
        });
        if (source == nullptr) {
            return VelkMax::Error(object_, Kind::kNotLoaded, found_.name.c_str());
        }
        // A load that was asked for later is in force and has been announced.
        if (!load_.Install()) return;
        Kind::SetSource(object_, source);
        VelkMax::Post(object_, Kind::kLoaded, found_.name.c_str());
        object_.TheDoor().Changed(Kind::Attribute());
    }

    /// Whether this panner loads, and the file is there; otherwise says why not.
    /// Thread: main, outside the door
    static bool Finds(const PanObject& object, const std::string& name) {
        return Kind::IsFor(object) && EngineAs<typename Kind::Panner>(object) != nullptr &&
               Kind::Find(object, name);
    }

private:
    /// Null where the panner loads nothing.
    static std::unique_ptr<SetLoading> Begin(PanObject& object) {
        auto* const panner = EngineAs<typename Kind::Panner>(object);
        return panner != nullptr ? std::make_unique<SetLoading>(object, *panner) : nullptr;
    }

    static void CarryOut(PanObject& object,
                         std::unique_ptr<SetLoading> loading,
                         const FoundSet& found) {
        if (loading == nullptr) return Refuse(object, Kind::kNotLoaded, found.name.c_str());
        loading->found_ = found;
        object.TheDoor().CarryOut(std::move(loading));
    }

    /// An errand: loads what the atom names.
    static void LoadInMain(void* x, t_symbol*, Atoms name) noexcept {
        PanObject& object = PanObject::Of(x);
        VelkMax::Guarded(object, &object_error, [&] {
            const VelkMax::Door::Visit inside(object.TheDoor());
            LoadNamed(object, name.First(1).Text());
        });
    }

    PanObject& object_;
    typename Kind::Load load_;
    FoundSet found_;
    bool isRead_ = false;
    std::exception_ptr fault_;  // what reading has thrown
};

}  // namespace Quilo
