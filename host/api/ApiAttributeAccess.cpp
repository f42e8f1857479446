// SPDX-License-Identifier: MIT
// Using attributes: object_attr_... of the API.
#include "ApiAtomText.h"
#include "ApiAttributes.h"
#include "ApiFaults.h"
#include "ApiObjects.h"

#include <algorithm>

using namespace HostApi;

namespace {

/// The first atom of a value; A_NOTHING when there is none.
t_atom FirstValue(void* x, const t_symbol* name) {
    Attribute* const attribute = FindAttributeOf(x, name);
    if (!attribute) return {};
    const std::vector<t_atom> values = GetValues(x, *attribute);
    return values.empty() ? t_atom{} : values[0];
}

t_max_err SetOne(void* x, t_symbol* name, const t_atom& atom) {
    t_atom copy = atom;
    return object_attr_setvalueof(x, name, 1, &copy);
}

/// Copies up to `max` values of an attribute through `read`.  @return how many
template <class T, class Read>
max_long CopyValues(void* x, const t_symbol* name, max_long max, T* out, Read read) {
    Attribute* const attribute = FindAttributeOf(x, name);
    if (!attribute || max <= 0) return 0;
    const std::vector<t_atom> values = GetValues(x, *attribute);
    const std::size_t count = std::min(values.size(), static_cast<std::size_t>(max));
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<T>(read(&values[i]));
    return static_cast<max_long>(count);
}

/// Sets an attribute from `n` values through `write`.
template <class T, class Argument>
t_max_err SetValues(
    void* x, t_symbol* name, max_long n, const T* in, t_max_err (*write)(t_atom*, Argument)) {
    std::vector<t_atom> atoms(static_cast<std::size_t>(std::max(n, max_long{0})));
    for (std::size_t i = 0; i < atoms.size(); ++i) write(&atoms[i], static_cast<Argument>(in[i]));
    return object_attr_setvalueof(x, name, n, atoms.data());
}

}  // namespace

void* object_attr_get(void* x, t_symbol* name) {
    Attribute* const attribute = FindAttributeOf(x, name);
    return attribute ? attribute->Object() : nullptr;
}

t_max_err object_attr_getvalueof(void* x, t_symbol* name, max_long* argc, t_atom** argv) {
    if (const auto code = InjectedFailure("object_attr_getvalueof")) return *code;
    Attribute* const attribute = FindAttributeOf(x, name);
    return attribute ? GetValue(x, *attribute, argc, argv) : MAX_ERR_GENERIC;
}

t_max_err object_attr_setvalueof(void* x, t_symbol* name, max_long argc, t_atom* argv) {
    if (const auto code = InjectedFailure("object_attr_setvalueof")) return *code;
    Attribute* const attribute = FindAttributeOf(x, name);
    return attribute ? SetValue(x, *attribute, Atoms(argc, argv)) : MAX_ERR_GENERIC;
}

t_max_err object_attr_getnames(void* x, max_long* count, t_symbol*** names) {
    if (const auto code = InjectedFailure("object_attr_getnames")) return *code;
    const ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    std::vector<t_symbol*> found;
    found.reserve(record->type->attributes.size() + record->attributes.size());
    for (const Attribute* attribute : record->type->attributes) found.push_back(attribute->name);
    for (const Attribute* attribute : record->attributes)
        if (std::ranges::find(found, attribute->name) == found.end())
            found.push_back(attribute->name);
    *names = reinterpret_cast<t_symbol**>(sysmem_newptr((found.size() + 1) * sizeof(t_symbol*)));
    if (!*names) return MAX_ERR_OUT_OF_MEM;
    std::ranges::copy(found, *names);
    *count = static_cast<max_long>(found.size());
    return MAX_ERR_NONE;
}

max_long object_attr_usercanset(void* x, t_symbol* name) {
    const Attribute* attribute = FindAttributeOf(x, name);
    return attribute && !(attribute->flags & (ATTR_SET_OPAQUE | ATTR_SET_OPAQUE_USER)) ? 1 : 0;
}

max_long object_attr_usercanget(void* x, t_symbol* name) {
    const Attribute* attribute = FindAttributeOf(x, name);
    return attribute && !(attribute->flags & (ATTR_GET_OPAQUE | ATTR_GET_OPAQUE_USER)) ? 1 : 0;
}

void object_attr_getdump(void* x, t_symbol* name, max_long, t_atom*) {
    max_long argc = 0;
    t_atom* argv = nullptr;
    if (object_attr_getvalueof(x, name, &argc, &argv) == MAX_ERR_NONE)
        object_obex_dumpout(x, name, argc, argv);
    sysmem_freeptr(argv);
}

// ---- Single values

t_atom_long object_attr_getlong(void* x, t_symbol* name) {
    const t_atom value = FirstValue(x, name);
    return atom_getlong(&value);
}

t_max_err object_attr_setlong(void* x, t_symbol* name, t_atom_long v) {
    t_atom atom{};
    atom_setlong(&atom, v);
    return SetOne(x, name, atom);
}

t_atom_float object_attr_getfloat(void* x, t_symbol* name) {
    const t_atom value = FirstValue(x, name);
    return atom_getfloat(&value);
}

t_max_err object_attr_setfloat(void* x, t_symbol* name, t_atom_float v) {
    t_atom atom{};
    atom_setfloat(&atom, v);
    return SetOne(x, name, atom);
}

t_symbol* object_attr_getsym(void* x, t_symbol* name) {
    const t_atom value = FirstValue(x, name);
    return atom_getsym(&value);
}

t_max_err object_attr_setsym(void* x, t_symbol* name, t_symbol* v) {
    t_atom atom{};
    atom_setsym(&atom, v);
    return SetOne(x, name, atom);
}

t_object* object_attr_getobj(void* x, t_symbol* name) {
    const t_atom value = FirstValue(x, name);
    return static_cast<t_object*>(atom_getobj(&value));
}

t_max_err object_attr_setobj(void* x, t_symbol* name, t_object* v) {
    t_atom atom{};
    atom_setobj(&atom, v);
    return SetOne(x, name, atom);
}

// ---- Arrays

max_long object_attr_getlong_array(void* x, t_symbol* name, max_long max, t_atom_long* out) {
    return CopyValues(x, name, max, out, atom_getlong);
}

t_max_err object_attr_setlong_array(void* x, t_symbol* name, max_long n, t_atom_long* in) {
    return SetValues(x, name, n, in, atom_setlong);
}

max_long object_attr_getfloat_array(void* x, t_symbol* name, max_long max, float* out) {
    return CopyValues(x, name, max, out, atom_getfloat);
}

t_max_err object_attr_setfloat_array(void* x, t_symbol* name, max_long n, float* in) {
    return SetValues(x, name, n, in, atom_setfloat);
}

max_long object_attr_getdouble_array(void* x, t_symbol* name, max_long max, double* out) {
    return CopyValues(x, name, max, out, atom_getfloat);
}

t_max_err object_attr_setdouble_array(void* x, t_symbol* name, max_long n, double* in) {
    return SetValues(x, name, n, in, atom_setfloat);
}

max_long object_attr_getsym_array(void* x, t_symbol* name, max_long max, t_symbol** out) {
    return CopyValues(x, name, max, out, atom_getsym);
}

t_max_err object_attr_setsym_array(void* x, t_symbol* name, max_long n, t_symbol** in) {
    return SetValues(x, name, n, in, atom_setsym);
}

t_max_err object_attr_setparse(t_object* x, t_symbol* name, const char* text) {
    if (!text) return MAX_ERR_INVALID_PTR;
    Attribute* const attribute = FindAttributeOf(x, name);
    return attribute ? SetValue(x, *attribute, ParseAtoms(text)) : MAX_ERR_GENERIC;
}

// ---- State beside the value

t_max_err object_attr_touch(t_object* x, t_symbol* name) {
    void* const attribute = object_attr_get(x, name);
    return attribute ? object_notify(x, gensym("attr_modified"), attribute) : MAX_ERR_GENERIC;
}

t_ptr_int object_attr_getdisabled(t_object* x, t_symbol* name) {
    const ObjectRecord* record = FindObject(x);
    return record && record->disabledAttributes.contains(name) ? 1 : 0;
}

t_max_err object_attr_setdisabled(t_object* x, t_symbol* name, max_long way) {
    ObjectRecord* record = FindObject(x);
    if (!record || !FindAttributeOf(x, name)) return MAX_ERR_GENERIC;
    if (way) {
        record->disabledAttributes.insert(name);
    } else {
        record->disabledAttributes.erase(name);
    }
    return MAX_ERR_NONE;
}
