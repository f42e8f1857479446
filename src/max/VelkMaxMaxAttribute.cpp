// SPDX-License-Identifier: MIT
#include "max/VelkMaxMaxAttribute.h"

#include "max/VelkMaxStateTexts.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace VelkMax {

namespace {

/// Calls a method of an attribute object that takes no arguments.
void* Ask(void* attribute, const char* message) {
    return object_method_imp(attribute, gensym(message), nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr);
}

std::vector<t_symbol*> AttributeNames(void* x) {
    struct Names {
        ~Names() { sysmem_freeptr(static_cast<void*>(list)); }
        max_long count = 0;
        t_symbol** list = nullptr;
    } names;
    if (object_attr_getnames(x, &names.count, &names.list) != MAX_ERR_NONE) return {};
    return {names.list, names.list + names.count};
}

/// Sorts by "order": 1, 2, ..., then 0 (no order), then ..., -2, -1.
t_atom_long SortingKey(max_long order) {
    return order > 0   ? order - t_atom_long{std::numeric_limits<max_long>::max()} - 1
           : order < 0 ? order - t_atom_long{std::numeric_limits<max_long>::min()} + 1
                       : 0;
}

}  // namespace

const char* ErrorText(t_max_err error) noexcept {
    switch (error) {
        case MAX_ERR_NONE: return "MAX_ERR_NONE";
        case MAX_ERR_GENERIC: return "MAX_ERR_GENERIC";
        case MAX_ERR_INVALID_PTR: return "MAX_ERR_INVALID_PTR";
        case MAX_ERR_DUPLICATE: return "MAX_ERR_DUPLICATE";
        case MAX_ERR_OUT_OF_MEM: return "MAX_ERR_OUT_OF_MEM";
        default: return "unknown MAX_ERR";
    }
}

OwnedAtoms::OwnedAtoms(OwnedAtoms&& other) noexcept
    : count_(std::exchange(other.count_, 0)),
      atoms_(std::exchange(other.atoms_, nullptr)) {}

AttributeValue::AttributeValue(void* x, t_symbol* name)
    : error(object_attr_getvalueof(x, name, atoms.CountPlace(), atoms.AtomsPlace())) {}

MaxAttribute::MaxAttribute(void* owner, t_symbol* name, t_object* console)
    : owner_(owner),
      name_(name),
      console_(console != nullptr ? console : static_cast<t_object*>(owner)),
      attribute_(object_attr_get(owner, name)) {}

MaxAttribute MaxAttribute::Property(const char* name) const {
    return {attribute_, gensym(name), console_};
}

std::vector<MaxAttribute> MaxAttribute::Properties() const {
    std::vector<MaxAttribute> properties;
    for (t_symbol* name : AttributeNames(attribute_)) {
        properties.emplace_back(attribute_, name, console_);
    }
    return properties;
}

std::optional<max_long> MaxAttribute::GetOrder() const {
    const MaxAttribute order = Property("order");
    if (!order.Exists()) return {};
    const AttributeValue value(attribute_, order.name_);
    if (value.error != MAX_ERR_NONE) {
        Bug(console_, kOrderUnread, ErrorText(value.error));
    } else if (!value.atoms.View().IsLong(0)) {
        Bug(console_, kOrderNoLong, Text());
    } else {
        return SaturatedInt(value.atoms.View().Long(0));
    }
    return {};
}

std::vector<t_symbol*> MaxAttribute::GetEnumChoices() const {
    const AttributeValue value(attribute_, gensym("enumvals"));
    if (value.error != MAX_ERR_NONE) {
        Bug(console_, kChoicesUnread, ErrorText(value.error));
        return {};
    }
    std::vector<t_symbol*> choices;
    const Atoms atoms = value.atoms.View();
    for (std::size_t index = 0; index < atoms.Size(); ++index) {
        if (atoms.IsSymbol(index)) {
            choices.push_back(atoms.Symbol(index));
        } else {
            Error(console_, kChoiceNoSymbol);
        }
    }
    return choices;
}

std::string MaxAttribute::GetValueOf() const {
    const t_symbol* const className = object_classname(owner_);
    const char* const ownerName = className != nullptr ? className->s_name : "";
    const AttributeValue value(owner_, name_);
    if (value.error != MAX_ERR_NONE) {
        Bug(console_, kValueUnread, ErrorText(value.error), ownerName, Text());
        return {};
    }
    const Atoms atoms = value.atoms.View();
    if (!std::ranges::all_of(atoms.Span(), IsPlainAtom)) {
        Error(console_, kValueUnknownAtom, Text(), ownerName);
    }
    return atoms.Text();
}

bool MaxAttribute::IsInvisible() const {
    const MaxAttribute invisible = Property("invisible");
    if (!invisible.Exists()) return false;
    const AttributeValue value(attribute_, invisible.name_);
    if (value.error != MAX_ERR_NONE) {
        Bug(console_, kInvisibleUnread, ErrorText(value.error));
        return false;
    }
    if (!value.atoms.View().IsLong(0)) {
        Error(console_, kInvisibleNoLong);
        return false;
    }
    return value.atoms.View().Long(0) == 1;
}

bool MaxAttribute::CanBeSet() const { return object_attr_usercanset(owner_, name_) != 0; }

bool MaxAttribute::CanBeRead() const { return object_attr_usercanget(owner_, name_) != 0; }

bool MaxAttribute::CanBeReset() const {
    if (!Exists()) {
        Bug(console_, kResettableNone);
        return false;
    }
    if (!Property("default").Exists()) return false;
    const AttributeValue value(attribute_, gensym("default"));
    if (value.error == MAX_ERR_NONE) return !value.atoms.View().Empty();
    Bug(console_, kResettableUnread, ErrorText(value.error));
    return false;
}

std::size_t MaxAttribute::NumAtoms() const {
    const AttributeValue value(owner_, name_);
    if (value.error != MAX_ERR_NONE) {
        Bug(console_, kCountUnread, ErrorText(value.error), Text());
        return 0;
    }
    if (!value.atoms.IsValid()) {
        Bug(console_, kCountInvalid, Text(), long{value.atoms.Count()});
        return 0;
    }
    return value.atoms.View().Size();
}

const char* MaxAttribute::TypeText() const {
    const auto* const type = static_cast<const t_symbol*>(Ask(attribute_, "gettype"));
    const std::string_view name = type != nullptr ? type->s_name : "";
    if (name == "long") return "int";
    if (name == "float32" || name == "float64") return "float";
    return name == "symbol" ? "symbol" : "unknown";
}

std::vector<MaxAttribute> ListAttributes(t_object* object) {
    struct Ranked {
        MaxAttribute attribute;
        t_atom_long key;
    };
    std::vector<Ranked> ranked;
    std::vector<t_symbol*> names = AttributeNames(object);
    symbolarray_sort(static_cast<max_long>(names.size()), names.data());
    names.erase(std::ranges::unique(names).begin(), names.end());
    for (t_symbol* name : names) {
        const MaxAttribute attribute(object, name);
        if (!attribute.Exists() || attribute.IsInvisible() || !attribute.CanBeSet()) continue;
        if (attribute.NumAtoms() == 0) continue;
        ranked.push_back({attribute, SortingKey(attribute.GetOrder().value_or(0))});
    }
    std::ranges::stable_sort(ranked, {}, &Ranked::key);
    std::vector<MaxAttribute> attributes;
    attributes.reserve(ranked.size());
    for (const Ranked& row : ranked) attributes.push_back(row.attribute);
    return attributes;
}

void ResetAttributeToDefault(t_object* object, const char* name) {
    const MaxAttribute attribute(object, gensym(name));
    if (!attribute.CanBeReset()) {
        return Error(object, kNoDefault, name);
    }
    const AttributeValue value(attribute.Object(), gensym("default"));
    if (value.error != MAX_ERR_NONE) {
        return Bug(object, kDefaultUnread, ErrorText(value.error), name);
    }
    SetAttribute(object, attribute.Name(), value.atoms.Span());
}

void SetAttribute(t_object* object, t_symbol* name, std::span<t_atom> atoms) noexcept {
    const t_max_err error =
        object_attr_setvalueof(object, name, static_cast<max_long>(atoms.size()), atoms.data());
    if (error != MAX_ERR_NONE) Bug(object, kNotSet, ErrorText(error), name->s_name);
}

bool IsPlainAtom(const t_atom& atom) noexcept {
    const max_long type = atom_gettype(&atom);
    return type == A_LONG || type == A_FLOAT || type == A_SYM;
}

}  // namespace VelkMax
