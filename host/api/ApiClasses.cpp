// SPDX-License-Identifier: MIT
// Classes: class_... of the API.
#include "ApiAttributes.h"
#include "ApiFaults.h"
#include "ApiFiles.h"
#include "ApiObjects.h"

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

void PutStored(Store& store, const t_symbol* key, const StoredValue& value) {
    if (const auto old = store.find(key); old != store.end()) {
        Store one;
        one.insert(store.extract(old));
        if (one.begin()->second.value.a_w.w_obj != value.value.a_w.w_obj) FreeStored(one);
    }
    store[key] = value;
}

void FreeStored(Store& store) {
    Store values;
    values.swap(store);  // a free routine may look here again
    for (auto& [key, stored] : values) {
        t_object* const value = stored.value.a_type == A_OBJ ? stored.value.a_w.w_obj : nullptr;
        if (!value) continue;
        if (stored.flags & OBJ_FLAG_MEMORY) {
            sysmem_freeptr(value);
        } else if (!(stored.flags & (OBJ_FLAG_REF | OBJ_FLAG_DATA))) {
            // An outlet belongs to its object's box, whoever stored it.
            const ObjectRecord* record = FindObject(value);
            if (record && record->type->c_sym != gensym("outlet")) object_free(value);
        }
    }
}

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

t_max_err class_addattr(t_class* c, t_object* attr) {
    if (const auto code = InjectedFailure("class_addattr")) return *code;
    if (!c || !AsAttribute(attr)) return MAX_ERR_INVALID_PTR;
    PutAttribute(Inner(c).attributes, AsAttribute(attr));
    return MAX_ERR_NONE;
}

t_max_err class_dumpout_wrap(t_class* c) {
    if (!c) return MAX_ERR_INVALID_PTR;
    if (c->c_flags & CLASS_FLAG_REGISTERED) return MAX_ERR_GENERIC;  // the class is closed
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

void* class_attr_get(t_class* c, t_symbol* attrname) {
    return c ? FindAttribute(Inner(c).attributes, attrname) : nullptr;
}

t_messlist* class_mess(t_class* c, t_symbol* name) {
    if (!c) return nullptr;
    const auto found = Inner(c).messageByName.find(name);
    return found == Inner(c).messageByName.end() ? nullptr : found->second;
}

method class_method(t_class* c, t_symbol* name) {
    const t_messlist* message = class_mess(c, name);
    return message ? message->m_fun : nullptr;
}

t_max_err class_extra_store(t_class* c, t_symbol* key, t_object* value) {
    if (!c) return MAX_ERR_INVALID_PTR;
    StoredValue stored{{}, OBJ_FLAG_OBJ};
    atom_setobj(&stored.value, value);
    PutStored(Inner(c).extra, key, stored);
    return MAX_ERR_NONE;
}

void* class_extra_lookup(t_class* c, t_symbol* key) {
    if (!c) return nullptr;
    const auto found = Inner(c).extra.find(key);
    return found == Inner(c).extra.end() ? nullptr : found->second.value.a_w.w_obj;
}
