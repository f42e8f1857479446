// SPDX-License-Identifier: MIT
// Attribute objects: value types, default accessors, making and adding them.
#include "ApiAttributes.h"

#include "ApiAtomText.h"
#include "ApiFaults.h"
#include "ApiObjects.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>

namespace HostApi {
namespace {

template <class T>
void Store(char* place, T value) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): a pointer is stored, not what it points to
    std::memcpy(place, static_cast<const void*>(&value), sizeof(T));
}

template <class T>
T Load(const char* place) {
    T value{};
    // NOLINTNEXTLINE(bugprone-sizeof-expression): as above
    std::memcpy(static_cast<void*>(&value), place, sizeof(T));
    return value;
}

template <class T>
void StoreNumber(char* place, const t_atom& atom) {
    if constexpr (std::is_floating_point_v<T>) {
        Store(place, static_cast<T>(atom_getfloat(&atom)));
    } else {
        Store(place, static_cast<T>(atom_getlong(&atom)));
    }
}

template <class T>
void LoadNumber(const char* place, t_atom& atom) {
    if constexpr (std::is_floating_point_v<T>) {
        atom_setfloat(&atom, static_cast<double>(Load<T>(place)));
    } else {
        atom_setlong(&atom, static_cast<t_atom_long>(Load<T>(place)));
    }
}

void StoreSymbol(char* place, const t_atom& atom) {
    // In an attribute of type symbol a number is stored as its text.
    Store(place, atom.a_type == A_SYM ? atom_getsym(&atom) : gensym(AtomText(atom).c_str()));
}

void LoadSymbol(const char* place, t_atom& atom) {
    auto* const symbol = Load<t_symbol*>(place);
    atom_setsym(&atom, symbol ? symbol : gensym(""));
}

void StorePointer(char* place, const t_atom& atom) { Store(place, atom_getobj(&atom)); }

void LoadPointer(const char* place, t_atom& atom) { atom_setobj(&atom, Load<void*>(place)); }

void StoreAtom(char* place, const t_atom& atom) { Store(place, atom); }

void LoadAtom(const char* place, t_atom& atom) { atom = Load<t_atom>(place); }

// clang-format off
constexpr ValueType kValueTypes[] = {
    // name       size                  store                   load
    {"atom",      sizeof(t_atom),       StoreAtom,              LoadAtom},
    {"char",      sizeof(char),         StoreNumber<char>,      LoadNumber<char>},
    {"long",      sizeof(max_long),     StoreNumber<max_long>,  LoadNumber<max_long>},
    {"int32",     sizeof(t_int32),      StoreNumber<t_int32>,   LoadNumber<t_int32>},
    {"atom_long", sizeof(t_atom_long),  StoreNumber<t_int64>,   LoadNumber<t_int64>},
    {"float32",   sizeof(float),        StoreNumber<float>,     LoadNumber<float>},
    {"float64",   sizeof(double),       StoreNumber<double>,    LoadNumber<double>},
    {"filepath",  sizeof(t_filepath),   StoreNumber<short>,     LoadNumber<short>},
    {"symbol",    sizeof(t_symbol*),    StoreSymbol,            LoadSymbol},
    {"object",    sizeof(void*),        StorePointer,           LoadPointer},
    {"pointer",   sizeof(void*),        StorePointer,           LoadPointer},
};
// clang-format on

/// The atom after conversion to the attribute's type.
t_atom Converted(const t_atom& atom, const ValueType& type) {
    char place[sizeof(t_atom)] = {};
    t_atom result{};
    type.store(place, atom);
    type.load(place, result);
    return result;
}

void* ValueName(Attribute* attribute) { return attribute->name; }
void* ValueTypeName(Attribute* attribute) { return attribute->type; }
t_ptr_int ValueFlags(Attribute* attribute) { return attribute->flags; }
void SetName(Attribute* attribute, t_symbol* name) { attribute->name = name; }
void SetFlags(Attribute* attribute, t_ptr_int flags) {
    attribute->flags = static_cast<max_long>(flags);
}
void SetMethod(Attribute* attribute, const t_symbol* which, method function) {
    if (which == gensym("get")) attribute->get = function;
    if (which == gensym("set")) attribute->set = function;
}

void AddAttributeMessages(Class& type) {
    struct {
        const char* name;
        method function;
    } const messages[] = {
        {"getname", MaxApi::ToMethod(ValueName)},   {"gettype", MaxApi::ToMethod(ValueTypeName)},
        {"getflags", MaxApi::ToMethod(ValueFlags)}, {"setname", MaxApi::ToMethod(SetName)},
        {"setflags", MaxApi::ToMethod(SetFlags)},   {"setmethod", MaxApi::ToMethod(SetMethod)},
    };
    for (const auto& message : messages)
        class_addmethod(&type, message.function, message.name, A_CANT, 0);
}

Class& AttributeClass() {
    static Class& type = []() -> Class& {
        Class& made = OwnClass<Attribute>("attribute");
        AddAttributeMessages(made);
        return made;
    }();
    return type;
}

Attribute* MakeAttribute(
    const char* name, const t_symbol* type, max_long flags, method get, method set) {
    auto* const attribute = new Attribute{};
    attribute->name = gensym(name);
    attribute->type = type ? const_cast<t_symbol*>(type) : gensym("atom");
    attribute->flags = flags;
    attribute->get = get;
    attribute->set = set;
    AdoptObject(attribute->Object(), AttributeClass());
    return attribute;
}

std::vector<t_atom> LoadFromRecord(const void* object, const Attribute& attribute) {
    const auto* const record = static_cast<const char*>(object);
    const ValueType& type = FindValueType(attribute.type);
    max_long count = static_cast<max_long>(attribute.size);
    if (attribute.offsetCount > 0)
        std::memcpy(&count, record + attribute.offsetCount, sizeof count);
    count = std::clamp(count, max_long{0}, static_cast<max_long>(attribute.size));
    std::vector<t_atom> atoms(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < atoms.size(); ++i)
        type.load(record + attribute.offset + i * type.size, atoms[i]);
    return atoms;
}

void StoreInRecord(void* object, const Attribute& attribute, std::span<const t_atom> atoms) {
    auto* const record = static_cast<char*>(object);
    const ValueType& type = FindValueType(attribute.type);
    const std::size_t count = std::min(atoms.size(), attribute.size);
    for (std::size_t i = 0; i < count; ++i)
        type.store(record + attribute.offset + i * type.size, atoms[i]);
    if (attribute.offsetCount == 0) return;
    const auto stored = static_cast<max_long>(count);
    std::memcpy(record + attribute.offsetCount, &stored, sizeof stored);
}

void ClipAtom(t_atom& atom, const Clip& clip) {
    if (atom.a_type != A_LONG && atom.a_type != A_FLOAT) return;
    const double value = atom_getfloat(&atom);
    const bool below = clip.useMin && value < clip.min;
    const bool above = clip.useMax && value > clip.max;
    if (!below && !above) return;
    const double edge = below ? clip.min : clip.max;
    if (atom.a_type == A_LONG && edge == std::trunc(edge)) {
        atom.a_w.w_long = static_cast<t_atom_long>(edge);
    } else {
        atom_setfloat(&atom, edge);
    }
}

using Getter = t_max_err(void*, void*, max_long*, t_atom**);
using Setter = t_max_err(void*, void*, max_long, t_atom*);

}  // namespace

const ValueType& FindValueType(const t_symbol* name) {
    for (const ValueType& type : kValueTypes)
        if (name && type.name == name->s_name) return type;
    return kValueTypes[0];
}

Attribute* AsAttribute(void* pointer) { return AsOwn<Attribute>(AttributeClass, pointer); }

Attribute* FindAttribute(const std::vector<Attribute*>& list, const t_symbol* name) {
    for (Attribute* attribute : list)
        if (attribute->name == name) return attribute;
    return nullptr;
}

void PutAttribute(std::vector<Attribute*>& list, Attribute* attribute) {
    for (Attribute*& known : list) {
        if (known->name != attribute->name) continue;
        if (known != attribute) object_free(known->Object());
        known = attribute;
        return;
    }
    list.push_back(attribute);
}

Attribute* FindAttributeOf(void* object, const t_symbol* name) {
    const ObjectRecord* record = FindObject(object);
    if (!record) return nullptr;
    Attribute* const own = FindAttribute(record->attributes, name);
    return own ? own : FindAttribute(record->type->attributes, name);
}

t_max_err GetValue(void* object, Attribute& attribute, max_long* argc, t_atom** argv) {
    if (attribute.flags & ATTR_GET_OPAQUE) return MAX_ERR_GENERIC;
    t_max_err error = MAX_ERR_NONE;
    if (attribute.get) {
        error = MaxApi::FromMethod<Getter>(attribute.get)(object, attribute.Object(), argc, argv);
    } else if (attribute.place == Attribute::Place::Record) {
        error = HandOut(LoadFromRecord(object, attribute), argc, argv);
    } else {
        error = HandOut(attribute.values, argc, argv);
    }
    if (error == MAX_ERR_NONE && attribute.clipOnGet && *argv)
        for (max_long i = 0; i < *argc; ++i) ClipAtom((*argv)[i], *attribute.clipOnGet);
    return error;
}

std::vector<t_atom> GetValues(void* object, Attribute& attribute) {
    max_long argc = 0;
    t_atom* argv = nullptr;
    std::vector<t_atom> values;
    if (GetValue(object, attribute, &argc, &argv) == MAX_ERR_NONE) {
        const auto atoms = Atoms(argc, argv);
        values.assign(atoms.begin(), atoms.end());
    }
    sysmem_freeptr(argv);
    return values;
}

t_max_err SetValue(void* object, Attribute& attribute, std::span<const t_atom> atoms) {
    if (attribute.flags & ATTR_SET_OPAQUE) return MAX_ERR_GENERIC;
    std::vector<t_atom> values(atoms.begin(), atoms.end());
    if (attribute.clipOnSet)
        for (t_atom& value : values) ClipAtom(value, *attribute.clipOnSet);
    t_max_err error = MAX_ERR_NONE;
    if (attribute.set) {
        error = MaxApi::FromMethod<Setter>(attribute.set)(
            object, attribute.Object(), static_cast<max_long>(values.size()), values.data());
    } else if (attribute.place == Attribute::Place::Record) {
        StoreInRecord(object, attribute, values);
    } else {
        for (t_atom& value : values) value = Converted(value, FindValueType(attribute.type));
        attribute.values = std::move(values);
    }
    // Looked up again, since the setter may have replaced the attribute.
    if (error == MAX_ERR_NONE)
        if (Attribute* const now = FindAttributeOf(object, attribute.name))
            object_notify(object, gensym("attr_modified"), now->Object());
    return error;
}

}  // namespace HostApi

using namespace HostApi;

t_object* attr_offset_new(const char* name,
                          const t_symbol* type,
                          max_long flags,
                          const method mget,
                          const method mset,
                          max_long offset) {
    if (InjectedFailure("attr_offset_new")) return nullptr;
    Attribute* const attribute = MakeAttribute(name, type, flags, mget, mset);
    attribute->place = Attribute::Place::Record;
    attribute->offset = static_cast<std::size_t>(offset);
    return attribute->Object();
}

t_object* attr_offset_array_new(const char* name,
                                t_symbol* type,
                                max_long size,
                                max_long flags,
                                method mget,
                                method mset,
                                max_long offsetcount,
                                max_long offset) {
    if (InjectedFailure("attr_offset_array_new")) return nullptr;
    Attribute* const attribute = MakeAttribute(name, type, flags, mget, mset);
    attribute->place = Attribute::Place::Record;
    attribute->size = static_cast<std::size_t>(size);
    attribute->offset = static_cast<std::size_t>(offset);
    attribute->offsetCount = static_cast<std::size_t>(offsetcount);
    return attribute->Object();
}

t_object* attribute_new(
    const char* name, t_symbol* type, max_long flags, method mget, method mset) {
    return MakeAttribute(name, type, flags, mget, mset)->Object();
}

t_object* attribute_new_atoms(
    const char* name, t_symbol* type, max_long flags, max_long argc, t_atom* argv) {
    Attribute* const attribute = MakeAttribute(name, type, flags, nullptr, nullptr);
    for (const t_atom& atom : Atoms(argc, argv))
        attribute->values.push_back(Converted(atom, FindValueType(type)));
    return attribute->Object();
}

t_object* attribute_new_parse(const char* name, t_symbol* type, max_long flags, const char* text) {
    std::vector<t_atom> atoms = ParseAtoms(text ? text : "");
    return attribute_new_atoms(name, type, flags, static_cast<max_long>(atoms.size()),
                               atoms.data());
}

t_max_err object_addattr(void* x, t_object* attr) {
    if (const auto code = InjectedFailure("object_addattr")) return *code;
    ObjectRecord* record = FindObject(x);
    if (!record || !AsAttribute(attr)) return MAX_ERR_INVALID_PTR;
    PutAttribute(record->attributes, AsAttribute(attr));
    return MAX_ERR_NONE;
}

t_max_err class_addattr(t_class* c, t_object* attr) {
    if (const auto code = InjectedFailure("class_addattr")) return *code;
    if (!c || !AsAttribute(attr)) return MAX_ERR_INVALID_PTR;
    PutAttribute(static_cast<Class*>(c)->attributes, AsAttribute(attr));
    return MAX_ERR_NONE;
}

void* class_attr_get(t_class* c, t_symbol* attrname) {
    return c ? FindAttribute(static_cast<Class*>(c)->attributes, attrname) : nullptr;
}

t_max_err object_chuckattr(void* x, t_symbol* name) {
    ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    const auto gone =
        std::erase_if(record->attributes, [name](const Attribute* a) { return a->name == name; });
    return gone > 0 ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}

t_max_err object_deleteattr(void* x, t_symbol* name) {
    ObjectRecord* record = FindObject(x);
    Attribute* const attribute = record ? FindAttribute(record->attributes, name) : nullptr;
    if (!attribute) return MAX_ERR_GENERIC;
    object_chuckattr(x, name);
    return object_free(attribute->Object());
}

t_object* object_clone(t_object* x) {
    Attribute* const source = AsAttribute(x);
    if (!source) return nullptr;
    auto* const copy = new Attribute(*source);
    AdoptObject(copy->Object(), AttributeClass());
    for (Attribute* property : FindObject(x)->attributes)
        object_addattr(copy->Object(), object_clone(property->Object()));
    return copy->Object();
}
