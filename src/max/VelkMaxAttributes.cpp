// SPDX-License-Identifier: MIT
#include "max/VelkMaxAttributes.h"

#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxSymbols.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace VelkMax {

namespace {

t_object* MakeAttribute(const AttributeRow& row) {
    const auto get = AsMethod(row.access.get);
    const auto set = AsMethod(row.access.set);
    t_symbol* const type = gensym(row.type);
    // Getter and setter are both our own, so Max never uses the offset (the last argument).
    t_object* const attribute =
        row.size == 1
            ? attr_offset_new(row.name, type, ATTR_FLAGS_NONE, get, set, 0)
            : attr_offset_array_new(row.name, type, row.size, ATTR_FLAGS_NONE, get, set, 0, 0);
    const Range& range = row.access.range;
    if (range.HasMin() || range.HasMax()) {
        attr_addfilter_clip(attribute, range.HasMin() ? range.min : 0.0,
                            range.HasMax() ? range.max : 0.0, range.HasMin(), range.HasMax());
    }
    return attribute;
}

/// Adds the properties of a row, for attributes of classes and of objects alike.
/// `parse` takes (property, type, text of any number of atoms); `symbol` takes (property, text) and
/// adds the text as one symbol.
template <class Parse, class Symbol>
void AddProperties(const AttributeRow& row,
                   const std::string& defaultValue,
                   const Parse& parse,
                   const Symbol& symbol) {
    symbol("label", row.label);
    if (row.style != nullptr) symbol("style", row.style);
    if (row.choices != nullptr) parse("enumvals", "atom", row.choices().c_str());
    const Range& range = row.access.range;
    if (range.HasMin()) {
        const std::string text = PropertyText(row.type, range.min);
        parse("minvalue", row.type, text.c_str());
        parse("min", row.type, text.c_str());
    }
    if (range.HasMax()) {
        const std::string text = PropertyText(row.type, range.max);
        parse("maxvalue", row.type, text.c_str());
        parse("max", row.type, text.c_str());
    }
    if (std::string_view(row.type) == "symbol") {
        symbol("default", defaultValue.c_str());
    } else if (!defaultValue.empty()) {
        parse("default", row.type, defaultValue.c_str());
    }
    if (row.units != nullptr) symbol("units", row.units);
    if (row.category != nullptr) symbol("category", row.category);
    if (row.order != nullptr) parse("order", "long", row.order);
    if (row.isSaved) parse("save", "long", "1");
    if (row.alias != nullptr) symbol("alias", row.alias);
    if (row.description != nullptr) symbol("description", row.description);
}

/// The present value of an attribute, written as the text of a property.
std::string ValueText(t_object* object, const AttributeRow& row) {
    const AttributeValue value(object, gensym(row.name));
    if (value.error != MAX_ERR_NONE) return {};
    std::string text;
    const Atoms values = value.atoms.View();
    for (std::size_t index = 0; index < values.Size(); ++index) {
        if (!text.empty()) text += ' ';
        text += values.IsSymbol(index) ? std::string(values.Symbol(index)->s_name)
                                       : PropertyText(row.type, values.Float(index));
    }
    return text;
}

}  // namespace

std::string PropertyText(const char* type, double value) {
    if (std::string_view(type) != "float32") return std::to_string(static_cast<int>(value));
    const auto single = static_cast<float>(value);
    char text[64];
    char* end = std::to_chars(text, text + sizeof text, single, std::chars_format::fixed, 2).ptr;
    float readBack = 0.f;
    std::from_chars(text, end, readBack);
    if (readBack != single) end = std::to_chars(text, text + sizeof text, single).ptr;
    return {text, end};
}

void AddClassAttributes(t_class* type, std::span<const AttributeRow> rows) {
    for (const AttributeRow& row : rows) {
        class_addattr(type, MakeAttribute(row));
        AddProperties(
            row, row.defaultValue != nullptr ? row.defaultValue : "",
            [&](const char* property, const char* kind, const char* text) {
                class_attr_addattr_parse(type, row.name, property, gensym(kind), 0, text);
            },
            [&](const char* property, const char* text) {
                class_attr_addattr_format(type, row.name, property, gensym("symbol"), 0, "s",
                                          gensym(text));
            });
    }
}

void AddInstanceAttribute(t_object* object, const AttributeRow& row) {
    object_addattr(object, MakeAttribute(row));
    AddProperties(
        row, row.defaultValue != nullptr ? row.defaultValue : ValueText(object, row),
        [&](const char* property, const char* kind, const char* text) {
            object_attr_addattr_parse(object, row.name, property, gensym(kind), 0, text);
        },
        [&](const char* property, const char* text) {
            object_attr_addattr_format(object, row.name, property, gensym("symbol"), 0, "s",
                                       gensym(text));
        });
}

t_symbol* AttributeName(void* attribute) {
    return static_cast<t_symbol*>(object_method_imp(attribute, Symbols().getName, nullptr, nullptr,
                                                    nullptr, nullptr, nullptr, nullptr, nullptr,
                                                    nullptr));
}

AttributeArguments::AttributeArguments(std::span<t_atom> atoms) {
    const auto isName = [](const t_atom& atom) {
        return atom_gettype(&atom) == A_SYM && atom_getsym(&atom)->s_name[0] == '@';
    };
    for (auto name = std::ranges::find_if(atoms, isName); name != atoms.end();) {
        const auto next = std::find_if(name + 1, atoms.end(), isName);
        arguments_.push_back({gensym(atom_getsym(&*name)->s_name + 1), {name + 1, next}});
        name = next;
    }
}

void AttributeArguments::SetKnown(t_object* object) {
    for (Argument& argument : arguments_) {
        if (argument.isDone || object_attr_get(object, argument.name) == nullptr) continue;
        argument.isDone = true;
        if (argument.values.empty()) continue;
        object_attr_setvalueof(object, argument.name, static_cast<max_long>(argument.values.size()),
                               argument.values.data());
    }
}

void AttributeArguments::ReportUnknown(t_object* object) const {
    for (const Argument& argument : arguments_) {
        if (!argument.isDone) Error(object, kUnknownAttribute, argument.name->s_name);
    }
}

t_max_err WriteAnswer(max_long* argc, t_atom** argv, std::span<const float> values) {
    const t_max_err error = ReserveAnswer(values.size(), argc, argv);
    for (std::size_t index = 0; error == MAX_ERR_NONE && index < values.size(); ++index) {
        atom_setfloat(*argv + index, static_cast<double>(values[index]));
    }
    return error;
}

t_max_err WriteAnswer(max_long* argc, t_atom** argv, float value) {
    return WriteAnswer(argc, argv, std::span(&value, 1));
}

t_max_err WriteAnswer(max_long* argc, t_atom** argv, max_long value) {
    const t_max_err error = ReserveAnswer(1, argc, argv);
    if (error == MAX_ERR_NONE) atom_setlong(*argv, value);
    return error;
}

t_max_err WriteAnswer(max_long* argc, t_atom** argv, t_symbol* value) {
    const t_max_err error = ReserveAnswer(1, argc, argv);
    if (error == MAX_ERR_NONE) atom_setsym(*argv, value);
    return error;
}

}  // namespace VelkMax
