// SPDX-License-Identifier: MIT
// Symbols, atoms, memory and the console.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

// Symbols. gensym interns UTF-8 text and never gives null; symbolarray_sort sorts by plain bytes.
MAXAPI_EXPORT t_symbol* gensym(const char* name);
MAXAPI_EXPORT t_symbol* gensym_tr(const char* name);  // after the table of translations
MAXAPI_EXPORT t_symbol* symbol_unique();
MAXAPI_EXPORT t_max_err symbolarray_sort(max_long count, t_symbol** list);
MAXAPI_EXPORT char* strncpy_zero(char* dst, const char* src, max_long size);
MAXAPI_EXPORT char* strncat_zero(char* dst, const char* src, max_long size);

// One atom. The getters coerce numbers; a symbol counts as a number only when it reads as one, and
// atom_getsym gives the empty symbol for anything that is none.
MAXAPI_EXPORT t_max_err atom_setlong(t_atom* a, t_atom_long v);
MAXAPI_EXPORT t_max_err atom_setfloat(t_atom* a, double v);
MAXAPI_EXPORT t_max_err atom_setsym(t_atom* a, t_symbol* s);
MAXAPI_EXPORT t_max_err atom_setobj(t_atom* a, void* p);
MAXAPI_EXPORT t_atom_long atom_getlong(const t_atom* a);
MAXAPI_EXPORT t_atom_float atom_getfloat(const t_atom* a);
MAXAPI_EXPORT t_symbol* atom_getsym(const t_atom* a);
MAXAPI_EXPORT void* atom_getobj(const t_atom* a);
MAXAPI_EXPORT max_long atom_gettype(const t_atom* a);
MAXAPI_EXPORT max_long atomisdictionary(t_atom* a);
MAXAPI_EXPORT max_long atomisatomarray(t_atom* a);
MAXAPI_EXPORT max_long atomisstring(const t_atom* a);

// One atom of a list: writes only where it exists and has the kind asked for.
MAXAPI_EXPORT t_max_err atom_arg_getlong(t_atom_long* out,
                                         max_long index,
                                         max_long argc,
                                         const t_atom* argv);
MAXAPI_EXPORT max_long atom_arg_getfloat(float* out,
                                         max_long index,
                                         max_long argc,
                                         const t_atom* argv);
MAXAPI_EXPORT max_long atom_arg_getdouble(double* out,
                                          max_long index,
                                          max_long argc,
                                          const t_atom* argv);
MAXAPI_EXPORT max_long atom_arg_getsym(t_symbol** out,
                                       max_long index,
                                       max_long argc,
                                       const t_atom* argv);

// Room for the answer of a getter: memory handed in is kept (*allocated = 0), else sysmem memory is
// made, which the caller frees with sysmem_freeptr.
MAXAPI_EXPORT t_max_err atom_alloc(max_long* count, t_atom** atoms, char* allocated);
MAXAPI_EXPORT t_max_err atom_alloc_array(max_long minsize,
                                         max_long* count,
                                         t_atom** atoms,
                                         char* allocated);

// Text. atom_setparse reads as a message box does; atom_setformat takes one letter an argument:
// l t_atom_long, f and d double, s t_symbol*, o t_object*, a t_atom*, c char, p text to be parsed,
// and the capitals of all but p (count, pointer). atom_gettext allocates *text when *size is 0 and
// *text null.
MAXAPI_EXPORT t_max_err atom_setparse(max_long* count, t_atom** atoms, const char* text);
MAXAPI_EXPORT t_max_err atom_setformat(max_long* count, t_atom** atoms, const char* fmt, ...);
MAXAPI_EXPORT t_max_err
atom_gettext(max_long count, t_atom* atoms, max_long* size, char** text, max_long flags);

// Arrays: at most n values are copied.
MAXAPI_EXPORT t_max_err atom_getlong_array(max_long count,
                                           t_atom* atoms,
                                           max_long n,
                                           t_atom_long* out);
MAXAPI_EXPORT t_max_err atom_getfloat_array(max_long count, t_atom* atoms, max_long n, float* out);
MAXAPI_EXPORT t_max_err atom_getdouble_array(max_long count,
                                             t_atom* atoms,
                                             max_long n,
                                             double* out);
MAXAPI_EXPORT t_max_err atom_getsym_array(max_long count,
                                          t_atom* atoms,
                                          max_long n,
                                          t_symbol** out);
MAXAPI_EXPORT t_max_err atom_setlong_array(max_long count,
                                           t_atom* atoms,
                                           max_long n,
                                           t_atom_long* in);
MAXAPI_EXPORT t_max_err atom_setfloat_array(max_long count, t_atom* atoms, max_long n, float* in);
MAXAPI_EXPORT t_max_err atom_setdouble_array(max_long count, t_atom* atoms, max_long n, double* in);
MAXAPI_EXPORT t_max_err atom_setsym_array(max_long count, t_atom* atoms, max_long n, t_symbol** in);

// Memory. Note the order of sysmem_copyptr: source, destination.
MAXAPI_EXPORT t_ptr sysmem_newptr(t_ptr_size size);
MAXAPI_EXPORT t_ptr sysmem_newptrclear(t_ptr_size size);
MAXAPI_EXPORT t_ptr sysmem_resizeptr(void* p, t_ptr_size size);
MAXAPI_EXPORT t_ptr sysmem_resizeptrclear(void* p, t_ptr_size size);
MAXAPI_EXPORT t_ptr_size sysmem_ptrsize(void* p);
MAXAPI_EXPORT void sysmem_freeptr(void* p);
MAXAPI_EXPORT void sysmem_copyptr(const void* src, void* dst, t_ptr_size bytes);
MAXAPI_EXPORT t_handle sysmem_newhandle(t_ptr_size size);
MAXAPI_EXPORT t_handle sysmem_newhandleclear(t_ptr_size size);
MAXAPI_EXPORT t_max_err sysmem_resizehandle(t_handle h, t_ptr_size size);
MAXAPI_EXPORT t_ptr_size sysmem_handlesize(t_handle h);
MAXAPI_EXPORT void sysmem_freehandle(t_handle h);

// Console rows, printf style; x may be null. Formatting runs in Max, whose %ld has 32 bits: format
// with the C++ library and post "%s".
MAXAPI_EXPORT void object_post(t_object* x, const char* fmt, ...);
MAXAPI_EXPORT void object_warn(t_object* x, const char* fmt, ...);
MAXAPI_EXPORT void object_error(t_object* x, const char* fmt, ...);
MAXAPI_EXPORT void object_bug(t_object* x, const char* fmt, ...);

// 8.6.5 gives 0x865; mask with 0xfff.
MAXAPI_EXPORT short maxversion();

}  // extern "C"
