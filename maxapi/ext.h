// SPDX-License-Identifier: MIT
// The Max API as this project uses it: everything MaxAPI exports that a module or the host needs.
//
// Our own declarations, made from the documented prototypes, types and values. Variadic entries
// that C code reaches through macros are declared in their plain ..._imp form only.
#pragma once

#include "ext_atoms.h"
#include "ext_attributes.h"
#include "ext_binbufs.h"
#include "ext_codes.h"
#include "ext_dictionaries.h"
#include "ext_files.h"
#include "ext_objects.h"
#include "ext_threads.h"
#include "ext_types.h"
