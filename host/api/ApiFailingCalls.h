// SPDX-License-Identifier: MIT
// The functions of the API that can be made to fail. The script parser, which does not link the
// API, uses the list too.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace HostApi {

/// The functions that call InjectedFailure.
inline constexpr std::array<std::string_view, 36> kFailingCalls{
    "atom_alloc",
    "atom_alloc_array",
    "attr_offset_array_new",
    "attr_offset_new",
    "binbuf_new",
    "class_addattr",
    "class_addmethod",
    "class_attr_addattr_format",
    "class_attr_addattr_parse",
    "class_register",
    "dictionary_appendatoms",
    "dictionary_appendfloat",
    "dictionary_appendlong",
    "dictionary_appendsym",
    "dictionary_copyatoms",
    "dictionary_getatoms",
    "dictionary_getkeys_ordered",
    "dictionary_new",
    "dictionary_read",
    "dictionary_write",
    "dictobj_register",
    "locatefile_extended",
    "object_addattr",
    "object_alloc",
    "object_attr_addattr_format",
    "object_attr_addattr_parse",
    "object_attr_getnames",
    "object_attr_getvalueof",
    "object_attr_setvalueof",
    "object_obex_lookup",
    "object_obex_store",
    "outlet_anything",
    "outlet_new",
    "sysmem_newptr",
    "sysmem_resizeptr",
    "systhread_create",
};

/// Whether FailCall knows the function.
constexpr bool CanFail(std::string_view function) {
    return std::ranges::find(kFailingCalls, function) != kFailingCalls.end();
}

}  // namespace HostApi
