// SPDX-License-Identifier: MIT
// The codes and flags of the Max API, by their documented values.
#pragma once

#include "ext_types.h"

// Kinds of atoms, and the type codes of message arguments (class_new, class_addmethod).
enum e_max_atomtypes : int {
    A_NOTHING = 0,  // ends a list of type codes
    A_LONG = 1,     // t_atom_long; a float is truncated
    A_FLOAT = 2,    // arrives as double
    A_SYM = 3,
    A_OBJ = 4,
    A_DEFLONG = 5,  // optional from here to A_DEFSYM: 0, 0.0 or the empty symbol when missing
    A_DEFFLOAT = 6,
    A_DEFSYM = 7,
    A_GIMME = 8,  // (x, t_symbol* s, max_long argc, t_atom* argv)
    A_CANT = 9,   // untyped; no message box reaches it
    A_SEMI = 10,
    A_COMMA = 11,
    A_DOLLAR = 12,
    A_DOLLSYM = 13,
    A_GIMMEBACK = 14,    // A_GIMME with a t_atom* result, returns t_max_err
    A_DEFER = 0x41,      // A_GIMME, called from the main thread
    A_USURP = 0x42,      // the same; repeated calls collapse to the last
    A_DEFER_LOW = 0x43,  // through the back of the queue
    A_USURP_LOW = 0x44,
};

inline constexpr int MSG_MAXARG = 7;
inline constexpr int ATOM_MAX_STRLEN = 32768;
inline constexpr t_ptr_int OB_MAGIC = 1758379419;

inline constexpr t_max_err MAX_ERR_NONE = 0;
inline constexpr t_max_err MAX_ERR_GENERIC = -1;
inline constexpr t_max_err MAX_ERR_INVALID_PTR = -2;
inline constexpr t_max_err MAX_ERR_DUPLICATE = -3;
inline constexpr t_max_err MAX_ERR_OUT_OF_MEM = -4;

enum e_max_attrflags : max_long {
    ATTR_FLAGS_NONE = 0,
    ATTR_GET_OPAQUE = 0x1,  // neither by message nor from C
    ATTR_SET_OPAQUE = 0x2,
    ATTR_GET_OPAQUE_USER = 0x100,  // not by message, but from C
    ATTR_SET_OPAQUE_USER = 0x200,
};

enum e_max_class_flags : max_long {
    CLASS_FLAG_BOX = 0x1,
    CLASS_FLAG_POLYGLOT = 0x2,
    CLASS_FLAG_NEWDICTIONARY = 0x4,  // creation arguments come as a dictionary
    CLASS_FLAG_REGISTERED = 0x8,
    CLASS_FLAG_UIOBJECT = 0x10,
    CLASS_FLAG_ALIAS = 0x20,
    CLASS_FLAG_DO_NOT_PARSE_ATTR_ARGS = 0x80,
    CLASS_FLAG_DO_NOT_ZERO = 0x100,
    CLASS_FLAG_NOATTRIBUTES = 0x10000,
    CLASS_FLAG_OWNATTRIBUTES = 0x20000,
};

// How a value stored with an object or a class is freed with it.
enum e_max_storage_flags : max_long {
    OBJ_FLAG_OBJ = 0,     // object_free
    OBJ_FLAG_REF = 1,     // not freed
    OBJ_FLAG_DATA = 2,    // not freed, no object
    OBJ_FLAG_MEMORY = 4,  // sysmem_freeptr
};

enum e_max_assist : max_long { ASSIST_INLET = 1, ASSIST_OUTLET = 2 };
inline constexpr int ASSIST_MAX_STRING_LEN = 500;

enum e_max_postrow : max_long {
    POSTROW_POST = 0,
    POSTROW_ERROR = 1,
    POSTROW_WARNING = 2,
    POSTROW_BUG = 3,
};

// How atom_gettext renders.
enum e_max_gettext_flags : max_long {
    OBEX_UTIL_ATOM_GETTEXT_DEFAULT = 0,
    OBEX_UTIL_ATOM_GETTEXT_TRUNCATE_ZEROS = 0x1,
    OBEX_UTIL_ATOM_GETTEXT_SYM_NO_QUOTE = 0x2,
    OBEX_UTIL_ATOM_GETTEXT_SYM_FORCE_QUOTE = 0x4,
    OBEX_UTIL_ATOM_GETTEXT_COMMA_DELIM = 0x8,
    OBEX_UTIL_ATOM_GETTEXT_FORCE_ZEROS = 0x10,
    OBEX_UTIL_ATOM_GETTEXT_NUM_HI_RES = 0x20,
    OBEX_UTIL_ATOM_GETTEXT_NUM_LO_RES = 0x40,
    OBEX_UTIL_ATOM_GETTEXT_NOESCAPE = 0x80,
    OBEX_UTIL_ATOM_GETTEXT_LINEBREAK_NODELIM = 0x100,
};

// Buffers for full paths and for file names, the ending 0 included.
inline constexpr int MAX_PATH_CHARS = 2048;
inline constexpr int MAX_FILENAME_CHARS = 512;

enum e_max_path_styles : max_long {
    PATH_STYLE_MAX = 0,     // C:/dir/file
    PATH_STYLE_NATIVE = 1,  // as the operating system writes it
    PATH_STYLE_COLON = 2,
    PATH_STYLE_SLASH = 3,
    PATH_STYLE_NATIVE_WIN = 4,
};
enum e_max_path_types : max_long {
    PATH_TYPE_IGNORE = 0,
    PATH_TYPE_ABSOLUTE = 1,
};
