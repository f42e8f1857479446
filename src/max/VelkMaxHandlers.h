// SPDX-License-Identifier: MIT
// The functions that Max calls: from the host's calling forms to members of our objects.
//
// Nothing may leave them by an exception, so the only catch clauses of the binding are here. An
// object takes part with a static Of(void* record), which finds it, and Lock(), under which its
// handlers run one at a time: messages come from the main thread and from the scheduler.
#pragma once

#include "max/VelkMaxAtoms.h"
#include "max/VelkMaxTexts.h"
#include "text/VelkDspException.h"

#include <new>

namespace VelkMax {

/// A function of any form as the host stores it; it is cast back before it is called.
template <class Function>
method AsMethod(Function* function) noexcept {
    return reinterpret_cast<method>(reinterpret_cast<void (*)()>(function));
}

/// Runs `operation`; what escapes it becomes one console line of `object`.
/// @param row  object_error for what users can cause, object_bug where Max is the caller
/// @param outOfMemory  called with the failure's own text when memory is short; must not throw
/// @return whether the operation ran to its end
template <class Operation, class OutOfMemory>
bool Guarded(t_object* object,
             ConsoleRow row,
             Operation&& operation,
             OutOfMemory&& outOfMemory) noexcept {
    try {
        operation();
        return true;
    } catch (const tav::Exception& failure) {
        PostRow(row, object, kLibraryException, failure.what());
    } catch (const std::bad_alloc& failure) {
        outOfMemory(failure.what());
    } catch (...) {
        PostRow(row, object, kUnknownException);
    }
    return false;
}

template <class Operation>
bool Guarded(t_object* object, ConsoleRow row, Operation&& operation) noexcept {
    return Guarded(object, row, operation,
                   [&](const char* what) { PostRow(row, object, kOutOfMemory, what); });
}

// ---- Messages

/// Adds one message to a class; null function pointers never reach Max.
using MessageRegistration = t_max_err (*)(t_class* type, const char* name);

/// One argument of a message or of a box, one inlet or one outlet, for the reference page.
struct ArgumentDoc {
    const char* type;  // "int", "float", "symbol", "list of int or float or symbol", "signal", ...
    const char* name;
    const char* description = "";
};

/// One message. Its documentation is written into the reference page as it stands: well-formed
/// XML. A row without a digest is not documented: it is for Max or repeats another one.
struct MessageRow {
    const char* name;
    MessageRegistration handler;  // Handler<&Function>
    const char* digest = nullptr;
    const char* description = nullptr;
    std::span<const ArgumentDoc> arguments{};
};

template <auto Function>
struct MessageHandler;

/// A message without arguments.
template <class Object, void (*Function)(Object&)>
struct MessageHandler<Function> {
    static void Call(void* record) noexcept {
        Object& object = Object::Of(record);
        Guarded(MaxObjectOf(object), &object_error, [&] {
            const auto lock = object.Lock();
            Function(object);
        });
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, 0);
    }
};

/// A message with a free list of arguments.
template <class Object, void (*Function)(Object&, Atoms)>
struct MessageHandler<Function> {
    static void Call(void* record, t_symbol*, max_long argc, t_atom* argv) noexcept {
        Object& object = Object::Of(record);
        Guarded(MaxObjectOf(object), &object_error, [&] {
            const auto lock = object.Lock();
            Function(object, Atoms(argc, argv));
        });
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_GIMME, 0);
    }
};

/// A message with one symbol; Max refuses any other before the handler runs.
template <class Object, void (*Function)(Object&, t_symbol*)>
struct MessageHandler<Function> {
    static void Call(void* record, t_symbol* word) noexcept {
        Object& object = Object::Of(record);
        Guarded(MaxObjectOf(object), &object_error, [&] {
            const auto lock = object.Lock();
            Function(object, word);
        });
    }
    static t_max_err Register(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_SYM, 0);
    }
    static t_max_err RegisterOptional(t_class* type, const char* name) {
        return class_addmethod(type, AsMethod(&Call), name, A_DEFSYM, 0);
    }
};

/// The registration of `void Function(Object&)`, `void Function(Object&, Atoms)` or
/// `void Function(Object&, t_symbol*)`.
template <auto Function>
// NOLINTNEXTLINE(readability-identifier-naming): reads as a function in the tables
inline constexpr MessageRegistration Handler = &MessageHandler<Function>::Register;

/// The same for a symbol that may be missing: then the handler gets the empty one.
template <auto Function>
// NOLINTNEXTLINE(readability-identifier-naming): as above
inline constexpr MessageRegistration OptionalHandler = &MessageHandler<Function>::RegisterOptional;

/// Adds the rows in their order; says which could not be added.
void AddMessages(t_class* type, std::span<const MessageRow> rows);

/// Says that a message is refused: its text and what came with it.
template <class Object>
void Reject(const Object& object, const Text<>& text, Atoms atoms) {
    if (atoms.Empty()) return Error(object, kRefusedAlone, text.Format());
    Error(object, kRefused, text.Format(), atoms.Text().c_str());
}

}  // namespace VelkMax
