// SPDX-License-Identifier: MIT
// Queries about classes and objects, as an inspector makes them: messages and attributes.
#include "HostBridge.h"

#include "ApiAttributes.h"
#include "ApiMemory.h"
#include "ApiObjects.h"

#include <algorithm>
#include <utility>

namespace HostApi {
namespace {

/// Sorting key of the inspector: "order" 1, 2, ... first, then those without, then ..., -2, -1.
std::pair<int, t_atom_long> InspectorPlace(const AttributeInfo& attribute) {
    t_atom_long order = 0;
    for (const PropertyInfo& property : attribute.properties)
        if (property.name == gensym("order") && !property.values.empty())
            order = atom_getlong(&property.values[0]);
    return {order > 0 ? 0 : order == 0 ? 1 : 2, order};
}

AttributeInfo Describe(Attribute& attribute, bool isInstance) {
    AttributeInfo info{attribute.name, attribute.type, attribute.flags, isInstance, {}};
    for (Attribute* property : FindObject(attribute.Object())->attributes)
        info.properties.push_back({property->name, GetValues(attribute.Object(), *property)});
    return info;
}

}  // namespace

void CheckFreedMemory() {
    ReleaseFreedBlocks();
    ForgetDead();
}

std::vector<MessageInfo> Messages(const t_class* type) {
    std::vector<MessageInfo> messages;
    if (!type) return messages;
    for (const auto& entry : static_cast<const Class*>(type)->messages) {
        MessageInfo info{entry->m_sym, {}};
        for (const char* code = entry->m_type; *code != A_NOTHING; ++code)
            info.types.push_back(*code);
        messages.push_back(std::move(info));
    }
    return messages;
}

std::vector<AttributeInfo> Attributes(t_object* object) {
    std::vector<AttributeInfo> attributes;
    const ObjectRecord* record = FindObject(object);
    if (!record) return attributes;
    const auto add = [&attributes](Attribute& attribute, bool isInstance) {
        AttributeInfo info = Describe(attribute, isInstance);
        const auto place = InspectorPlace(info);  // after those with the same key
        const auto next = std::ranges::upper_bound(attributes, place, {}, InspectorPlace);
        attributes.insert(next, std::move(info));
    };
    for (Attribute* attribute : record->type->attributes) {
        // A class attribute of which the object has its own copy keeps its place.
        Attribute* const own = FindAttribute(record->attributes, attribute->name);
        add(own ? *own : *attribute, own != nullptr);
    }
    for (Attribute* attribute : record->attributes)
        if (!FindAttribute(record->type->attributes, attribute->name)) add(*attribute, true);
    return attributes;
}

std::vector<t_atom> AttributeValue(t_object* object, std::string_view name) {
    Attribute* const attribute = FindAttributeOf(object, gensym(std::string(name).c_str()));
    return attribute ? GetValues(object, *attribute) : std::vector<t_atom>();
}

}  // namespace HostApi
