// SPDX-License-Identifier: MIT
// The functions that Max calls for messages; they convert the arguments and call our own functions.
//
// No exception may reach Max, so nearly all catch clauses of the binding are here. An object's
// class has a static Of(void* record), which finds the object, and TheDoor(), through which its
// messages and attributes enter one at a time.
#pragma once

#include "max/VelkMaxDoor.h"
#include "max/VelkMaxMethod.h"
#include "max/VelkMaxTexts.h"
#include "text/VelkDspException.h"

#include <new>

namespace VelkMax {

/// Runs `operation`; an exception becomes one console line of `object`, as for Post.
/// @param row  object_error for what users can cause, object_bug where Max is the caller
/// @param outOfMemory  called with the exception's text after std::bad_alloc; must not throw
/// @return whether the operation ran to its end
template <class Object, class Operation, class OutOfMemory>
bool Guarded(const Object& object,
             ConsoleRow row,
             Operation&& operation,
             OutOfMemory&& outOfMemory) noexcept {
    try {
        operation();
        return true;
    } catch (const tav::Exception& failure) {
        Say(row, object, kLibraryException, failure.what());
    } catch (const std::bad_alloc& failure) {
        outOfMemory(failure.what());
    } catch (...) {
        Say(row, object, kUnknownException);
    }
    return false;
}

template <class Object, class Operation>
bool Guarded(const Object& object, ConsoleRow row, Operation&& operation) noexcept {
    return Guarded(object, row, operation,
                   [&](const char* what) { Say(row, object, kOutOfMemory, what); });
}

/// Posts that memory ran short; while an object is being made, with a text that names no cause.
template <class Object>
void PostOutOfMemory(const Object& object, const char* what) {
    if constexpr (requires { object.IsBeingMade(); }) {
        if (object.IsBeingMade()) return Error(object, kNoMemory);
    }
    Error(object, kOutOfMemory, what);
}

// ---- Messages

/// Adds one message to a class.
using MessageRegistration = t_max_err (*)(t_class* type, const char* name);

/// One argument of a message or of a box, one inlet or one outlet, for the reference page.
struct ArgumentDoc {
    const char* type = "";  // "int", "float", "symbol", "list of int or float or symbol", "signal"
    const char* name = "";
    const char* description = "";
};

/// One message. Its documentation goes into the reference page unchanged, so it must be well-formed
/// XML. A row without a digest is not documented: Max itself sends it, or it is another name of a
/// message.
struct MessageRow {
    const char* name = nullptr;
    MessageRegistration handler = nullptr;  // Handler<&Function>
    const char* digest = nullptr;
    const char* description = nullptr;
    std::span<const ArgumentDoc> arguments{};
};

template <class Object>
void Receive(void* record, const Letter& letter) noexcept {
    Object::Of(record).TheDoor().Enter(letter);
}

template <class Object, auto Function, class... Arguments>
void RunGuarded(void* record, Arguments... arguments) noexcept {
    decltype(auto) object = Object::Of(record);
    Guarded(object, &object_error, [&] { Function(object, arguments...); });
}

/// @tparam kNumSubjectAtoms  as in Letter
template <auto Function, Letter::Pace kPace = Letter::Pace::Calm, unsigned kNumSubjectAtoms = 0>
struct MessageHandler;

/// A message without arguments.
template <class Object, void (*Function)(Object), Letter::Pace kPace, unsigned kNumSubjectAtoms>
struct MessageHandler<Function, kPace, kNumSubjectAtoms> {
    static void Call(void* record) noexcept {
        Receive<std::remove_cvref_t<Object>>(record, {&Run, kPace});
    }
    static void Run(void* record, t_symbol*, Atoms) noexcept {
        RunGuarded<std::remove_cvref_t<Object>, Function>(record);
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, 0);
    }
};

/// A message with a free list of arguments.
template <class Object,
          void (*Function)(Object, Atoms),
          Letter::Pace kPace,
          unsigned kNumSubjectAtoms>
struct MessageHandler<Function, kPace, kNumSubjectAtoms> {
    static void Call(void* record, t_symbol* name, max_long argc, t_atom* argv) noexcept {
        Receive<std::remove_cvref_t<Object>>(
            record, {&Run, kPace, name, Atoms(argc, argv), kNumSubjectAtoms});
    }
    static void Run(void* record, t_symbol*, Atoms atoms) noexcept {
        RunGuarded<std::remove_cvref_t<Object>, Function>(record, atoms);
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_GIMME, 0);
    }

    // For messages that use files: the message enters the door from the main thread.
    static void CallInMain(void* record, t_symbol* name, max_long argc, t_atom* argv) noexcept {
        Receive<std::remove_cvref_t<Object>>(
            record, {&BringIn, Letter::Pace::InMain, name, Atoms(argc, argv)});
    }
    static void BringIn(void* record, t_symbol* name, Atoms atoms) noexcept {
        Receive<std::remove_cvref_t<Object>>(record, {&Run, kPace, name, atoms});
    }
    static t_max_err RegisterDeferred(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&CallInMain), name, A_GIMME, 0);
    }
};

/// A message with one symbol; Max refuses other arguments before the handler runs.
template <class Object,
          void (*Function)(Object, t_symbol*),
          Letter::Pace kPace,
          unsigned kNumSubjectAtoms>
struct MessageHandler<Function, kPace, kNumSubjectAtoms> {
    static void Call(void* record, t_symbol* word) noexcept {
        t_atom atom{};
        atom_setsym(&atom, word);
        Receive<std::remove_cvref_t<Object>>(record, {&Run, kPace, nullptr, Atoms(1, &atom)});
    }
    static void Run(void* record, t_symbol*, Atoms word) noexcept {
        RunGuarded<std::remove_cvref_t<Object>, Function>(record, word.Symbol(0));
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_SYM, 0);
    }
    static t_max_err RegisterOptional(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_DEFSYM, 0);
    }
};

// NOLINTBEGIN(readability-identifier-naming): these read as functions in the tables

/// The registration of `void Function(Object&)`, `void Function(Object&, Atoms)` or
/// `void Function(Object&, t_symbol*)`.
template <auto Function, unsigned kNumSubjectAtoms = 0>
inline constexpr MessageRegistration Handler =
    &MessageHandler<Function, Letter::Pace::Calm, kNumSubjectAtoms>::Register;

/// The same for a short message that the audio thread may carry out itself.
template <auto Function, unsigned kNumSubjectAtoms = 0>
inline constexpr MessageRegistration PromptHandler =
    &MessageHandler<Function, Letter::Pace::Prompt, kNumSubjectAtoms>::Register;

/// The same for a message that has to run in the main thread.
template <auto Function>
inline constexpr MessageRegistration DeferredHandler = &MessageHandler<Function>::RegisterDeferred;

// NOLINTEND(readability-identifier-naming)

/// Adds the rows in their order; posts an error for each that could not be added.
void AddMessages(t_class* type, std::span<const MessageRow> rows);

/// Posts an error that a message is refused, followed by the message's arguments.
template <class Object>
void Reject(const Object& object, const Text<>& text, Atoms atoms) {
    if (atoms.Empty()) return Error(object, kRefusedAlone, text.Format());
    Error(object, kRefused, text.Format(), atoms.Text().c_str());
}

}  // namespace VelkMax
