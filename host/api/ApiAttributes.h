// SPDX-License-Identifier: MIT
// Attribute objects; inside the library only. The properties of an attribute are its own instance
// attributes, so one mechanism serves values and properties.
#pragma once

#include "ApiRecords.h"

#include <span>
#include <string_view>
#include <vector>

namespace HostApi {

/// How values of one attribute type are stored in an object's memory.
struct ValueType {
    std::string_view name;
    std::size_t size;  // bytes
    void (*store)(char* place, const t_atom& atom);
    void (*load)(const char* place, t_atom& atom);
};

/// The row of a type name; the row of "atom" for an unknown name.
const ValueType& FindValueType(const t_symbol* name);

/// The attribute behind a pointer, null when it is no live attribute.
Attribute* AsAttribute(void* pointer);

Attribute* FindAttribute(const std::vector<Attribute*>& list, const t_symbol* name);

/// Adds an attribute; one of the same name is freed and replaced.
void PutAttribute(std::vector<Attribute*>& list, Attribute* attribute);

/// The attribute of this name, first of the instance, then of the class; null when there is none.
Attribute* FindAttributeOf(void* object, const t_symbol* name);

/// Calls the getter and the clip filter; memory as in object_attr_getvalueof.
t_max_err GetValue(void* object, Attribute& attribute, max_long* argc, t_atom** argv);
std::vector<t_atom> GetValues(void* object, Attribute& attribute);

/// Calls the clip filter and the setter, and notifies clients.
t_max_err SetValue(void* object, Attribute& attribute, std::span<const t_atom> atoms);

}  // namespace HostApi
