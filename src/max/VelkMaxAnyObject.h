// SPDX-License-Identifier: MIT
// Registers messages that work with objects of any class.
#pragma once

#include "max/VelkMaxHandlers.h"
#include "max/VelkMaxObjectParts.h"

namespace VelkMax {

/// What the messages use of an object, whatever its class.
/// @tparam Object  the class behind the header; has Of(void* record) and Parts()
template <class Object>
struct AnyObject {
    ObjectParts parts;

    static AnyObject Of(void* record) { return {Object::Of(record).Parts()}; }
    friend t_object* MaxObjectOf(const AnyObject& object) { return object.parts.header; }
    Door& TheDoor() const { return parts.door; }
};

/// These messages call Max: they read and set attributes, each of which enters the door by itself,
/// send from outlets and post. So they run outside the door.
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

/// Registers a function whose first parameter is a t_object* or the ObjectParts, and which may take
/// atoms or a symbol besides. With AnyOptionalHandler a missing symbol is the empty one.
template <class Object, auto Function>
inline constexpr MessageRegistration AnyHandler = &AnyMessageHandler<Object, Function>::Register;
template <class Object, auto Function>
inline constexpr MessageRegistration AnyOptionalHandler =
    &AnyMessageHandler<Object, Function>::RegisterOptional;

// NOLINTEND(readability-identifier-naming)

}  // namespace VelkMax
