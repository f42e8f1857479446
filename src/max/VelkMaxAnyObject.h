// SPDX-License-Identifier: MIT
// An object as the messages that every object has see it: by its header, whatever its class.
#pragma once

#include "max/VelkMaxHandlers.h"

namespace VelkMax {

/// What these messages do goes through the attributes, which enter by the object's door one by one.
/// So they do not hold the door themselves: nothing is locked while a message leaves an outlet.
/// Only from the audio thread they enter there like any other, for what they do takes long.
/// @tparam Object  the class behind the header; without a door its messages come as they are
template <class Object>
struct AnyObject {
    t_object header;

    static AnyObject& Of(void* record) { return *static_cast<AnyObject*>(record); }
    friend t_object* MaxObjectOf(const AnyObject& object) {
        return &const_cast<AnyObject&>(object).header;
    }

    struct SideDoor {
        void* record;

        void Enter(const Letter& letter, Door::Pace pace) const {
            if constexpr (HasDoor<Object>) {
                if (systhread_isaudiothread() != 0) {
                    return Object::Of(record).TheDoor().Enter(letter, pace);
                }
            }
            letter.run(record, letter.name, letter.atoms);
        }
    };
    SideDoor TheDoor() { return {this}; }
};

/// A function of the header as a message of `Object`.
template <class Object, auto Function>
struct AnyMessage;

template <class Object, class... Arguments, void (*Function)(t_object*, Arguments...)>
struct AnyMessage<Object, Function> {
    static void Run(AnyObject<Object>& object, Arguments... arguments) {
        Function(MaxObjectOf(object), arguments...);
    }
};

// NOLINTBEGIN(readability-identifier-naming): these read as functions in the tables

/// The registration of `void Function(t_object*)` and of those that take a symbol or atoms, too.
template <class Object, auto Function>
inline constexpr MessageRegistration AnyHandler = Handler<&AnyMessage<Object, Function>::Run>;
template <class Object, auto Function>
inline constexpr MessageRegistration AnyOptionalHandler =
    OptionalHandler<&AnyMessage<Object, Function>::Run>;

// NOLINTEND(readability-identifier-naming)

}  // namespace VelkMax
