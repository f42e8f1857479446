// SPDX-License-Identifier: MIT
// Atom array and string objects, the values of dictionaries; inside the library only.
#pragma once

#include "ext.h"

#include <string>
#include <vector>

namespace HostApi {

/// A flag of atom arrays: the objects in it are freed with it.
inline constexpr max_long kFreesChildren = 1;

struct AtomArray : t_atomarray {
    std::vector<t_atom> atoms;  // ac and av are derived from it

    static AtomArray* FromObject(t_object* object) {
        return static_cast<AtomArray*>(reinterpret_cast<t_atomarray*>(object));
    }
};

struct String : t_string {
    std::string text;  // s_text and s_size are derived from it

    static String* FromObject(t_object* object) {
        return static_cast<String*>(reinterpret_cast<t_string*>(object));
    }
};

/// Frees the object that the atom holds, if it is alive, and clears the atom.
void FreeValue(t_atom& value);

// The object behind a pointer, null when it is no live object of that kind.
AtomArray* AsAtomArray(const void* pointer);
String* AsString(const void* pointer);

}  // namespace HostApi
