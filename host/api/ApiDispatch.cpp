// SPDX-License-Identifier: MIT
// Messages. Typed calls are checked against the argument types of the method, untyped ones are not.
#include "ApiAtomText.h"
#include "ApiAttributes.h"
#include "ApiObjects.h"
#include "ApiOutlets.h"
#include "ApiThreads.h"

#include <array>
#include <optional>

namespace HostApi {
namespace {

/// One argument of a call. Calling conventions pass integers and pointers in other registers than
/// floating-point values.
struct Argument {
    bool isFloat = false;
    t_ptr_int whole = 0;
    double real = 0;
};

constexpr std::size_t kMaxArguments = MSG_MAXARG + 1;  // and the object

/// Calls a function by its true type, which is built from the kinds of its arguments one by one.
template <class... Taken>
void* Call(method function, std::span<const Argument> rest, Taken... taken) {
    if (rest.empty()) return MaxApi::FromMethod<void*(Taken...)>(function)(taken...);
    if constexpr (sizeof...(Taken) < kMaxArguments) {
        if (rest[0].isFloat) return Call(function, rest.subspan(1), taken..., rest[0].real);
        return Call(function, rest.subspan(1), taken..., rest[0].whole);
    }
    return nullptr;
}

Argument Whole(t_ptr_int value) { return {false, value, 0}; }
Argument Pointer(void* value) { return {false, reinterpret_cast<t_ptr_int>(value), 0}; }
Argument Real(double value) { return {true, 0, value}; }

bool IsOptional(int code) { return code >= A_DEFLONG && code <= A_DEFSYM; }

/// The argument of one type code, nothing when the atom does not fit.  @param atom  null: missing
std::optional<Argument> Match(int code, const t_atom* atom) {
    if (!atom && !IsOptional(code)) return {};
    const bool isNumber = atom && (atom->a_type == A_LONG || atom->a_type == A_FLOAT);
    switch (code) {
        case A_LONG:
        case A_DEFLONG:
            if (atom && !isNumber) return {};
            return Whole(atom_getlong(atom));
        case A_FLOAT:
        case A_DEFFLOAT:
            if (atom && !isNumber) return {};
            return Real(atom_getfloat(atom));
        case A_SYM:
        case A_DEFSYM:
            if (atom && atom->a_type != A_SYM) return {};
            return Pointer(atom_getsym(atom));
        case A_OBJ:
            if (atom->a_type != A_OBJ) return {};
            return Pointer(atom_getobj(atom));
        default: return {};
    }
}

/// A message with its receiver.
struct Message {
    void* object;
    t_symbol* selector;
    std::span<const t_atom> atoms;

    t_max_err Refuse(const char* reason) const {
        object_error(static_cast<t_object*>(object), "%s \"%s\"", reason, selector->s_name);
        return MAX_ERR_GENERIC;
    }
};

using Gimme = void*(void*, t_symbol*, max_long, t_atom*);
using GimmeBack = t_max_err(void*, t_symbol*, max_long, t_atom*, t_atom*);

void CallGimme(method function, const Message& message) {
    std::vector<t_atom> copy(message.atoms.begin(), message.atoms.end());
    MaxApi::FromMethod<Gimme>(function)(message.object, message.selector,
                                        static_cast<max_long>(copy.size()), copy.data());
}

/// Calls a method of type A_DEFER or the like: in the main thread at once, or through its queue;
/// the types ending in LOW always through the queue.
void CallDeferred(int code, method function, const Message& message) {
    const bool low = code == A_DEFER_LOW || code == A_USURP_LOW;
    if (!low && CurrentThreadKind() == ThreadKind::Main) return CallGimme(function, message);
    auto work = [function, x = message.object, s = message.selector,
                 copy = std::vector(message.atoms.begin(), message.atoms.end())] {
        CallGimme(function, {x, s, copy});
    };
    Enqueue({message.object, message.selector}, message.object,
            low ? QueueEnd::Back : QueueEnd::Front, std::move(work),
            code == A_USURP || code == A_USURP_LOW);
}

t_max_err CallTyped(const t_messlist& entry, const Message& message) {
    std::vector<Argument> arguments{Pointer(message.object)};
    std::size_t at = 0;
    for (const char* code = entry.m_type; *code != A_NOTHING; ++code, ++at) {
        const t_atom* atom = at < message.atoms.size() ? &message.atoms[at] : nullptr;
        const auto argument = Match(*code, atom);
        if (!argument) return message.Refuse("bad arguments for message");
        arguments.push_back(*argument);
    }
    // Surplus atoms are reported, but the method runs.
    if (message.atoms.size() > at) message.Refuse("extra arguments for message");
    Call(entry.m_fun, arguments);
    return MAX_ERR_NONE;
}

t_max_err CallEntry(const t_messlist& entry, const Message& message, t_atom* result) {
    const int code = static_cast<unsigned char>(entry.m_type[0]);
    switch (code) {
        case A_GIMME: CallGimme(entry.m_fun, message); return MAX_ERR_NONE;
        case A_GIMMEBACK: {
            t_atom unused{};
            std::vector<t_atom> copy(message.atoms.begin(), message.atoms.end());
            return MaxApi::FromMethod<GimmeBack>(entry.m_fun)(
                message.object, message.selector, static_cast<max_long>(copy.size()), copy.data(),
                result ? result : &unused);
        }
        case A_DEFER:
        case A_USURP:
        case A_DEFER_LOW:
        case A_USURP_LOW: CallDeferred(code, entry.m_fun, message); return MAX_ERR_NONE;
        default: return CallTyped(entry, message);
    }
}

/// The attribute that the message `get<name>` reads; null when it may not be read.
t_symbol* AskedAttribute(void* object, const t_symbol* selector) {
    const std::string_view text = selector->s_name;
    if (!text.starts_with("get") || !FindObject(object)->type->answersGet) return nullptr;
    t_symbol* const name = gensym(selector->s_name + 3);
    return object_attr_usercanget(object, name) ? name : nullptr;
}

/// Tries a method, then an attribute, then a get message, then `anything`.
t_max_err Deliver(const Message& message, t_atom* result) {
    if (!FindObject(message.object) || !message.selector) return MAX_ERR_INVALID_PTR;
    if (const t_messlist* entry = FindMessage(message.object, message.selector); IsReachable(entry))
        return CallEntry(*entry, message, result);
    if (object_attr_usercanset(message.object, message.selector))
        return SetValue(message.object, *FindAttributeOf(message.object, message.selector),
                        message.atoms);
    if (t_symbol* name = AskedAttribute(message.object, message.selector)) {
        object_attr_getdump(message.object, name, 0, nullptr);
        return MAX_ERR_NONE;
    }
    const t_messlist* anything = FindMessage(message.object, gensym("anything"));
    if (anything && anything->m_type[0] == A_GIMME) return CallEntry(*anything, message, result);
    return message.Refuse("doesn't understand");
}

/// The selector for a message of one atom.
t_symbol* SelectorOf(const t_atom& atom) {
    if (atom.a_type == A_LONG) return gensym("int");
    return atom.a_type == A_FLOAT ? gensym("float") : atom_getsym(&atom);
}

/// Sends a list to an object without a method `list`: one atom to each inlet, from right to left.
t_max_err Spread(t_object* object, std::span<const t_atom> atoms) {
    const std::size_t inlets = static_cast<std::size_t>(inlet_count(object));
    t_max_err error = MAX_ERR_NONE;
    for (std::size_t i = std::min(atoms.size(), inlets); i-- > 0;) {
        const InletScope scope(object, i);
        const bool isSymbol = atoms[i].a_type == A_SYM;
        error = Deliver({object, SelectorOf(atoms[i]),
                         isSymbol ? std::span<const t_atom>() : atoms.subspan(i, 1)},
                        nullptr);
    }
    return error;
}

}  // namespace

t_max_err DeliverMessage(t_object* object,
                         std::size_t inlet,
                         t_symbol* selector,
                         std::span<const t_atom> atoms) {
    if (!FindObject(object)) return MAX_ERR_INVALID_PTR;
    const MessageScope around;
    if (selector == gensym("list") && !FindMessage(object, selector)) return Spread(object, atoms);
    const InletScope scope(object, inlet);
    return Deliver({object, selector, atoms}, nullptr);
}

}  // namespace HostApi

using namespace HostApi;

t_max_err object_method_typed(void* x, t_symbol* s, max_long argc, t_atom* argv, t_atom* result) {
    return Deliver({x, s, Atoms(argc, argv)}, result);
}

t_max_err object_method_typedfun(
    void* x, t_messlist* m, t_symbol* s, max_long argc, t_atom* argv, t_atom* result) {
    if (!FindObject(x) || !m) return MAX_ERR_INVALID_PTR;
    return CallEntry(*m, {x, s, Atoms(argc, argv)}, result);
}

void* object_method_imp(void* x,
                        void* s,
                        void* p1,
                        void* p2,
                        void* p3,
                        void* p4,
                        void* p5,
                        void* p6,
                        void* p7,
                        void* p8) {
    const t_messlist* entry = FindMessage(x, static_cast<t_symbol*>(s));
    if (!entry) return nullptr;
    using Any = void*(void*, void*, void*, void*, void*, void*, void*, void*, void*);
    return MaxApi::FromMethod<Any>(entry->m_fun)(x, p1, p2, p3, p4, p5, p6, p7, p8);
}

t_atom_long method_true(void*) { return 1; }

t_atom_long method_false(void*) { return 0; }

method object_getmethod(void* x, t_symbol* s) {
    const t_messlist* entry = FindMessage(x, s);
    return entry ? entry->m_fun : MaxApi::ToMethod(method_false);
}

method object_method_direct_getmethod(t_object* x, t_symbol* s) { return object_getmethod(x, s); }

void* object_method_direct_getobject(t_object* x, t_symbol*) { return x; }

t_messlist* object_mess(t_object* x, t_symbol* s) { return FindMessage(x, s); }

t_max_err object_getvalueof(void* x, max_long* argc, t_atom** argv) {
    const t_messlist* entry = FindMessage(x, gensym("getvalueof"));
    if (!entry) return MAX_ERR_GENERIC;
    using Getter = t_max_err(void*, max_long*, t_atom**);
    return MaxApi::FromMethod<Getter>(entry->m_fun)(x, argc, argv);
}

t_max_err object_setvalueof(void* x, max_long argc, t_atom* argv) {
    const t_messlist* entry = FindMessage(x, gensym("setvalueof"));
    if (!entry) return MAX_ERR_GENERIC;
    using Setter = t_max_err(void*, max_long, t_atom*);
    return MaxApi::FromMethod<Setter>(entry->m_fun)(x, argc, argv);
}

// ---- Creation

void* object_new_typed(t_symbol* nameSpace, t_symbol* classname, max_long argc, t_atom* argv) {
    const t_class* type = class_findbyname(nameSpace, classname);
    const t_messlist* creation = type ? type->c_newmess : nullptr;
    if (!creation || !creation->m_fun) return nullptr;
    if (creation->m_type[0] == A_GIMME) {
        using Creation = void*(t_symbol*, max_long, t_atom*);
        return MaxApi::FromMethod<Creation>(creation->m_fun)(classname, argc, argv);
    }
    std::vector<Argument> arguments;
    const auto atoms = Atoms(argc, argv);
    for (std::size_t i = 0; creation->m_type[i] != A_NOTHING; ++i) {
        const auto argument = Match(creation->m_type[i], i < atoms.size() ? &atoms[i] : nullptr);
        if (!argument) return nullptr;
        arguments.push_back(*argument);
    }
    return Call(creation->m_fun, arguments);
}

void* object_new_imp(void* p1,
                     void* p2,
                     void* p3,
                     void* p4,
                     void* p5,
                     void* p6,
                     void* p7,
                     void* p8,
                     void* p9,
                     void* p10) {
    const t_class* type = class_findbyname(static_cast<t_symbol*>(p1), static_cast<t_symbol*>(p2));
    if (!type || !type->c_newmess->m_fun) return nullptr;
    using Creation = void*(void*, void*, void*, void*, void*, void*, void*, void*);
    return MaxApi::FromMethod<Creation>(type->c_newmess->m_fun)(p3, p4, p5, p6, p7, p8, p9, p10);
}
