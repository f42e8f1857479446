// SPDX-License-Identifier: MIT
// Dictionaries and their names.
#include "ApiDictionaries.h"

#include "ApiAtomText.h"
#include "ApiFaults.h"
#include "ApiObjects.h"

#include <map>

namespace HostApi {
namespace {

std::map<const t_symbol*, Dictionary*>& DictionaryNames() {
    static auto& names = *new std::map<const t_symbol*, Dictionary*>;
    return names;
}

bool ReleaseReference(t_object* object) {
    Dictionary& dictionary = *Dictionary::FromObject(object);
    return --dictionary.references <= 0;
}

void Clear(Dictionary& dictionary) {
    for (DictionaryEntry& entry : dictionary.entries) FreeValue(entry.value);
    dictionary.entries.clear();
    dictionary.places.clear();
}

void* FreeEntries(void* pointer) {
    auto* const dictionary = Dictionary::FromObject(static_cast<t_object*>(pointer));
    dictobj_unregister(dictionary);
    Clear(*dictionary);
    return nullptr;
}

Class& DictionaryClass() {
    static Class& type = []() -> Class& {
        Class& made = OwnClass<Dictionary>("dictionary");
        made.release = ReleaseReference;
        made.c_freefun = FreeEntries;
        return made;
    }();
    return type;
}

DictionaryEntry* FindEntry(const t_dictionary* d, const t_symbol* key) {
    Dictionary* const dictionary = AsDictionary(d);
    if (!dictionary) return nullptr;
    const auto found = dictionary->places.find(key);
    return found == dictionary->places.end() ? nullptr : &dictionary->entries[found->second];
}

/// Stores a value under a key. An old value is freed, and the key keeps its place in the order.
t_max_err PutEntry(t_dictionary* d, t_symbol* key, const t_atom& value) {
    Dictionary* const dictionary = AsDictionary(d);
    if (!dictionary || !key) return MAX_ERR_INVALID_PTR;
    if (DictionaryEntry* known = FindEntry(d, key)) {
        FreeValue(known->value);
        known->value = value;
    } else {
        dictionary->places.emplace(key, dictionary->entries.size());
        dictionary->entries.push_back({key, value});
    }
    return MAX_ERR_NONE;
}

t_max_err PutObject(t_dictionary* d, t_symbol* key, void* value) {
    if (!FindObject(value)) return MAX_ERR_INVALID_PTR;
    t_atom atom{};
    atom_setobj(&atom, value);
    return PutEntry(d, key, atom);
}

/// The atoms of an entry: those of its array, or its one atom.
t_max_err EntryAtoms(const t_dictionary* d, const t_symbol* key, std::span<t_atom>& atoms) {
    DictionaryEntry* const entry = FindEntry(d, key);
    if (!entry) return MAX_ERR_GENERIC;
    AtomArray* const array = AsAtomArray(atom_getobj(&entry->value));
    atoms = array ? std::span<t_atom>(array->atoms) : std::span<t_atom>(&entry->value, 1);
    return MAX_ERR_NONE;
}

/// The atom of an entry that holds a single one of this type; else null.
const t_atom* SingleAtom(const t_dictionary* d, const t_symbol* key) {
    const DictionaryEntry* entry = FindEntry(d, key);
    return entry && entry->value.a_type != A_OBJ ? &entry->value : nullptr;
}

t_max_err GetObject(t_object* object, t_object** v) {
    if (!object) return MAX_ERR_GENERIC;
    *v = object;
    return MAX_ERR_NONE;
}

t_object* EntryObject(const t_dictionary* d, const t_symbol* key) {
    const DictionaryEntry* entry = FindEntry(d, key);
    return entry ? static_cast<t_object*>(atom_getobj(&entry->value)) : nullptr;
}

/// A copy of an entry's value with copies of the objects in it; A_NOTHING for an unknown kind of
/// object.
t_atom ClonedValue(const t_atom& value) {
    if (value.a_type != A_OBJ) return value;
    t_atom copy{};
    if (const AtomArray* array = AsAtomArray(value.a_w.w_obj)) {
        t_atomarray* const made = atomarray_new(0, nullptr);
        made->flags = kFreesChildren;
        for (const t_atom& atom : array->atoms) {
            t_atom inner = ClonedValue(atom);
            atomarray_appendatom(made, &inner);
        }
        atom_setobj(&copy, made);
    } else if (const String* string = AsString(value.a_w.w_obj)) {
        atom_setobj(&copy, string_new(string->text.c_str()));
    } else if (Dictionary* inner = AsDictionary(value.a_w.w_obj)) {
        atom_setobj(&copy, dictionary_clone(inner));
    }
    return copy;
}

}  // namespace

Dictionary* AsDictionary(const void* pointer) {
    return AsOwn<Dictionary>(DictionaryClass, pointer);
}

}  // namespace HostApi

using namespace HostApi;

t_dictionary* dictionary_new() {
    if (InjectedFailure("dictionary_new")) return nullptr;
    auto* const dictionary = new Dictionary{};
    AdoptObject(&dictionary->d_obj, DictionaryClass());
    return dictionary;
}

// ---- Appending

t_max_err dictionary_appendlong(t_dictionary* d, t_symbol* key, t_atom_long v) {
    if (const auto code = InjectedFailure("dictionary_appendlong")) return *code;
    t_atom atom{};
    atom_setlong(&atom, v);
    return PutEntry(d, key, atom);
}

t_max_err dictionary_appendfloat(t_dictionary* d, t_symbol* key, double v) {
    if (const auto code = InjectedFailure("dictionary_appendfloat")) return *code;
    t_atom atom{};
    atom_setfloat(&atom, v);
    return PutEntry(d, key, atom);
}

t_max_err dictionary_appendsym(t_dictionary* d, t_symbol* key, t_symbol* v) {
    if (const auto code = InjectedFailure("dictionary_appendsym")) return *code;
    t_atom atom{};
    atom_setsym(&atom, v);
    return PutEntry(d, key, atom);
}

t_max_err dictionary_appendatom(t_dictionary* d, t_symbol* key, t_atom* v) {
    return v ? PutEntry(d, key, *v) : MAX_ERR_INVALID_PTR;
}

t_max_err dictionary_appendatoms(t_dictionary* d, t_symbol* key, max_long argc, t_atom* argv) {
    if (const auto code = InjectedFailure("dictionary_appendatoms")) return *code;
    if (!AsDictionary(d)) return MAX_ERR_INVALID_PTR;
    return PutObject(d, key, atomarray_new(argc, argv));
}

t_max_err dictionary_appendstring(t_dictionary* d, t_symbol* key, const char* v) {
    if (!AsDictionary(d)) return MAX_ERR_INVALID_PTR;
    return PutObject(d, key, string_new(v));
}

t_max_err dictionary_appendatomarray(t_dictionary* d, t_symbol* key, t_object* v) {
    return AsAtomArray(v) ? PutObject(d, key, v) : MAX_ERR_INVALID_PTR;
}

t_max_err dictionary_appenddictionary(t_dictionary* d, t_symbol* key, t_object* v) {
    return AsDictionary(v) ? PutObject(d, key, v) : MAX_ERR_INVALID_PTR;
}

t_max_err dictionary_appendobject(t_dictionary* d, t_symbol* key, t_object* v) {
    return PutObject(d, key, v);
}

// ---- Reading

t_max_err dictionary_getlong(const t_dictionary* d, t_symbol* key, t_atom_long* v) {
    const t_atom* atom = SingleAtom(d, key);
    if (!atom) return MAX_ERR_GENERIC;
    *v = atom_getlong(atom);
    return MAX_ERR_NONE;
}

t_max_err dictionary_getfloat(const t_dictionary* d, t_symbol* key, double* v) {
    const t_atom* atom = SingleAtom(d, key);
    if (!atom) return MAX_ERR_GENERIC;
    *v = atom_getfloat(atom);
    return MAX_ERR_NONE;
}

t_max_err dictionary_getsym(const t_dictionary* d, t_symbol* key, t_symbol** v) {
    const t_atom* atom = SingleAtom(d, key);
    if (!atom) return MAX_ERR_GENERIC;
    *v = atom_getsym(atom);
    return MAX_ERR_NONE;
}

t_max_err dictionary_getatom(const t_dictionary* d, t_symbol* key, t_atom* v) {
    const DictionaryEntry* entry = FindEntry(d, key);
    if (!entry) return MAX_ERR_GENERIC;
    *v = entry->value;
    return MAX_ERR_NONE;
}

t_max_err dictionary_getatoms(const t_dictionary* d, t_symbol* key, max_long* argc, t_atom** argv) {
    if (const auto code = InjectedFailure("dictionary_getatoms")) return *code;
    std::span<t_atom> atoms;
    if (const t_max_err error = EntryAtoms(d, key, atoms)) return error;
    *argc = static_cast<max_long>(atoms.size());
    *argv = atoms.data();
    return MAX_ERR_NONE;
}

t_max_err dictionary_copyatoms(const t_dictionary* d,
                               t_symbol* key,
                               max_long* argc,
                               t_atom** argv) {
    if (const auto code = InjectedFailure("dictionary_copyatoms")) return *code;
    std::span<t_atom> atoms;
    if (const t_max_err error = EntryAtoms(d, key, atoms)) return error;
    return HandOut(atoms, argc, argv);
}

t_max_err dictionary_getstring(const t_dictionary* d, t_symbol* key, const char** v) {
    const String* string = AsString(EntryObject(d, key));
    if (!string) return MAX_ERR_GENERIC;
    *v = string->text.c_str();
    return MAX_ERR_NONE;
}

t_max_err dictionary_getatomarray(const t_dictionary* d, t_symbol* key, t_object** v) {
    t_object* const object = EntryObject(d, key);
    return GetObject(AsAtomArray(object) ? object : nullptr, v);
}

t_max_err dictionary_getdictionary(const t_dictionary* d, t_symbol* key, t_object** v) {
    t_object* const object = EntryObject(d, key);
    return GetObject(AsDictionary(object) ? object : nullptr, v);
}

t_max_err dictionary_getobject(const t_dictionary* d, t_symbol* key, t_object** v) {
    return GetObject(EntryObject(d, key), v);
}

max_long dictionary_hasentry(const t_dictionary* d, t_symbol* key) {
    return FindEntry(d, key) ? 1 : 0;
}

max_long dictionary_entryisatomarray(const t_dictionary* d, t_symbol* key) {
    return AsAtomArray(EntryObject(d, key)) ? 1 : 0;
}

max_long dictionary_entryisdictionary(const t_dictionary* d, t_symbol* key) {
    return AsDictionary(EntryObject(d, key)) ? 1 : 0;
}

max_long dictionary_entryisstring(const t_dictionary* d, t_symbol* key) {
    return AsString(EntryObject(d, key)) ? 1 : 0;
}

t_atom_long dictionary_getentrycount(const t_dictionary* d) {
    const Dictionary* dictionary = AsDictionary(d);
    return dictionary ? static_cast<t_atom_long>(dictionary->entries.size()) : 0;
}

t_max_err dictionary_getkeys(const t_dictionary* d, max_long* count, t_symbol*** keys) {
    return dictionary_getkeys_ordered(d, count, keys);
}

t_max_err dictionary_getkeys_ordered(const t_dictionary* d, max_long* count, t_symbol*** keys) {
    if (const auto code = InjectedFailure("dictionary_getkeys_ordered")) return *code;
    const Dictionary* dictionary = AsDictionary(d);
    if (!dictionary) return MAX_ERR_INVALID_PTR;
    const std::size_t size = dictionary->entries.size();
    *keys = reinterpret_cast<t_symbol**>(sysmem_newptr((size + 1) * sizeof(t_symbol*)));
    if (!*keys) return MAX_ERR_OUT_OF_MEM;
    for (std::size_t i = 0; i < size; ++i) (*keys)[i] = dictionary->entries[i].key;
    *count = static_cast<max_long>(size);
    return MAX_ERR_NONE;
}

void dictionary_freekeys(t_dictionary*, max_long, t_symbol** keys) {
    sysmem_freeptr(static_cast<void*>(keys));
}

// ---- Changing

t_max_err dictionary_deleteentry(t_dictionary* d, t_symbol* key) {
    DictionaryEntry* const entry = FindEntry(d, key);
    if (!entry) return MAX_ERR_GENERIC;
    FreeValue(entry->value);
    Dictionary& dictionary = *AsDictionary(d);
    const auto place = entry - dictionary.entries.data();
    dictionary.entries.erase(dictionary.entries.begin() + place);
    dictionary.places.erase(key);
    for (auto later = dictionary.entries.begin() + place; later != dictionary.entries.end();
         ++later)
        --dictionary.places[later->key];
    return MAX_ERR_NONE;
}

t_max_err dictionary_clear(t_dictionary* d) {
    Dictionary* const dictionary = AsDictionary(d);
    if (!dictionary) return MAX_ERR_INVALID_PTR;
    Clear(*dictionary);
    return MAX_ERR_NONE;
}

t_dictionary* dictionary_clone(t_dictionary* d) {
    const Dictionary* source = AsDictionary(d);
    if (!source) return nullptr;
    t_dictionary* const copy = dictionary_new();
    for (const DictionaryEntry& entry : source->entries)
        if (const t_atom value = ClonedValue(entry.value); value.a_type != A_NOTHING)
            PutEntry(copy, entry.key, value);
    return copy;
}

max_long atomisdictionary(t_atom* a) { return AsDictionary(atom_getobj(a)) ? 1 : 0; }

// ---- Names

t_dictionary* dictobj_register(t_dictionary* d, t_symbol** name) {
    if (InjectedFailure("dictobj_register")) return nullptr;
    Dictionary* const dictionary = AsDictionary(d);
    if (!dictionary) return nullptr;
    dictobj_unregister(d);
    dictionary->name = name && *name ? *name : symbol_unique();
    if (name) *name = dictionary->name;
    Dictionary*& known = DictionaryNames()[dictionary->name];
    if (known) known->name = nullptr;  // the name moves to this dictionary
    known = dictionary;
    return d;
}

t_max_err dictobj_unregister(t_dictionary* d) {
    Dictionary* const dictionary = AsDictionary(d);
    if (!dictionary || !dictionary->name) return MAX_ERR_GENERIC;
    DictionaryNames().erase(dictionary->name);
    dictionary->name = nullptr;
    return MAX_ERR_NONE;
}

t_dictionary* dictobj_findregistered_retain(t_symbol* name) {
    const auto found = DictionaryNames().find(name);
    if (found == DictionaryNames().end()) return nullptr;
    ++found->second->references;
    return found->second;
}

t_dictionary* dictobj_findregistered_clone(t_symbol* name) {
    const auto found = DictionaryNames().find(name);
    return found == DictionaryNames().end() ? nullptr : dictionary_clone(found->second);
}

t_max_err dictobj_release(t_dictionary* d) { return object_free(d); }

t_symbol* dictobj_namefromptr(t_dictionary* d) {
    const Dictionary* dictionary = AsDictionary(d);
    return dictionary ? dictionary->name : nullptr;
}
