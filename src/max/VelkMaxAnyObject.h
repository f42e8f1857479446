// SPDX-License-Identifier: MIT
// The messages that every object answers, as functions of what any object has.
#pragma once

#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxObjectParts.h"

namespace VelkMax {

/// An object by its parts, whatever its class.
/// @tparam Object  the class behind the header; has Of(void* record) and Parts()
template <class Object>
struct AnyObject {
    ObjectParts parts;

    static AnyObject Of(void* record) { return {Object::Of(record).Parts()}; }
    friend t_object* MaxObjectOf(const AnyObject& object) { return object.parts.header; }
    Door& TheDoor() const { return parts.door; }
};

/// What these messages do goes through the attributes, which enter by the object's door one by one,
/// and leaves by outlets and the console. So they run outside the door.
template <class Object, auto Function>
struct AnyMessage;

template <class Object, class... Arguments, void (*Function)(const ObjectParts&, Arguments...)>
struct AnyMessage<Object, Function> {
    static void Run(const AnyObject<Object>& object, Arguments... arguments) {
        Function(object.parts, arguments...);
    }
};

template <class Object, class... Arguments, void (*Function)(t_object*, Arguments...)>
struct AnyMessage<Object, Function> {
    static void Run(const AnyObject<Object>& object, Arguments... arguments) {
        Function(object.parts.header, arguments...);
    }
};

template <class Object, auto Function>
using AnyMessageHandler = MessageHandler<&AnyMessage<Object, Function>::Run, Letter::Pace::Outside>;

// NOLINTBEGIN(readability-identifier-naming): these read as functions in the tables

/// The registration of a function of the header, or of the parts, which may take a symbol or atoms,
/// too; optional: the symbol may be missing, then the function gets the empty one.
template <class Object, auto Function>
inline constexpr MessageRegistration AnyHandler = &AnyMessageHandler<Object, Function>::Register;
template <class Object, auto Function>
inline constexpr MessageRegistration AnyOptionalHandler =
    &AnyMessageHandler<Object, Function>::RegisterOptional;

// NOLINTEND(readability-identifier-naming)

}  // namespace VelkMax
