// SPDX-License-Identifier: MIT
#include "src/PanBox.h"

#include <utility>

extern "C" void ext_main(void*);

namespace Tests {

namespace {

const char* KindText(HostApi::PostKind kind) {
    switch (kind) {
        case HostApi::PostKind::Post: return "post: ";
        case HostApi::PostKind::Error: return "error: ";
        case HostApi::PostKind::Warning: return "warn: ";
        case HostApi::PostKind::Bug: return "bug: ";
    }
    return "";
}

}  // namespace

PanBox::PanBox(const std::string& arguments) {
    static const bool isRegistered = (ext_main(nullptr), true);
    static_cast<void>(isRegistered);
    HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object*) {
        console_.push_back(KindText(kind) + std::string(text));
    });
    std::vector<t_atom> atoms = HostApi::ParseAtoms(arguments);
    object_ = static_cast<t_object*>(object_new_typed(
        gensym("box"), gensym("quilo.pan~"), static_cast<max_long>(atoms.size()), atoms.data()));
}

PanBox::~PanBox() {
    Free();
    HostApi::SetConsoleSink({});
}

void PanBox::Free() {
    if (object_ != nullptr) object_free(std::exchange(object_, nullptr));
}

void PanBox::Send(const std::string& message) {
    const std::vector<t_atom> atoms = HostApi::ParseAtoms(message);
    HostApi::DeliverMessage(object_, 0, atom_getsym(atoms.data()), std::span(atoms).subspan(1));
}

std::string PanBox::Ask(const std::string& attribute) const {
    return HostApi::AtomText(HostApi::AttributeValue(object_, attribute));
}

std::vector<std::string> PanBox::TakeConsole() { return std::exchange(console_, {}); }

}  // namespace Tests
