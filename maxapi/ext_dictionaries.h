// SPDX-License-Identifier: MIT
// Dictionaries, atom arrays and string objects.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

// Appending replaces an entry of the same key; keys keep the order of insertion. Appended objects
// are owned by the dictionary, copied atoms by whoever asked for them (sysmem_freeptr).
MAXAPI_EXPORT t_dictionary* dictionary_new();
MAXAPI_EXPORT t_max_err dictionary_appendlong(t_dictionary* d, t_symbol* key, t_atom_long v);
MAXAPI_EXPORT t_max_err dictionary_appendfloat(t_dictionary* d, t_symbol* key, double v);
MAXAPI_EXPORT t_max_err dictionary_appendsym(t_dictionary* d, t_symbol* key, t_symbol* v);
MAXAPI_EXPORT t_max_err dictionary_appendatom(t_dictionary* d, t_symbol* key, t_atom* v);
MAXAPI_EXPORT t_max_err dictionary_appendatoms(t_dictionary* d,
                                               t_symbol* key,
                                               max_long argc,
                                               t_atom* argv);
MAXAPI_EXPORT t_max_err dictionary_appendstring(t_dictionary* d, t_symbol* key, const char* v);
MAXAPI_EXPORT t_max_err dictionary_appendatomarray(t_dictionary* d, t_symbol* key, t_object* v);
MAXAPI_EXPORT t_max_err dictionary_appenddictionary(t_dictionary* d, t_symbol* key, t_object* v);
MAXAPI_EXPORT t_max_err dictionary_appendobject(t_dictionary* d, t_symbol* key, t_object* v);
MAXAPI_EXPORT t_max_err dictionary_getlong(const t_dictionary* d, t_symbol* key, t_atom_long* v);
MAXAPI_EXPORT t_max_err dictionary_getfloat(const t_dictionary* d, t_symbol* key, double* v);
MAXAPI_EXPORT t_max_err dictionary_getsym(const t_dictionary* d, t_symbol* key, t_symbol** v);
MAXAPI_EXPORT t_max_err dictionary_getatom(const t_dictionary* d, t_symbol* key, t_atom* v);
MAXAPI_EXPORT t_max_err dictionary_getatoms(const t_dictionary* d,
                                            t_symbol* key,
                                            max_long* argc,
                                            t_atom** argv);
MAXAPI_EXPORT t_max_err dictionary_copyatoms(const t_dictionary* d,
                                             t_symbol* key,
                                             max_long* argc,
                                             t_atom** argv);
MAXAPI_EXPORT t_max_err dictionary_getstring(const t_dictionary* d, t_symbol* key, const char** v);
MAXAPI_EXPORT t_max_err dictionary_getatomarray(const t_dictionary* d, t_symbol* key, t_object** v);
MAXAPI_EXPORT t_max_err dictionary_getdictionary(const t_dictionary* d,
                                                 t_symbol* key,
                                                 t_object** v);
MAXAPI_EXPORT t_max_err dictionary_getobject(const t_dictionary* d, t_symbol* key, t_object** v);
MAXAPI_EXPORT max_long dictionary_hasentry(const t_dictionary* d, t_symbol* key);
MAXAPI_EXPORT max_long dictionary_entryisatomarray(const t_dictionary* d, t_symbol* key);
MAXAPI_EXPORT max_long dictionary_entryisdictionary(const t_dictionary* d, t_symbol* key);
MAXAPI_EXPORT max_long dictionary_entryisstring(const t_dictionary* d, t_symbol* key);
MAXAPI_EXPORT t_atom_long dictionary_getentrycount(const t_dictionary* d);
MAXAPI_EXPORT t_max_err dictionary_getkeys(const t_dictionary* d,
                                           max_long* count,
                                           t_symbol*** keys);
MAXAPI_EXPORT t_max_err dictionary_getkeys_ordered(const t_dictionary* d,
                                                   max_long* count,
                                                   t_symbol*** keys);
MAXAPI_EXPORT void dictionary_freekeys(t_dictionary* d, max_long count, t_symbol** keys);
MAXAPI_EXPORT t_max_err dictionary_deleteentry(t_dictionary* d, t_symbol* key);
MAXAPI_EXPORT t_max_err dictionary_clear(t_dictionary* d);
MAXAPI_EXPORT t_dictionary* dictionary_clone(t_dictionary* d);

// JSON: a list is an array, whole floats keep a decimal point. Name and path as in ext_files.h.
MAXAPI_EXPORT t_max_err dictionary_read(const char* filename, short path, t_dictionary** d);
MAXAPI_EXPORT t_max_err dictionary_write(t_dictionary* d, const char* filename, short path);
// isjson 0: attribute text, `@key values...`. errorstring may be null, else 256 bytes.
MAXAPI_EXPORT t_max_err dictobj_dictionaryfromstring(t_dictionary** d,
                                                     const char* text,
                                                     int isjson,
                                                     char* errorstring);

// Names under which other objects find a dictionary.
MAXAPI_EXPORT t_dictionary* dictobj_register(t_dictionary* d, t_symbol** name);
MAXAPI_EXPORT t_max_err dictobj_unregister(t_dictionary* d);
MAXAPI_EXPORT t_dictionary* dictobj_findregistered_retain(t_symbol* name);
MAXAPI_EXPORT t_max_err dictobj_release(t_dictionary* d);
MAXAPI_EXPORT t_dictionary* dictobj_findregistered_clone(t_symbol* name);
MAXAPI_EXPORT t_symbol* dictobj_namefromptr(t_dictionary* d);

// Atom arrays and strings.
MAXAPI_EXPORT t_atomarray* atomarray_new(max_long argc, t_atom* argv);
MAXAPI_EXPORT t_max_err atomarray_getatoms(t_atomarray* x, max_long* argc, t_atom** argv);
MAXAPI_EXPORT t_max_err atomarray_setatoms(t_atomarray* x, max_long argc, t_atom* argv);
MAXAPI_EXPORT t_max_err atomarray_copyatoms(t_atomarray* x, max_long* argc, t_atom** argv);
MAXAPI_EXPORT t_atom_long atomarray_getsize(t_atomarray* x);
MAXAPI_EXPORT t_max_err atomarray_getindex(t_atomarray* x, max_long index, t_atom* out);
MAXAPI_EXPORT void atomarray_appendatom(t_atomarray* x, t_atom* a);
MAXAPI_EXPORT void atomarray_appendatoms(t_atomarray* x, max_long argc, t_atom* argv);
MAXAPI_EXPORT void atomarray_clear(t_atomarray* x);
MAXAPI_EXPORT t_string* string_new(const char* text);
MAXAPI_EXPORT const char* string_getptr(t_string* x);

}  // extern "C"
