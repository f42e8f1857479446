// SPDX-License-Identifier: MIT
// Atom arrays and string objects.
#include "ApiAtomArrays.h"

#include "ApiAtomText.h"
#include "ApiObjects.h"

namespace HostApi {
namespace {

Class& AtomArrayClass() {
    static Class& type = []() -> Class& {
        Class& made = OwnClass<AtomArray>("atomarray");
        made.c_freefun = [](void* pointer) -> void* {
            auto* const array = AtomArray::FromObject(static_cast<t_object*>(pointer));
            if (array->flags & kFreesChildren)
                for (t_atom& atom : array->atoms) FreeValue(atom);
            return nullptr;
        };
        return made;
    }();
    return type;
}

Class& StringClass() {
    static Class& type = OwnClass<String>("string");
    return type;
}

/// Updates the fields that a module can see (ac, av) after a change of `atoms`.
void ShowAtoms(AtomArray& array) {
    array.ac = static_cast<max_long>(array.atoms.size());
    array.av = array.atoms.data();
}

}  // namespace

void FreeValue(t_atom& value) {
    if (value.a_type == A_OBJ && FindObject(value.a_w.w_obj)) object_free(value.a_w.w_obj);
    value = {};
}

AtomArray* AsAtomArray(const void* pointer) { return AsOwn<AtomArray>(AtomArrayClass, pointer); }

String* AsString(const void* pointer) { return AsOwn<String>(StringClass, pointer); }

}  // namespace HostApi

using namespace HostApi;

t_atomarray* atomarray_new(max_long argc, t_atom* argv) {
    auto* const array = new AtomArray{};
    AdoptObject(&array->ob, AtomArrayClass());
    atomarray_setatoms(array, argc, argv);
    return array;
}

t_max_err atomarray_setatoms(t_atomarray* x, max_long argc, t_atom* argv) {
    AtomArray* const array = AsAtomArray(x);
    if (!array) return MAX_ERR_INVALID_PTR;
    const auto atoms = Atoms(argc, argv);
    array->atoms = std::vector<t_atom>(atoms.begin(), atoms.end());  // argv may point into it
    ShowAtoms(*array);
    return MAX_ERR_NONE;
}

t_max_err atomarray_getatoms(t_atomarray* x, max_long* argc, t_atom** argv) {
    if (!AsAtomArray(x)) return MAX_ERR_INVALID_PTR;
    *argc = x->ac;
    *argv = x->av;
    return MAX_ERR_NONE;
}

t_max_err atomarray_copyatoms(t_atomarray* x, max_long* argc, t_atom** argv) {
    const AtomArray* array = AsAtomArray(x);
    return array ? HandOut(array->atoms, argc, argv) : MAX_ERR_INVALID_PTR;
}

t_atom_long atomarray_getsize(t_atomarray* x) { return AsAtomArray(x) ? x->ac : 0; }

t_max_err atomarray_getindex(t_atomarray* x, max_long index, t_atom* out) {
    if (!AsAtomArray(x) || index < 0 || index >= x->ac) return MAX_ERR_GENERIC;
    *out = x->av[index];
    return MAX_ERR_NONE;
}

void atomarray_appendatom(t_atomarray* x, t_atom* a) { atomarray_appendatoms(x, 1, a); }

void atomarray_appendatoms(t_atomarray* x, max_long argc, t_atom* argv) {
    AtomArray* const array = AsAtomArray(x);
    if (!array) return;
    const auto added = Atoms(argc, argv);
    const std::vector<t_atom> copy(added.begin(), added.end());
    array->atoms.insert(array->atoms.end(), copy.begin(), copy.end());
    ShowAtoms(*array);
}

void atomarray_clear(t_atomarray* x) { atomarray_setatoms(x, 0, nullptr); }

t_string* string_new(const char* text) {
    auto* const string = new String{};
    AdoptObject(&string->s_obj, StringClass());
    string->text = text ? text : "";
    string->s_text = string->text.data();
    string->s_size = static_cast<max_long>(string->text.size());
    return string;
}

const char* string_getptr(t_string* x) {
    const String* string = AsString(x);
    return string ? string->text.c_str() : "";
}

max_long atomisatomarray(t_atom* a) { return AsAtomArray(atom_getobj(a)) ? 1 : 0; }

max_long atomisstring(const t_atom* a) { return AsString(atom_getobj(a)) ? 1 : 0; }
