// SPDX-License-Identifier: MIT
#include "src/ToyBox.h"

#include "max/VelkMaxDocumentation.h"
#include "max/VelkMaxStandardMessages.h"

#include <utility>

namespace Tests {

namespace {

using VelkMax::AsMethod;

struct ToyRecord {
    t_object object;
    float level;
};

ToyBox* current = nullptr;
t_class* toyClass = nullptr;

t_max_err GetOdd(void*, void*, max_long* argc, t_atom** argv) {
    if (current->getOdd) return current->getOdd(argc, argv);
    char isAllocated = 0;
    atom_alloc(argc, argv, &isAllocated);
    return atom_setlong(*argv, 7);
}

t_max_err SetOdd(void*, void*, max_long, t_atom*) { return MAX_ERR_NONE; }

t_max_err Unreadable(void*, void*, max_long*, t_atom**) { return MAX_ERR_DUPLICATE; }

void* MakeToy(t_symbol*, max_long, t_atom*) { return object_alloc(toyClass); }
void FreeToy(void*) {}

void RegisterClass() {
    toyClass = class_new("toy", AsMethod(&MakeToy), AsMethod(&FreeToy), sizeof(ToyRecord), nullptr,
                         A_GIMME, 0);
    VelkMax::AddMessages(toyClass, VelkMax::StandardMessages<ToyRecord>());
    t_object* const level = attr_offset_new("level", gensym("float32"), 0, nullptr, nullptr,
                                            offsetof(ToyRecord, level));
    class_addattr(toyClass, level);
    class_attr_addattr_parse(toyClass, "level", "default", gensym("float32"), 0, "5");
    class_addattr(toyClass, attr_offset_new("odd", gensym("long"), 0, AsMethod(&GetOdd),
                                            AsMethod(&SetOdd), 0));
    class_register(gensym("box"), toyClass);
}

const char* KindText(HostApi::PostKind kind) {
    constexpr const char* kTexts[] = {"post: ", "error: ", "warn: ", "bug: "};
    return kTexts[static_cast<int>(kind)];
}

}  // namespace

ToyBox::ToyBox() {
    current = this;
    if (toyClass == nullptr) RegisterClass();
    HostApi::SetConsoleSink([this](HostApi::PostKind kind, std::string_view text, t_object*) {
        console_.push_back(KindText(kind) + std::string(text));
    });
    object_ = static_cast<t_object*>(object_new_typed(gensym("box"), gensym("toy"), 0, nullptr));
}

ToyBox::~ToyBox() {
    object_free(object_);
    HostApi::FailCall("object_attr_getvalueof", 0, MAX_ERR_NONE);
    HostApi::SetConsoleSink({});
    current = nullptr;
}

void ToyBox::Send(const std::string& message) {
    const std::vector<t_atom> atoms = HostApi::ParseAtoms(message);
    HostApi::DeliverMessage(object_, 0, atom_getsym(atoms.data()), std::span(atoms).subspan(1));
}

void ToyBox::AddProperty(const char* property, const char* type, const char* text) {
    object_attr_addattr_parse(object_, "odd", property, gensym(type), 0, text);
}

void ToyBox::AddUnreadableProperty(const char* property) {
    object_attr_addattr(object_, gensym("odd"),
                        attribute_new(property, gensym("long"), 0, AsMethod(&Unreadable), nullptr));
}

std::vector<std::string> ToyBox::TakeConsole() { return std::exchange(console_, {}); }

}  // namespace Tests
