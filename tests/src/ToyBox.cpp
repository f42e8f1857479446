// SPDX-License-Identifier: MIT
#include "src/ToyBox.h"

#include "max/VelkMaxDocumentation.h"
#include "max/VelkMaxStandardMessages.h"

namespace Tests {

namespace {

using VelkMax::AsMethod;

struct ToyInside {
    explicit ToyInside(void* record) : door(record) {}
    VelkMax::Door door;
    VelkMax::KeptDictionary dictionary;
};

struct ToyRecord {
    t_object object;
    float level;
    ToyInside* inside;

    static ToyRecord& Of(void* record) { return *static_cast<ToyRecord*>(record); }
    VelkMax::ObjectParts Parts() { return {&object, inside->door, inside->dictionary}; }
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

void* MakeToy(t_symbol*, max_long, t_atom*) {
    void* const toy = object_alloc(toyClass);
    ToyRecord::Of(toy).inside = new ToyInside(toy);
    return toy;
}
void FreeToy(void* toy) { delete ToyRecord::Of(toy).inside; }

void RegisterClass() {
    if (toyClass != nullptr) return;
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

}  // namespace

ToyBox::ToyBox() : Box((RegisterClass(), "toy"), "") { current = this; }

ToyBox::~ToyBox() {
    HostApi::FailCall("object_attr_getvalueof", 0, MAX_ERR_NONE);
    current = nullptr;
}

void ToyBox::AddProperty(const char* property, const char* type, const char* text) {
    object_attr_addattr_parse(Get(), "odd", property, gensym(type), 0, text);
}

void ToyBox::AddUnreadableProperty(const char* property) {
    object_attr_addattr(Get(), gensym("odd"),
                        attribute_new(property, gensym("long"), 0, AsMethod(&Unreadable), nullptr));
}

}  // namespace Tests
