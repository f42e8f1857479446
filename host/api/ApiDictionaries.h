// SPDX-License-Identifier: MIT
// Dictionary, atom array and string objects; inside the library only.
#pragma once

#include "ext.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace HostApi {

struct DictionaryEntry {
    t_symbol* key = nullptr;
    t_atom value{};  // A_OBJ: an object that the dictionary owns
};

struct Dictionary : t_dictionary {
    std::vector<DictionaryEntry> entries;                     // in the order of insertion
    std::unordered_map<const t_symbol*, std::size_t> places;  // of the entries, by key
    int references = 1;        // its maker's, and one for each that found it by name
    t_symbol* name = nullptr;  // null while not registered

    static Dictionary* FromObject(t_object* object) {
        return static_cast<Dictionary*>(reinterpret_cast<t_dictionary*>(object));
    }
};

/// A flag of atom arrays: the objects in it are freed with it.
inline constexpr max_long kFreesChildren = 1;

struct AtomArray : t_atomarray {
    std::vector<t_atom> atoms;  // ac and av follow it

    static AtomArray* FromObject(t_object* object) {
        return static_cast<AtomArray*>(reinterpret_cast<t_atomarray*>(object));
    }
};

struct String : t_string {
    std::string text;  // s_text and s_size follow it

    static String* FromObject(t_object* object) {
        return static_cast<String*>(reinterpret_cast<t_string*>(object));
    }
};

/// Frees the object that an atom owns, if it is alive, and empties the atom.
void FreeValue(t_atom& value);

// The object behind a pointer, null when it is no live object of that kind.
Dictionary* AsDictionary(const void* pointer);
AtomArray* AsAtomArray(const void* pointer);
String* AsString(const void* pointer);

}  // namespace HostApi
