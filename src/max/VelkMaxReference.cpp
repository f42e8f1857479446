// SPDX-License-Identifier: MIT
#include "max/VelkMaxReference.h"

#include "QuiloProject.h"
#include "files/VelkDspFileReplacement.h"
#include "max/VelkMaxDictionaries.h"
#include "max/VelkMaxFiles.h"
#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxMaxAttribute.h"
#include "max/VelkMaxState.h"
#include "max/VelkMaxStateTexts.h"

#include <sstream>
#include <string_view>

namespace VelkMax {

namespace {

constexpr char kStylesheet[] = "./_c74_ref.xsl";

using Texts = std::vector<std::string>;

std::string Quoted(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + std::string(value) + "\"";
}

/// Collects the lines of the page.
class Page {
public:
    void Line(std::string_view line) { (text_ += line) += '\n'; }
    void Element(const std::string& name, std::string_view content) {
        Line("<" + name + ">" + std::string(content) + "</" + name + ">");
    }
    void Help(std::string_view digest, std::string_view description) {
        Element("digest", digest);
        Element("description", description);
    }
    /// Adds a comment and an XML list; `rows` adds the elements of the list.
    template <class Rows>
    void Section(std::string_view comment, const std::string& list, const Rows& rows) {
        Line("<!--" + std::string(comment) + "-->");
        Line("<" + list + ">");
        rows();
        Line("</" + list + ">");
    }
    const std::string& Text() const { return text_; }

private:
    std::string text_;
};

// ---- Reading the documentation of the class

/// The text of a documentation attribute; empty without one.
std::string Label(t_object* object, const char* name) {
    const MaxAttribute attribute(object, gensym(name));
    if (!attribute.Exists() || !attribute.Property("label").Exists()) return {};
    return attribute.Property("label").GetValueOf();
}

/// The symbols of a property of classdescription. When there is none, posts the error `text` and
/// returns none.
Texts ListUnderDescription(t_object* object, const char* name, const Text<const char*>& text) {
    const MaxAttribute description(object, gensym("classdescription"));
    if (!description.Exists()) {
        Error(object, text, description.Text());
        return {};
    }
    if (!description.Property(name).Exists()) {
        Error(object, text, name);
        return {};
    }
    const AttributeValue value(description.Object(), gensym(name));
    Texts texts;
    for (const t_atom& atom : value.atoms.View().Span())
        texts.push_back(atom_getsym(&atom)->s_name);
    return texts;
}

/// The rows of such a list, three symbols each.
struct DocumentedPart {
    std::string type;
    std::string name;
    std::string description;
};
std::vector<DocumentedPart> Parts(t_object* object,
                                  const char* name,
                                  const Text<const char*>& text) {
    const Texts texts = ListUnderDescription(object, name, text);
    std::vector<DocumentedPart> parts;
    for (std::size_t first = 0; first + 3 <= texts.size(); first += 3) {
        parts.push_back({texts[first], texts[first + 1], texts[first + 2]});
    }
    return parts;
}

// ---- Sections

void AddMetadata(Page& page, t_object* object) {
    const std::string version = VersionText(object);
    const struct {
        const char* name;
        std::string text;
    } rows[] = {
        {"author", Quilo::Project::kAuthor},
        {"copyright",
         std::string(Quilo::Project::kAuthor) + ", " + Quilo::Project::kLicense + " licence"},
        {"version", version.empty() ? "unknown version" : version},
    };
    page.Section("METADATA", "metadatalist", [&] {
        for (const auto& row : rows) {
            page.Line("<metadata" + Quoted("name", row.name) + ">" + row.text + "</metadata>");
        }
    });
}

/// Adds inlets or outlets.
void AddConnections(Page& page,
                    const std::string& element,
                    const std::vector<DocumentedPart>& rows) {
    int index = 0;
    for (const DocumentedPart& row : rows) {
        page.Line("<" + element + Quoted("id", std::to_string(index++)) + Quoted("name", row.type) +
                  ">");
        page.Help(row.name, row.description);
        page.Line("</" + element + ">");
    }
}

void AddArguments(Page& page, t_object* object) {
    for (const DocumentedPart& row : Parts(object, "arguments", kNoArguments)) {
        // The blank behind the tag is part of the format that readers of these pages expect.
        page.Line("<objarg" + Quoted("name", row.name) + Quoted("type", row.type) +
                  Quoted("optional", "1") + "> ");
        page.Help(row.name, row.description);
        page.Line("</objarg>");
    }
}

std::string AccessFlags(const MaxAttribute& attribute) {
    return Quoted("get", attribute.CanBeRead() ? "1" : "0") +
           Quoted("set", attribute.CanBeSet() ? "1" : "0");
}

std::string PropertyText(const MaxAttribute& attribute, const MaxAttribute& property) {
    if (std::string_view(property.Text()) != "enumvals") return property.GetValueOf();
    std::string text = "value = ";
    for (const t_symbol* choice : attribute.GetEnumChoices()) (text += '|') += choice->s_name;
    return text;
}

void AddAttribute(Page& page, const MaxAttribute& attribute) {
    page.Line("<attribute" + Quoted("name", attribute.Text()) + AccessFlags(attribute) +
              Quoted("type", attribute.TypeText()) + Quoted("size", "1") + ">");
    const auto text = [&](const char* name) {
        const MaxAttribute property = attribute.Property(name);
        return property.Exists() ? property.GetValueOf() : std::string();
    };
    page.Help(text("label"), text("description"));
    page.Line("<attributelist>");
    for (const MaxAttribute& property : attribute.Properties()) {
        // Left out, since it contains markup, which the value of an XML attribute must not.
        if (std::string_view(property.Text()) == "description") continue;
        page.Line("<attribute" + Quoted("name", property.Text()) + AccessFlags(property) +
                  Quoted("type", property.TypeText()) +
                  Quoted("value", PropertyText(attribute, property)) + " />");
    }
    page.Line("</attributelist>");
    page.Line("</attribute>");
}

/// Adds one message. @param texts digest, description, then type and name of each argument
void AddMethod(Page& page, std::string_view name, Atoms texts) {
    const auto text = [&](std::size_t index) -> std::string_view {
        return texts.Symbol(index)->s_name;
    };
    page.Line("<method" + Quoted("name", name) + ">");
    page.Line("<arglist>");
    for (std::size_t index = 2; index + 2 <= texts.Size(); index += 2) {
        page.Line("<arg" + Quoted("name", text(index + 1)) + Quoted("type", text(index)) +
                  Quoted("optional", "0") + Quoted("id", "0") + " />");
    }
    page.Line("</arglist>");
    page.Help(text(0), text(1));
    page.Line("</method>");
}

void AddMethods(Page& page, t_object* object) {
    const MaxAttribute description(object, gensym("classdescription"));
    const char* const missing = description.Exists() ? "methods" : description.Text();
    if (!description.Exists() || !description.Property("methods").Exists()) {
        return Error(object, kNoMethods, missing);
    }
    const AttributeValue value(description.Object(), gensym("methods"));
    if (value.atoms.View().Empty()) return Error(object, kNoMethods, missing);
    auto* const methods = static_cast<t_dictionary*>(atom_getobj(value.atoms.View().Span().data()));
    const DictionaryKeys names(methods);
    for (t_symbol* name : names.View()) {
        max_long count = 0;
        t_atom* texts = nullptr;  // owned by the dictionary
        dictionary_getatoms(methods, name, &count, &texts);
        AddMethod(page, name->s_name, Atoms(count, texts));
    }
}

void AddSeeAlso(Page& page, t_object* object) {
    std::istringstream names(Label(object, "classseealso"));
    for (std::string name; names >> name;) page.Line("<seealso" + Quoted("name", name) + " />");
}

void WritePage(void* x, t_symbol*, Atoms) noexcept {
    auto* const object = static_cast<t_object*>(x);
    Guarded(object, &object_error, [&] {
        const FilePlace place{std::string(object_classname(object)->s_name) + ".maxref.xml",
                              ClassFolder(object)};
        const std::string path = FullPath(place);
        if (!tav::ReplaceFile(SystemPath(place), ReferencePage(object))) {
            return Error(object, kNotWritten, path.c_str());
        }
        Post(object, kPageWritten, path.c_str());
    });
}

}  // namespace

std::string ReferencePage(t_object* object) {
    Page page;
    page.Line(R"(<?xml version="1.0" encoding="utf-8" standalone="yes"?>)");
    page.Line("<?xml-stylesheet" + Quoted("href", kStylesheet) + Quoted("type", "text/xsl") + "?>");
    page.Line("<c74object" + Quoted("name", object_classname(object)->s_name) + ">");
    page.Help(Label(object, "classdigest"), Label(object, "classdescription"));
    AddMetadata(page, object);
    page.Section("INLETS", "inletlist",
                 [&] { AddConnections(page, "inlet", Parts(object, "inlets", kNoInlets)); });
    page.Section("OUTLETS", "outletlist",
                 [&] { AddConnections(page, "outlet", Parts(object, "outlets", kNoOutlets)); });
    page.Section("ARGUMENTS", "objarglist", [&] { AddArguments(page, object); });
    page.Section("ATTRIBUTES", "attributelist", [&] {
        for (const MaxAttribute& attribute : ListAttributes(object)) AddAttribute(page, attribute);
    });
    page.Section("MESSAGES", "methodlist", [&] { AddMethods(page, object); });
    page.Section("SEEALSO", "seealsolist", [&] { AddSeeAlso(page, object); });
    page.Section("MENU ITEMS", "menuitemlist", [] {});
    page.Section("EXAMPLE", "examplelist", [] {});
    page.Line("</c74object>");
    return page.Text();
}

void GenerateXmlMessage(const ObjectParts& object) {
    object.door.Enter({&WritePage, Letter::Pace::InMain});
}

}  // namespace VelkMax
