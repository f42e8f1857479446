// SPDX-License-Identifier: MIT
// Attribute arguments: `@name values...` in the text of a box, and the same in dictionaries.
#include "ApiAtomText.h"
#include "ApiAttributes.h"
#include "ApiDictionaries.h"
#include "ApiObjects.h"

using namespace HostApi;

namespace {

bool IsAttributeName(const t_atom& atom) {
    return atom.a_type == A_SYM && atom.a_w.w_sym && atom.a_w.w_sym->s_name[0] == '@' &&
           atom.a_w.w_sym->s_name[1] != '\0';
}

/// Calls visit(name without @, values) for each `@name` in turn.
template <class Visit>
void ForEachArgument(std::span<const t_atom> atoms, Visit visit) {
    for (std::size_t at = 0; at < atoms.size(); ++at) {
        if (!IsAttributeName(atoms[at])) continue;
        std::size_t end = at + 1;
        while (end < atoms.size() && !IsAttributeName(atoms[end])) ++end;
        visit(gensym(atoms[at].a_w.w_sym->s_name + 1), atoms.subspan(at + 1, end - at - 1));
    }
}

void RefuseName(void* x, const t_symbol* name) {
    object_error(static_cast<t_object*>(x), "\"%s\" is not a valid attribute argument",
                 name->s_name);
}

}  // namespace

max_long attr_args_offset(short argc, t_atom* argv) {
    max_long count = 0;
    for (const t_atom& atom : Atoms(argc, argv)) {
        if (IsAttributeName(atom)) break;
        ++count;
    }
    return count;
}

void attr_args_process(void* x, short argc, t_atom* argv) {
    ForEachArgument(Atoms(argc, argv), [x](t_symbol* name, std::span<const t_atom> values) {
        if (!object_attr_usercanset(x, name)) return RefuseName(x, name);
        SetValue(x, *FindAttributeOf(x, name), values);
    });
}

void attr_args_dictionary(t_dictionary* d, short argc, t_atom* argv) {
    ForEachArgument(Atoms(argc, argv), [d](t_symbol* name, std::span<const t_atom> values) {
        std::vector<t_atom> copy(values.begin(), values.end());
        dictionary_appendatoms(d, name, static_cast<max_long>(copy.size()), copy.data());
    });
}

void attr_dictionary_process(void* x, t_dictionary* d) {
    const Dictionary* dictionary = AsDictionary(d);
    if (!dictionary) return;
    const std::vector<DictionaryEntry> entries =
        dictionary->entries;  // a copy, since a setter may change the dictionary
    for (const DictionaryEntry& entry : entries) {
        Attribute* const attribute = FindAttributeOf(x, entry.key);
        if (!attribute) continue;
        max_long argc = 0;
        t_atom* argv = nullptr;
        if (dictionary_copyatoms(d, entry.key, &argc, &argv) == MAX_ERR_NONE)
            SetValue(x, *attribute, Atoms(argc, argv));
        sysmem_freeptr(argv);
    }
}

void attr_dictionary_check(void* x, t_dictionary* d) {
    const Dictionary* dictionary = AsDictionary(d);
    if (!dictionary) return;
    for (const DictionaryEntry& entry : dictionary->entries)
        if (!FindAttributeOf(x, entry.key)) RefuseName(x, entry.key);
}

t_dictionary* object_dictionaryarg(max_long argc, t_atom* argv) {
    for (const t_atom& atom : Atoms(argc, argv))
        if (Dictionary* dictionary = AsDictionary(atom_getobj(&atom))) return dictionary;
    return nullptr;
}
