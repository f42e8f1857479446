// SPDX-License-Identifier: MIT
// Creation and freeing of objects, stored values, registration and clients: object_... of the API.
#include "ApiObjects.h"

#include "ApiCallWatch.h"
#include "ApiFaults.h"
#include "ApiReports.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

namespace HostApi {
namespace {

struct LiveObjects {
    std::mutex mutex;
    std::unordered_map<const void*, std::unique_ptr<ObjectRecord>> records;
    struct DeadObject {
        const t_symbol* className;
        std::uint64_t number;
    };
    std::unordered_map<const void*, DeadObject> dead;
    std::deque<std::pair<const void*, std::uint64_t>> deadInOrder;  // the oldest first
    std::uint64_t numDead = 0;                                      // ever
    std::uint64_t numBorn = 0;
};

constexpr std::size_t kMostDead = 1024;  // largest number of freed objects that are remembered

// Never destroyed: modules may free objects while the process ends.
LiveObjects& Live() {
    static auto& live = *new LiveObjects;
    return live;
}

using Name = std::pair<const t_symbol*, const t_symbol*>;

/// The objects by registered name. The lock also guards names, clients and targets of records, and
/// is never held while a client is called.
struct Connections {
    std::recursive_mutex mutex;
    std::map<Name, void*> names;
};

Connections& TheConnections() {
    static auto& connections = *new Connections;
    return connections;
}

auto LockConnections() { return std::lock_guard(TheConnections().mutex); }

/// Remembers a freed object; beyond kMostDead forgets the oldest one.
void RememberDead(LiveObjects& live, const void* object, const t_symbol* className) {
    live.dead[object] = {className, ++live.numDead};
    live.deadInOrder.emplace_back(object, live.numDead);
    if (live.deadInOrder.size() <= kMostDead) return;
    const auto [oldest, number] = live.deadInOrder.front();
    live.deadInOrder.pop_front();
    // The address may belong to an object that was freed later.
    const auto known = live.dead.find(oldest);
    if (known != live.dead.end() && known->second.number == number) live.dead.erase(known);
}

/// The class of a freed object; null for any other pointer.
const t_symbol* ClassOfDead(const void* object) {
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    const auto dead = live.dead.find(object);
    return dead == live.dead.end() ? nullptr : dead->second.className;
}

bool IsAttribute(const void* object) {
    const ObjectRecord* record = FindObject(object);
    return record && record->type->c_sym == gensym("attribute");
}

}  // namespace

ObjectRecord* FindLive(const void* object) {
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    const auto found = live.records.find(object);
    return found == live.records.end() ? nullptr : found->second.get();
}

ObjectRecord* FindObject(const void* object) {
    ObjectRecord* const record = FindLive(object);
    if (record || !object) return record;
    if (const t_symbol* type = ClassOfDead(object))
        ReportBug("an object of class \"" + std::string(type->s_name) +
                  "\" is used after it was freed");
    return nullptr;
}

Target TargetOf(const void* object) {
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    const auto found = live.records.find(object);
    if (found == live.records.end()) return {object, 0, nullptr};
    return {object, found->second->birth, found->second->type->c_sym};
}

bool CanReach(const Target& target) {
    if (target.birth == 0 || TargetOf(target.object).birth == target.birth) return true;
    ReportBug("a deferred call reaches an object of class \"" +
              std::string(target.className->s_name) + "\" after it was freed");
    return false;
}

void ForgetDead() {
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    live.dead.clear();
    live.deadInOrder.clear();
}

std::size_t CountObjects() {
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    return live.records.size();
}

ObjectRecord& AdoptObject(t_object* object, Class& type) {
    object->o_messlist = &type.head[1];
    object->o_magic = OB_MAGIC;
    LiveObjects& live = Live();
    const std::lock_guard lock(live.mutex);
    live.dead.erase(object);
    auto& record = live.records[object];
    record = std::make_unique<ObjectRecord>();
    record->type = &type;
    record->birth = ++live.numBorn;
    return *record;
}

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
    values.swap(store);  // emptied first, since a free routine may access it
    for (auto& [key, stored] : values) {
        t_object* const value = stored.value.a_type == A_OBJ ? stored.value.a_w.w_obj : nullptr;
        if (!value) continue;
        if (stored.flags & OBJ_FLAG_MEMORY) {
            sysmem_freeptr(value);
        } else if (!(stored.flags & (OBJ_FLAG_REF | OBJ_FLAG_DATA))) {
            // Outlets are freed with their object, not with the value stored under a key.
            const ObjectRecord* record = FindObject(value);
            if (record && record->type->c_sym != gensym("outlet")) object_free(value);
        }
    }
}

t_messlist* FindMessage(const void* object, const t_symbol* name) {
    const ObjectRecord* record = FindObject(object);
    if (!record) return nullptr;
    const auto found = record->type->messageByName.find(name);
    return found == record->type->messageByName.end() ? nullptr : found->second;
}

void NotifyClients(void* object, t_symbol* message, void* data) {
    const ObjectRecord* record = FindObject(object);
    if (!record) return;
    using Notify = t_max_err(void*, t_symbol*, t_symbol*, void*, void*);
    std::vector<void*> clients;  // a copy, since a client may detach itself
    t_symbol* name = nullptr;
    {
        const auto lock = LockConnections();
        clients = record->clients;
        name = record->name;
    }
    if (!name) return;
    for (void* client : clients)
        if (const t_messlist* notify = FindMessage(client, gensym("notify")))
            MaxApi::FromMethod<Notify>(notify->m_fun)(client, name, message, object, data);
}

void DetachEverywhere(void* object, ObjectRecord& record) {
    const auto lock = LockConnections();
    for (const void* target : std::exchange(record.targets, {}))
        std::erase(FindObject(target)->clients, object);
    for (const void* client : std::exchange(record.clients, {}))
        std::erase(FindObject(client)->targets, object);
}

void DestroyObject(t_object* object) {
    ObjectRecord* const record = FindObject(object);
    if (!record) return;
    Class& type = *record->type;
    NotifyClients(object, gensym("free"), nullptr);
    if (type.c_freefun) type.c_freefun(object);
    if (record->signalInlets > 0) ReportBug("freed without z_dsp_free", object);
    object_unregister(object);
    DetachEverywhere(object, *record);
    FreeStored(record->stored);
    for (Attribute* attribute : record->attributes) DestroyObject(attribute->Object());
    for (Outlet* outlet : record->outlets) DestroyObject(outlet->Object());
    for (Proxy* proxy : record->proxies) DestroyObject(proxy->Object());
    object->o_magic = 0;
    {
        LiveObjects& live = Live();
        const std::lock_guard lock(live.mutex);
        live.records.erase(object);
        RememberDead(live, object, type.c_sym);
    }
    if (type.destroy) {
        type.destroy(object);
    } else {
        sysmem_freeptr(object);
    }
}

}  // namespace HostApi

using namespace HostApi;

void* object_alloc(t_class* c) {
    if (!c || InjectedFailure("object_alloc")) return nullptr;
    auto* const object = reinterpret_cast<t_object*>(
        sysmem_newptrclear(std::max<t_getbytes_size>(c->c_size, sizeof(t_object))));
    if (object) AdoptObject(object, *static_cast<Class*>(c));
    return object;
}

t_max_err object_free(void* x) {
    if (!x) return MAX_ERR_INVALID_PTR;
    const ObjectRecord* record = FindLive(x);
    if (!record) {
        ReportBug("object_free: the object is not alive");
        return MAX_ERR_INVALID_PTR;
    }
    auto* const object = static_cast<t_object*>(x);
    if (record->type->release && !record->type->release(object)) return MAX_ERR_NONE;
    DestroyObject(object);
    return MAX_ERR_NONE;
}

t_class* object_class(void* x) {
    const ObjectRecord* record = FindObject(x);
    return record ? record->type : nullptr;
}

t_symbol* object_classname(void* x) {
    const ObjectRecord* record = FindObject(x);
    return record ? record->type->c_sym : nullptr;
}

max_long object_classname_compare(void* x, t_symbol* name) {
    return name && object_classname(x) == name ? 1 : 0;
}

t_symbol* object_namespace(t_object* x) {
    const ObjectRecord* record = FindObject(x);
    return record ? record->type->nameSpace : nullptr;
}

max_long object_isnogood(void* x) { return FindLive(x) ? 0 : 1; }

// ---- Stored values

t_max_err object_obex_store(void* x, t_symbol* key, t_object* value) {
    ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    if (const auto code = InjectedFailure("object_obex_store")) return *code;
    StoredValue stored{{}, OBJ_FLAG_OBJ};
    atom_setobj(&stored.value, value);
    PutStored(record->stored, key, stored);
    return MAX_ERR_NONE;
}

t_max_err object_obex_storelong(void* x, t_symbol* key, t_atom_long value) {
    ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    StoredValue stored;
    atom_setlong(&stored.value, value);
    PutStored(record->stored, key, stored);
    return MAX_ERR_NONE;
}

t_max_err object_obex_storesym(void* x, t_symbol* key, t_symbol* value) {
    ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    StoredValue stored;
    atom_setsym(&stored.value, value);
    PutStored(record->stored, key, stored);
    return MAX_ERR_NONE;
}

namespace {

const StoredValue* FindStored(void* x, const t_symbol* key) {
    const ObjectRecord* record = FindObject(x);
    if (!record) return nullptr;
    const auto found = record->stored.find(key);
    return found == record->stored.end() ? nullptr : &found->second;
}

}  // namespace

t_max_err object_obex_lookup(void* x, t_symbol* key, t_object** value) {
    if (const auto code = InjectedFailure("object_obex_lookup")) return *code;
    const StoredValue* stored = FindStored(x, key);
    if (value) *value = stored && stored->value.a_type == A_OBJ ? stored->value.a_w.w_obj : nullptr;
    return stored && stored->value.a_type == A_OBJ ? MAX_ERR_NONE : MAX_ERR_GENERIC;
}

t_max_err object_obex_lookuplong(void* x, t_symbol* key, t_atom_long* value) {
    const StoredValue* stored = FindStored(x, key);
    if (!stored) return MAX_ERR_GENERIC;
    *value = atom_getlong(&stored->value);
    return MAX_ERR_NONE;
}

t_max_err object_obex_lookupsym(void* x, t_symbol* key, t_symbol** value) {
    const StoredValue* stored = FindStored(x, key);
    if (!stored) return MAX_ERR_GENERIC;
    *value = atom_getsym(&stored->value);
    return MAX_ERR_NONE;
}

t_max_err class_extra_store(t_class* c, t_symbol* key, t_object* value) {
    if (!c) return MAX_ERR_INVALID_PTR;
    StoredValue stored{{}, OBJ_FLAG_OBJ};
    atom_setobj(&stored.value, value);
    PutStored(static_cast<Class*>(c)->extra, key, stored);
    return MAX_ERR_NONE;
}

void* class_extra_lookup(t_class* c, t_symbol* key) {
    if (!c) return nullptr;
    const auto found = static_cast<Class*>(c)->extra.find(key);
    return found == static_cast<Class*>(c)->extra.end() ? nullptr : found->second.value.a_w.w_obj;
}

// ---- Registration and notification

void* object_register(t_symbol* nameSpace, t_symbol* name, void* x) {
    ObjectRecord* record = FindObject(x);
    if (!record) return nullptr;
    const auto lock = LockConnections();
    object_unregister(x);
    record->nameSpace = nameSpace;
    record->name = name ? name : symbol_unique();
    TheConnections().names[{record->nameSpace, record->name}] = x;
    return x;
}

t_max_err object_unregister(void* x) {
    ObjectRecord* record = FindObject(x);
    const auto lock = LockConnections();
    if (!record || !record->name) return MAX_ERR_GENERIC;
    auto& names = TheConnections().names;
    const auto known = names.find({record->nameSpace, record->name});
    if (known != names.end() && known->second == x) names.erase(known);
    record->nameSpace = record->name = nullptr;
    return MAX_ERR_NONE;
}

void* object_findregistered(t_symbol* nameSpace, t_symbol* name) {
    const auto lock = LockConnections();
    const auto& names = TheConnections().names;
    const auto found = names.find({nameSpace, name});
    return found == names.end() ? nullptr : found->second;
}

t_max_err object_findregisteredbyptr(t_symbol** nameSpace, t_symbol** name, void* x) {
    const ObjectRecord* record = FindObject(x);
    const auto lock = LockConnections();
    if (!record || !record->name) return MAX_ERR_GENERIC;
    *nameSpace = record->nameSpace;
    *name = record->name;
    return MAX_ERR_NONE;
}

void* object_attach(t_symbol* nameSpace, t_symbol* name, void* client) {
    void* const registered = object_findregistered(nameSpace, name);
    return object_attach_byptr(client, registered) == MAX_ERR_NONE ? registered : nullptr;
}

t_max_err object_detach(t_symbol* nameSpace, t_symbol* name, void* client) {
    return object_detach_byptr(client, object_findregistered(nameSpace, name));
}

t_max_err object_attach_byptr(void* client, void* registered) {
    ObjectRecord* record = FindObject(registered);
    const auto lock = LockConnections();
    if (!record || !record->name || !FindObject(client)) return MAX_ERR_GENERIC;
    if (std::ranges::find(record->clients, client) != record->clients.end()) return MAX_ERR_NONE;
    record->clients.push_back(client);
    FindObject(client)->targets.push_back(registered);
    return MAX_ERR_NONE;
}

t_max_err object_attach_byptr_register(void* client, void* target, t_symbol* nameSpace) {
    const ObjectRecord* record = FindObject(target);
    if (!record) return MAX_ERR_INVALID_PTR;
    const auto lock = LockConnections();
    if (!record->name) object_register(nameSpace, nullptr, target);
    return object_attach_byptr(client, target);
}

t_max_err object_detach_byptr(void* client, void* registered) {
    ObjectRecord* record = FindObject(registered);
    if (!record) return MAX_ERR_INVALID_PTR;
    const auto lock = LockConnections();
    if (std::erase(record->clients, client) == 0) return MAX_ERR_GENERIC;
    std::erase(FindObject(client)->targets, registered);
    return MAX_ERR_NONE;
}

t_max_err object_notify(void* x, t_symbol* message, void* data) {
    NoteCall("object_notify");
    const ObjectRecord* record = FindObject(x);
    if (!record) return MAX_ERR_INVALID_PTR;
    if (message == gensym("attr_modified") && !IsAttribute(data)) {
        // Clients use the data as an attribute: without one, this call crashes Max.
        ReportBug("attr_modified without an attribute", static_cast<t_object*>(x));
        return MAX_ERR_INVALID_PTR;
    }
    NotifyClients(x, message, data);
    return MAX_ERR_NONE;
}
