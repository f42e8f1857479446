// SPDX-License-Identifier: MIT
#include "max/VelkMaxDocumentation.h"

#include "max/VelkMaxAttributes.h"

namespace VelkMax {

namespace {

/// Getter of documentation attributes: the value is the attribute's label.
t_max_err GetText(void*, void* attribute, max_long* argc, t_atom** argv) noexcept {
    return object_attr_getvalueof(attribute, gensym("label"), argc, argv);
}

t_max_err SetNothing(void*, void*, max_long, t_atom*) noexcept { return MAX_ERR_NONE; }

void AddText(t_class* type, const char* name, const char* text) {
    t_symbol* const symbol = gensym("symbol");
    class_addattr(type, attr_offset_new(name, symbol, ATTR_FLAGS_NONE, AsMethod(&GetText),
                                        AsMethod(&SetNothing), 0));
    class_attr_addattr_parse(type, name, "invisible", gensym("long"), 0, "1");
    class_attr_addattr_format(type, name, "label", symbol, 0, "s", gensym(text));
    class_attr_addattr_parse(type, name, "category", symbol, 0, "documentation");
}

void AddList(t_class* type, const char* property, std::span<const ArgumentDoc> rows) {
    std::vector<t_atom> atoms;
    for (const ArgumentDoc& row : rows) {
        for (const char* text : {row.type, row.name, row.description}) {
            atom_setsym(&atoms.emplace_back(), gensym(text));
        }
    }
    class_attr_addattr_atoms(type, "classdescription", property, gensym("symbol"), 0,
                             static_cast<max_long>(atoms.size()), atoms.data());
}

/// Made for the first message and kept for the life of the class.
t_dictionary* MethodsOf(t_class* type) {
    t_symbol* const description = gensym("classdescription");
    max_long count = 0;
    t_atom* atoms = nullptr;
    class_attr_attr_getvalueof(type, description, gensym("methods"), &count, &atoms);
    auto* methods = count > 0 ? static_cast<t_dictionary*>(atom_getobj(atoms)) : nullptr;
    sysmem_freeptr(atoms);
    if (methods == nullptr) {
        methods = dictionary_new();
        t_atom atom{};
        atom_setobj(&atom, methods);
        class_attr_addattr_atoms(type, description->s_name, "methods", gensym("object"), 0, 1,
                                 &atom);
    }
    return methods;
}

}  // namespace

void AddClassDocumentation(t_class* type, const ClassDocumentation& documentation) {
    std::string seeAlso;
    for (const char* name : documentation.seeAlso) {
        seeAlso += (seeAlso.empty() ? "" : " ") + std::string(name);
    }
    AddText(type, "classdigest", documentation.digest);
    AddText(type, "classdescription", documentation.description);
    AddText(type, "classseealso", seeAlso.c_str());
    AddText(type, "externalversion", documentation.version);
    AddList(type, "arguments", documentation.arguments);
    AddList(type, "inlets", documentation.inlets);
    AddList(type, "outlets", documentation.outlets);
}

void DocumentMessages(t_class* type, std::span<const MessageRow> rows) {
    t_dictionary* const methods = MethodsOf(type);
    for (const MessageRow& row : rows) {
        if (row.digest == nullptr) continue;
        std::vector<const char*> texts{row.digest,
                                       row.description != nullptr ? row.description : ""};
        for (const ArgumentDoc& argument : row.arguments) {
            texts.insert(texts.end(), {argument.type, argument.name});
        }
        std::vector<t_atom> atoms(texts.size());
        for (std::size_t index = 0; index < texts.size(); ++index) {
            atom_setsym(&atoms[index], gensym(texts[index]));
        }
        dictionary_appendatoms(methods, gensym(row.name), static_cast<max_long>(atoms.size()),
                               atoms.data());
    }
}

}  // namespace VelkMax
