// SPDX-License-Identifier: MIT
// Binbufs: messages in a row, as presets and boxes keep them.
//
// While a preset is stored, gensym("_preset")->s_thing is the binbuf that takes the records, null
// at any other time. A record is one message: the object (A_OBJ), its class name, the message to be
// sent back, the values.
#pragma once

#include "ext_codes.h"
#include "ext_export.h"

extern "C" {

MAXAPI_EXPORT void* binbuf_new();  // freed with object_free
// The symbol is ignored. binbuf_insert ends the message with a semicolon, binbuf_append does not.
MAXAPI_EXPORT void binbuf_insert(t_binbuf* b, t_symbol* s, short argc, t_atom* argv);
MAXAPI_EXPORT void binbuf_append(t_binbuf* b, t_symbol* s, short argc, t_atom* argv);
// The next atom; *p1 and *p2 begin at 0 and are moved on. Not 0 at the end.
MAXAPI_EXPORT short binbuf_getatom(t_binbuf* b, max_long* p1, max_long* p2, t_atom* out);

}  // extern "C"
