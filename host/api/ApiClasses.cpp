// SPDX-License-Identifier: MIT
// Classes: class_... of the API.
#include "ApiFaults.h"
#include "ApiFiles.h"
#include "ApiRecords.h"

#include <algorithm>
#include <cstdarg>

namespace HostApi {
namespace {

using ClassKey = std::pair<const t_symbol*, const t_symbol*>;

// Never destroyed: modules may still hold classes when the process ends.
std::map<ClassKey, Class*>& Registered() {
    static auto& classes = *new std::map<ClassKey, Class*>;
    return classes;
}

std::mutex& RegisteredMutex() {
    static auto& mutex = *new std::mutex;
    return mutex;
}

/// Copies type codes up to the ending 0 or the seventh.  @param first  the code already read
void ReadTypes(t_messlist& message, int first, std::va_list codes) {
    int count = 0;
    for (int code = first; code != A_NOTHING && count < MSG_MAXARG; code = va_arg(codes, int))
        message.m_type[count++] = static_cast<char>(code);
    message.m_type[count] = A_NOTHING;
}

Class& Inner(t_class* c) { return *static_cast<Class*>(c); }

}  // namespace

bool IsReachable(const t_messlist* message) { return message && message->m_type[0] != A_CANT; }

}  // namespace HostApi

using namespace HostApi;

t_class* class_new(const char* name,
                   const method mnew,
                   const method mfree,
                   max_long size,
                   const method,
                   short type,
                   ...) {
    auto* const made = new Class{};
    made->c_sym = gensym(name);
    made->path = ModuleFolder();
    made->c_freefun = mfree;
    made->c_size = static_cast<t_getbytes_size>(size);
    made->creation.m_sym = made->c_sym;
    made->creation.m_fun = mnew;
    made->c_newmess = &made->creation;
    std::va_list codes;
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wvarargs"  // the API declares the last parameter as a short
#endif
    va_start(codes, type);
#if defined(__clang__)
#pragma clang diagnostic pop
#endif
    ReadTypes(made->creation, type, codes);
    va_end(codes);
    made->head[0].m_sym = reinterpret_cast<t_symbol*>(static_cast<t_class*>(made));
    return made;
}

t_max_err class_register(t_symbol* nameSpace, t_class* c) {
    if (const auto code = InjectedFailure("class_register")) return *code;
    if (!c) return MAX_ERR_INVALID_PTR;
    Class& type = Inner(c);
    const std::lock_guard lock(RegisteredMutex());
    type.nameSpace = nameSpace;
    type.c_flags |= CLASS_FLAG_REGISTERED;
    if (nameSpace == gensym("box")) type.c_flags |= CLASS_FLAG_BOX;
    Registered()[{nameSpace, type.c_sym}] = &type;
    return MAX_ERR_NONE;
}

t_max_err class_addmethod(t_class* c, const method m, const char* name, ...) {
    if (const auto code = InjectedFailure("class_addmethod")) return *code;
    if (!c || !m) return MAX_ERR_INVALID_PTR;
    auto message = std::make_unique<t_messlist>();
    message->m_sym = gensym(name);
    message->m_fun = m;
    std::va_list codes;
    va_start(codes, name);
    const int first = va_arg(codes, int);
    ReadTypes(*message, first, codes);
    va_end(codes);

    Class& type = Inner(c);
    if (const auto known = type.messageByName.find(message->m_sym);
        known != type.messageByName.end()) {
        *known->second = *message;
        return MAX_ERR_NONE;
    }
    type.messageByName[message->m_sym] = message.get();
    type.messages.push_back(std::move(message));
    type.c_messcount = static_cast<max_long>(type.messages.size());
    return MAX_ERR_NONE;
}

t_max_err class_dumpout_wrap(t_class* c) {
    if (!c) return MAX_ERR_INVALID_PTR;
    if (c->c_flags & CLASS_FLAG_REGISTERED)
        return MAX_ERR_GENERIC;  // registered classes cannot change
    Inner(c).answersGet = true;
    return MAX_ERR_NONE;
}

t_symbol* class_nameget(t_class* c) { return c ? c->c_sym : gensym(""); }

t_symbol* class_namespace(t_class* c) { return c ? Inner(c).nameSpace : nullptr; }

t_class* class_findbyname(t_symbol* nameSpace, t_symbol* classname) {
    const std::lock_guard lock(RegisteredMutex());
    const auto found = Registered().find({nameSpace, classname});
    return found == Registered().end() ? nullptr : found->second;
}

short class_getpath(t_class* c) { return c ? Inner(c).path : short{0}; }

t_max_err class_setpath(t_class* c, short path) {
    if (!c) return MAX_ERR_INVALID_PTR;
    Inner(c).path = path;
    return MAX_ERR_NONE;
}

max_long class_is_box(t_class* c) { return c && (c->c_flags & CLASS_FLAG_BOX) ? 1 : 0; }

t_messlist* class_mess(t_class* c, t_symbol* name) {
    if (!c) return nullptr;
    const auto found = Inner(c).messageByName.find(name);
    return found == Inner(c).messageByName.end() ? nullptr : found->second;
}

method class_method(t_class* c, t_symbol* name) {
    const t_messlist* message = class_mess(c, name);
    return message ? message->m_fun : nullptr;
}
