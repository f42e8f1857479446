// SPDX-License-Identifier: MIT
#include "src/PanBox.h"

#include <utility>

extern "C" void ext_main(void*);

namespace Tests {

namespace {

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

std::string Box::Ask(const std::string& attribute) const {
    return HostApi::AtomText(HostApi::AttributeValue(object_, attribute));
}

std::vector<std::string> Box::TakeConsole() { return std::exchange(console_, {}); }

PanBox::PanBox(const std::string& arguments) : Box(ClassName(), arguments) {}

}  // namespace Tests
