// SPDX-License-Identifier: MIT
// Attributes: making them, their properties, their clip filters, reading and setting them.
//
// Accessors:  t_max_err get(x, void* attr, max_long* argc, t_atom** argv)
//             t_max_err set(x, void* attr, max_long argc, t_atom* argv)
// Types by name: char, long (32 bits), atom_long (64), int32, float32, float64, symbol, atom,
// object, pointer, filepath.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

// Null accessors are the default ones, which write and read the record at `offset`. The count of an
// array is a max_long at `offsetcount`, 0 for a fixed size.
MAXAPI_EXPORT t_object* attr_offset_new(const char* name,
                                        const t_symbol* type,
                                        max_long flags,
                                        const method mget,
                                        const method mset,
                                        max_long offset);
MAXAPI_EXPORT t_object* attr_offset_array_new(const char* name,
                                              t_symbol* type,
                                              max_long size,
                                              max_long flags,
                                              method mget,
                                              method mset,
                                              max_long offsetcount,
                                              max_long offset);
MAXAPI_EXPORT t_object* attribute_new(
    const char* name, t_symbol* type, max_long flags, method mget, method mset);
MAXAPI_EXPORT t_object* attribute_new_atoms(
    const char* name, t_symbol* type, max_long flags, max_long argc, t_atom* argv);
MAXAPI_EXPORT t_object* attribute_new_parse(const char* name,
                                            t_symbol* type,
                                            max_long flags,
                                            const char* text);
MAXAPI_EXPORT t_max_err object_addattr(void* x, t_object* attr);
MAXAPI_EXPORT t_max_err object_deleteattr(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_chuckattr(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_addattr_atoms(
    t_object* x, const char* name, t_symbol* type, max_long flags, max_long argc, t_atom* argv);
MAXAPI_EXPORT t_max_err object_addattr_parse(
    t_object* x, const char* name, t_symbol* type, max_long flags, const char* text);
MAXAPI_EXPORT t_max_err object_addattr_format(
    t_object* x, const char* name, t_symbol* type, max_long flags, const char* fmt, ...);

// Properties: attributes of the attribute. ..._parse splits its text at blanks; text with blanks
// goes through ..._format with "s" or as an atom.
MAXAPI_EXPORT t_max_err class_attr_addattr_parse(t_class* c,
                                                 const char* attrname,
                                                 const char* property,
                                                 t_symbol* type,
                                                 max_long flags,
                                                 const char* text);
MAXAPI_EXPORT t_max_err class_attr_addattr_format(t_class* c,
                                                  const char* attrname,
                                                  const char* property,
                                                  const t_symbol* type,
                                                  max_long flags,
                                                  const char* fmt,
                                                  ...);
MAXAPI_EXPORT t_max_err class_attr_addattr_atoms(t_class* c,
                                                 const char* attrname,
                                                 const char* property,
                                                 t_symbol* type,
                                                 max_long flags,
                                                 max_long argc,
                                                 t_atom* argv);
MAXAPI_EXPORT t_max_err object_attr_addattr_parse(t_object* x,
                                                  const char* attrname,
                                                  const char* property,
                                                  t_symbol* type,
                                                  max_long flags,
                                                  const char* text);
MAXAPI_EXPORT t_max_err object_attr_addattr_format(t_object* x,
                                                   const char* attrname,
                                                   const char* property,
                                                   t_symbol* type,
                                                   max_long flags,
                                                   const char* fmt,
                                                   ...);
MAXAPI_EXPORT t_max_err object_attr_addattr_atoms(t_object* x,
                                                  const char* attrname,
                                                  const char* property,
                                                  t_symbol* type,
                                                  max_long flags,
                                                  max_long argc,
                                                  t_atom* argv);
MAXAPI_EXPORT t_max_err class_attr_addattr(t_class* c, t_symbol* attrname, t_object* property);
MAXAPI_EXPORT t_max_err object_attr_addattr(t_object* x, t_symbol* attrname, t_object* property);
MAXAPI_EXPORT t_object* class_attr_attr_get(t_class* c, t_symbol* attrname, t_symbol* property);
MAXAPI_EXPORT t_object* object_attr_attr_get(t_object* x, t_symbol* attrname, t_symbol* property);
MAXAPI_EXPORT t_max_err class_attr_attr_getvalueof(
    t_class* c, t_symbol* attrname, t_symbol* property, max_long* argc, t_atom** argv);
MAXAPI_EXPORT t_max_err object_attr_attr_getvalueof(
    t_object* x, t_symbol* attrname, t_symbol* property, max_long* argc, t_atom** argv);
MAXAPI_EXPORT t_max_err object_attr_enforcelocal(t_object* x, t_symbol* attrname);

// Clipping: on set and get, on set, on get.
MAXAPI_EXPORT t_max_err
attr_addfilter_clip(void* attr, double min, double max, max_long usemin, max_long usemax);
MAXAPI_EXPORT t_max_err
attr_addfilterset_clip(void* attr, double min, double max, max_long usemin, max_long usemax);
MAXAPI_EXPORT t_max_err
attr_addfilterget_clip(void* attr, double min, double max, max_long usemin, max_long usemax);

// object_attr_get finds instance attributes first, then those of the class; x may itself be an
// attribute, then the name is a property.
MAXAPI_EXPORT void* object_attr_get(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_getvalueof(void* x,
                                               t_symbol* name,
                                               max_long* argc,
                                               t_atom** argv);
MAXAPI_EXPORT t_max_err object_attr_setvalueof(void* x,
                                               t_symbol* name,
                                               max_long argc,
                                               t_atom* argv);
MAXAPI_EXPORT t_max_err object_attr_getnames(void* x, max_long* count, t_symbol*** names);
MAXAPI_EXPORT max_long object_attr_usercanset(void* x, t_symbol* name);
MAXAPI_EXPORT max_long object_attr_usercanget(void* x, t_symbol* name);
MAXAPI_EXPORT void object_attr_getdump(void* x, t_symbol* name, max_long argc, t_atom* argv);
MAXAPI_EXPORT t_atom_long object_attr_getlong(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_setlong(void* x, t_symbol* name, t_atom_long v);
MAXAPI_EXPORT t_atom_float object_attr_getfloat(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_setfloat(void* x, t_symbol* name, t_atom_float v);
MAXAPI_EXPORT t_symbol* object_attr_getsym(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_setsym(void* x, t_symbol* name, t_symbol* v);
MAXAPI_EXPORT t_object* object_attr_getobj(void* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_setobj(void* x, t_symbol* name, t_object* v);
MAXAPI_EXPORT max_long object_attr_getlong_array(void* x,
                                                 t_symbol* name,
                                                 max_long max,
                                                 t_atom_long* out);
MAXAPI_EXPORT t_max_err object_attr_setlong_array(void* x,
                                                  t_symbol* name,
                                                  max_long n,
                                                  t_atom_long* in);
MAXAPI_EXPORT max_long object_attr_getfloat_array(void* x,
                                                  t_symbol* name,
                                                  max_long max,
                                                  float* out);
MAXAPI_EXPORT t_max_err object_attr_setfloat_array(void* x, t_symbol* name, max_long n, float* in);
MAXAPI_EXPORT max_long object_attr_getdouble_array(void* x,
                                                   t_symbol* name,
                                                   max_long max,
                                                   double* out);
MAXAPI_EXPORT t_max_err object_attr_setdouble_array(void* x,
                                                    t_symbol* name,
                                                    max_long n,
                                                    double* in);
MAXAPI_EXPORT max_long object_attr_getsym_array(void* x,
                                                t_symbol* name,
                                                max_long max,
                                                t_symbol** out);
MAXAPI_EXPORT t_max_err object_attr_setsym_array(void* x,
                                                 t_symbol* name,
                                                 max_long n,
                                                 t_symbol** in);
MAXAPI_EXPORT t_max_err object_attr_setparse(t_object* x, t_symbol* name, const char* text);
MAXAPI_EXPORT t_max_err object_attr_touch(t_object* x, t_symbol* name);
MAXAPI_EXPORT t_ptr_int object_attr_getdisabled(t_object* x, t_symbol* name);
MAXAPI_EXPORT t_max_err object_attr_setdisabled(t_object* x, t_symbol* name, max_long way);

// Attribute arguments in a box: `@name values...`. attr_args_offset counts the atoms before the
// first.
MAXAPI_EXPORT void attr_args_process(void* x, short argc, t_atom* argv);
MAXAPI_EXPORT max_long attr_args_offset(short argc, t_atom* argv);
MAXAPI_EXPORT void attr_args_dictionary(t_dictionary* d, short argc, t_atom* argv);
MAXAPI_EXPORT void attr_dictionary_process(void* x, t_dictionary* d);
MAXAPI_EXPORT void attr_dictionary_check(void* x, t_dictionary* d);
MAXAPI_EXPORT t_dictionary* object_dictionaryarg(max_long argc, t_atom* argv);

}  // extern "C"
