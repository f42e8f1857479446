// SPDX-License-Identifier: MIT
// Properties of attributes, local copies of class attributes, clip filters.
#include "ApiAtomText.h"
#include "ApiAttributes.h"
#include "ApiFaults.h"
#include "ApiObjects.h"

#include <cstdarg>

using namespace HostApi;

namespace {

/// Adds a property with a value to an attribute object. On any other object it adds an attribute.
t_max_err AddWithValue(
    void* x, const char* name, t_symbol* type, max_long flags, std::vector<t_atom> atoms) {
    if (!FindObject(x)) return MAX_ERR_INVALID_PTR;
    const auto count = static_cast<max_long>(atoms.size());
    return object_addattr(x, attribute_new_atoms(name, type, flags, count, atoms.data()));
}

t_max_err AddFormatted(void* x,
                       const char* name,
                       const t_symbol* type,
                       max_long flags,
                       const char* format,
                       std::va_list arguments) {
    return AddWithValue(x, name, const_cast<t_symbol*>(type), flags,
                        FormatAtoms(format, arguments));
}

t_object* ClassAttribute(t_class* c, const char* name) {
    return static_cast<t_object*>(class_attr_get(c, gensym(name)));
}

/// The object's own attribute: a class attribute is copied into the object first, so that its
/// properties can differ from those of other objects.
t_object* LocalAttribute(t_object* x, const char* name) {
    object_attr_enforcelocal(x, gensym(name));
    return static_cast<t_object*>(object_attr_get(x, gensym(name)));
}

t_max_err SetClips(void* attr, const Clip& clip, bool onGet, bool onSet) {
    Attribute* const attribute = AsAttribute(attr);
    if (!attribute) return MAX_ERR_INVALID_PTR;
    if (onGet) attribute->clipOnGet = clip;
    if (onSet) attribute->clipOnSet = clip;
    return MAX_ERR_NONE;
}

std::vector<t_atom> Copied(max_long argc, const t_atom* argv) {
    const auto atoms = Atoms(argc, argv);
    return {atoms.begin(), atoms.end()};
}

}  // namespace

// ---- On any object

t_max_err object_addattr_atoms(
    t_object* x, const char* name, t_symbol* type, max_long flags, max_long argc, t_atom* argv) {
    return AddWithValue(x, name, type, flags, Copied(argc, argv));
}

t_max_err object_addattr_parse(
    t_object* x, const char* name, t_symbol* type, max_long flags, const char* text) {
    return AddWithValue(x, name, type, flags, ParseAtoms(text ? text : ""));
}

t_max_err object_addattr_format(
    t_object* x, const char* name, t_symbol* type, max_long flags, const char* fmt, ...) {
    std::va_list arguments;
    va_start(arguments, fmt);
    const t_max_err error = AddFormatted(x, name, type, flags, fmt, arguments);
    va_end(arguments);
    return error;
}

// ---- On an attribute of a class

t_max_err class_attr_addattr(t_class* c, t_symbol* attrname, t_object* property) {
    return object_addattr(class_attr_get(c, attrname), property);
}

t_max_err class_attr_addattr_atoms(t_class* c,
                                   const char* attrname,
                                   const char* property,
                                   t_symbol* type,
                                   max_long flags,
                                   max_long argc,
                                   t_atom* argv) {
    return AddWithValue(ClassAttribute(c, attrname), property, type, flags, Copied(argc, argv));
}

t_max_err class_attr_addattr_parse(t_class* c,
                                   const char* attrname,
                                   const char* property,
                                   t_symbol* type,
                                   max_long flags,
                                   const char* text) {
    if (const auto code = InjectedFailure("class_attr_addattr_parse")) return *code;
    return object_addattr_parse(ClassAttribute(c, attrname), property, type, flags, text);
}

t_max_err class_attr_addattr_format(t_class* c,
                                    const char* attrname,
                                    const char* property,
                                    const t_symbol* type,
                                    max_long flags,
                                    const char* fmt,
                                    ...) {
    if (const auto code = InjectedFailure("class_attr_addattr_format")) return *code;
    std::va_list arguments;
    va_start(arguments, fmt);
    const t_max_err error =
        AddFormatted(ClassAttribute(c, attrname), property, type, flags, fmt, arguments);
    va_end(arguments);
    return error;
}

t_object* class_attr_attr_get(t_class* c, t_symbol* attrname, t_symbol* property) {
    return static_cast<t_object*>(object_attr_get(class_attr_get(c, attrname), property));
}

t_max_err class_attr_attr_getvalueof(
    t_class* c, t_symbol* attrname, t_symbol* property, max_long* argc, t_atom** argv) {
    return object_attr_getvalueof(class_attr_get(c, attrname), property, argc, argv);
}

// ---- On an attribute of an object

t_max_err object_attr_enforcelocal(t_object* x, t_symbol* attrname) {
    ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    if (FindAttribute(record->attributes, attrname)) return MAX_ERR_NONE;
    Attribute* const shared = FindAttribute(record->type->attributes, attrname);
    return shared ? object_addattr(x, object_clone(shared->Object())) : MAX_ERR_GENERIC;
}

t_max_err object_attr_addattr(t_object* x, t_symbol* attrname, t_object* property) {
    return object_addattr(LocalAttribute(x, attrname->s_name), property);
}

t_max_err object_attr_addattr_atoms(t_object* x,
                                    const char* attrname,
                                    const char* property,
                                    t_symbol* type,
                                    max_long flags,
                                    max_long argc,
                                    t_atom* argv) {
    return AddWithValue(LocalAttribute(x, attrname), property, type, flags, Copied(argc, argv));
}

t_max_err object_attr_addattr_parse(t_object* x,
                                    const char* attrname,
                                    const char* property,
                                    t_symbol* type,
                                    max_long flags,
                                    const char* text) {
    if (const auto code = InjectedFailure("object_attr_addattr_parse")) return *code;
    return object_addattr_parse(LocalAttribute(x, attrname), property, type, flags, text);
}

t_max_err object_attr_addattr_format(t_object* x,
                                     const char* attrname,
                                     const char* property,
                                     t_symbol* type,
                                     max_long flags,
                                     const char* fmt,
                                     ...) {
    if (const auto code = InjectedFailure("object_attr_addattr_format")) return *code;
    std::va_list arguments;
    va_start(arguments, fmt);
    const t_max_err error =
        AddFormatted(LocalAttribute(x, attrname), property, type, flags, fmt, arguments);
    va_end(arguments);
    return error;
}

t_object* object_attr_attr_get(t_object* x, t_symbol* attrname, t_symbol* property) {
    return static_cast<t_object*>(object_attr_get(object_attr_get(x, attrname), property));
}

t_max_err object_attr_attr_getvalueof(
    t_object* x, t_symbol* attrname, t_symbol* property, max_long* argc, t_atom** argv) {
    return object_attr_getvalueof(object_attr_get(x, attrname), property, argc, argv);
}

// ---- Clip filters

t_max_err attr_addfilter_clip(
    void* attr, double min, double max, max_long usemin, max_long usemax) {
    return SetClips(attr, {min, max, usemin != 0, usemax != 0}, true, true);
}

t_max_err attr_addfilterset_clip(
    void* attr, double min, double max, max_long usemin, max_long usemax) {
    return SetClips(attr, {min, max, usemin != 0, usemax != 0}, false, true);
}

t_max_err attr_addfilterget_clip(
    void* attr, double min, double max, max_long usemin, max_long usemax) {
    return SetClips(attr, {min, max, usemin != 0, usemax != 0}, true, false);
}
