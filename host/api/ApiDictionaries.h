// SPDX-License-Identifier: MIT
// Dictionary objects; inside the library only.
#pragma once

#include "ApiAtomArrays.h"

#include <unordered_map>
#include <vector>

namespace HostApi {

struct DictionaryEntry {
    t_symbol* key = nullptr;
    t_atom value{};  // A_OBJ: the dictionary owns the object
};

struct Dictionary : t_dictionary {
    std::vector<DictionaryEntry> entries;                     // in the order of insertion
    std::unordered_map<const t_symbol*, std::size_t> places;  // index in `entries`, by key
    int references = 1;        // one for its creator, one for each dictobj_findregistered_retain
    t_symbol* name = nullptr;  // null while not registered

    static Dictionary* FromObject(t_object* object) {
        return static_cast<Dictionary*>(reinterpret_cast<t_dictionary*>(object));
    }
};

/// The object behind a pointer, null when it is no live dictionary.
Dictionary* AsDictionary(const void* pointer);

}  // namespace HostApi
