// SPDX-License-Identifier: MIT
// The types of the Max API on 64-bit machines, with the layouts that Max's own binaries have.
//
// Written from the documented sizes and offsets, which the assertions at the end hold fast: a
// module and Max share these records byte by byte. Anything that Max keeps to itself stays opaque
// here.
#pragma once

#include <cstddef>
#include <cstdint>

// A C `long` of the API has 32 bits, as `long` has on Windows, where the modules live; one alias
// gives other machines the same layouts. It is right for counts, flags and inlet numbers, and for
// the storage of "long" attributes and of the counts of attribute arrays.
#if defined(_WIN32)
using max_long = long;
#else
using max_long = std::int32_t;
#endif

using t_int8 = std::int8_t;
using t_uint8 = std::uint8_t;
using t_int16 = std::int16_t;
using t_int32 = std::int32_t;
using t_uint32 = std::uint32_t;
using t_int64 = std::int64_t;
using t_bool = std::uint8_t;
using t_fourcc = std::uint32_t;
using t_filepath = short;
using t_atom_long = std::intptr_t;
using t_atom_float = double;
using t_max_err = t_atom_long;
using t_int = std::intptr_t;
using t_ptr_int = std::intptr_t;
using t_ptr_uint = std::uintptr_t;
using t_ptr_size = std::uintptr_t;
using t_getbytes_size = std::uintptr_t;
using t_sample = double;
using t_float = float;
using t_double = double;
using t_ptr = char*;
using t_handle = char**;
using t_critical = struct t_critical_region*;
using t_systhread = struct t_systhread_record*;

/// Any function handed to Max; cast back to its true type before it is called.
using method = void* (*)(void*);

namespace MaxApi {
/// A function as the API takes it, and back to its true type.
template <class Function>
method ToMethod(Function* function) {
    return reinterpret_cast<method>(reinterpret_cast<void (*)()>(function));
}
template <class Function>
Function* FromMethod(method function) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(function));
}
}  // namespace MaxApi

// Records that only Max looks into.
using t_outlet = void;
using t_inlet = void;
using t_qelem = void;
using t_clock = void;
using t_binbuf = void;

struct t_messlist;

/// The header of every object.  Live objects carry OB_MAGIC in o_magic.
struct t_object {
    t_messlist* o_messlist;  // o_messlist[-1].m_sym is the class
    t_ptr_int o_magic;
    t_inlet* o_inlet;
    t_outlet* o_outlet;
};

using t_patcher = t_object;
using t_box = t_object;

/// Interned text: equal texts are the same pointer, for the life of the process.
struct t_symbol {
    char* s_name;  // UTF-8, never written to
    t_object* s_thing;
};

union word {
    t_atom_long w_long;
    t_atom_float w_float;
    t_symbol* w_sym;
    t_object* w_obj;
};

struct t_atom {
    short a_type;
    word a_w;
};

/// One message of a class: name, function and up to seven type codes ended by A_NOTHING.
struct t_messlist {
    t_symbol* m_sym;
    method m_fun;
    char m_type[8];
};

/// Only c_flags is ever touched from outside.
struct t_class {
    t_symbol* c_sym;
    t_object** c_freelist;
    method c_freefun;
    t_getbytes_size c_size;
    char c_tiny;
    char c_noinlet;
    t_symbol* c_filename;
    t_messlist* c_newmess;
    method c_menufun;
    max_long c_flags;
    max_long c_messcount;
    t_messlist** c_messlist;
    void* c_attributes;
    void* c_extra;
    max_long c_obexoffset;
    void* c_methods;
    method c_attr_get;
    method c_attr_gettarget;
    method c_attr_getnames;
    t_class* c_superclass;
};

/// Opaque; ask with the messages getname, gettype and getflags.
struct t_attr {
    t_object ob;
    t_symbol* name;
    t_symbol* type;
    max_long flags;
    method get;
    method set;
    void* filterget;
    void* filterset;
    void* reserved;
};

struct t_atomarray {
    t_object ob;
    max_long ac;
    t_atom* av;
    max_long flags;
};

struct t_dictionary {
    t_object d_obj;
    void* d_hashtab;
    void* d_linklist;
    void* d_transaction_mutex;
    char d_use_transaction;
};

struct t_string {
    t_object s_obj;
    char* s_text;
    max_long s_size;
};

static_assert(sizeof(void*) == 8, "the Max API exists on 64-bit machines only");
static_assert(sizeof(max_long) == 4 && sizeof(t_atom_long) == 8 && sizeof(t_max_err) == 8);
static_assert(sizeof(t_symbol) == 16 && offsetof(t_symbol, s_thing) == 8);
static_assert(sizeof(t_atom) == 16 && offsetof(t_atom, a_w) == 8);
static_assert(sizeof(t_object) == 32 && offsetof(t_object, o_magic) == 8);
static_assert(offsetof(t_object, o_inlet) == 16 && offsetof(t_object, o_outlet) == 24);
static_assert(sizeof(t_messlist) == 24 && offsetof(t_messlist, m_type) == 16);
static_assert(sizeof(t_class) == 144 && offsetof(t_class, c_freefun) == 16);
static_assert(offsetof(t_class, c_filename) == 40 && offsetof(t_class, c_flags) == 64);
static_assert(offsetof(t_class, c_messlist) == 72 && offsetof(t_class, c_superclass) == 136);
static_assert(sizeof(t_attr) == 96 && offsetof(t_attr, flags) == 48 && offsetof(t_attr, get) == 56);
static_assert(sizeof(t_atomarray) == 56 && offsetof(t_atomarray, av) == 40);
static_assert(sizeof(t_dictionary) == 64 && offsetof(t_dictionary, d_use_transaction) == 56);
static_assert(sizeof(t_string) == 48 && offsetof(t_string, s_size) == 40);
