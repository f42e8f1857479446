// SPDX-License-Identifier: MIT
#include "src/PanBox.h"

#include "QuiloPanObject.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <shared_mutex>
#include <utility>
#include <vector>

extern "C" void ext_main(void*);

namespace Tests {

namespace {

std::shared_mutex watch;
std::vector<t_object*> watched;  // all that live, of any thread

/// Nothing of Max's that reaches others may be called by who is inside the door of an object.
void RefuseInside(const char* function) {
    const std::shared_lock guard(watch);
    if (std::ranges::none_of(watched, [](t_object* object) {
            return Quilo::PanObject::Of(object).TheDoor().IsInside();
        }))
        return;
    std::fprintf(stderr, "%s is called inside the door\n", function);
    std::abort();
}

const char* ClassName() {
    static const bool isRegistered = (ext_main(nullptr), true);
    return isRegistered ? "quilo.pan~" : "";
}

}  // namespace

Box::Box(const char* className, const std::string& arguments) {
    HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object*) {
        constexpr const char* kKinds[] = {"post: ", "error: ", "warn: ", "bug: "};
        console_.push_back(kKinds[static_cast<int>(kind)] + std::string(text));
    });
    std::vector<t_atom> atoms = HostApi::ParseAtoms(arguments);
    object_ = static_cast<t_object*>(object_new_typed(
        gensym("box"), gensym(className), static_cast<max_long>(atoms.size()), atoms.data()));
}

Box::~Box() {
    Free();
    HostApi::SetConsoleSink({});
}

void Box::Free() {
    if (object_ != nullptr) object_free(std::exchange(object_, nullptr));
}

void Box::Send(const std::string& message) {
    const std::vector<t_atom> atoms = HostApi::ParseAtoms(message);
    HostApi::DeliverMessage(object_, 0, atom_getsym(atoms.data()), std::span(atoms).subspan(1));
}

void Box::SendPacket(std::span<const std::byte> packet) {
    t_atom atoms[2]{};
    atom_setlong(&atoms[0], static_cast<t_atom_long>(packet.size()));
    atom_setlong(&atoms[1], reinterpret_cast<t_atom_long>(packet.data()));
    HostApi::DeliverMessage(object_, 0, gensym("FullPacket"), atoms);
}

std::string Box::Ask(const std::string& attribute) const {
    return HostApi::AtomText(HostApi::AttributeValue(object_, attribute));
}

std::vector<std::string> Box::TakeConsole() { return std::exchange(console_, {}); }

PanBox::PanBox(const std::string& arguments) : Box(ClassName(), arguments) {
    {
        const std::unique_lock guard(watch);
        if (Get() != nullptr) watched.push_back(Get());
    }
    HostApi::WatchCalls(&RefuseInside);
}

PanBox::~PanBox() { Free(); }

void PanBox::Free() {
    {
        const std::unique_lock guard(watch);
        std::erase(watched, Get());
    }
    Box::Free();
}

}  // namespace Tests
