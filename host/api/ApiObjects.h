// SPDX-License-Identifier: MIT
// What the library knows about classes and live objects; inside the library only.
//
// An object's memory holds what a module may see (t_object and the module's own fields). Everything
// else about it (outlets, stored values, instance attributes, clients) stands in an ObjectRecord
// that is found by the object's address, so a dead or foreign pointer is noticed instead of
// followed.
#pragma once

#include "ext.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace HostApi {

struct Attribute;
struct Outlet;
struct Proxy;

/// A value stored with an object or a class, and how it is freed (OBJ_FLAG_).
struct StoredValue {
    t_atom value{};
    max_long flags = OBJ_FLAG_DATA;
};
using Store = std::map<const t_symbol*, StoredValue>;

/// Puts a value under a key and frees the one that was there.
void PutStored(Store& store, const t_symbol* key, const StoredValue& value);
void FreeStored(Store& store);

/// A class.  Lives as long as the process.
struct Class : t_class {
    t_symbol* nameSpace = nullptr;
    std::vector<std::unique_ptr<t_messlist>> messages;  // in the order of registration
    std::unordered_map<const t_symbol*, t_messlist*> messageByName;
    std::vector<Attribute*> attributes;
    Store extra;
    bool answersGet = false;  // class_dumpout_wrap was called
    short path = 0;           // id of the folder it came from

    // Set for the library's own classes, whose objects are C++ records made with new.
    void (*destroy)(t_object* object) = nullptr;
    bool (*release)(t_object* object) = nullptr;  // false: others still hold it, do not free yet

    t_messlist creation{};  // types of the creation routine
    t_messlist head[2]{};   // head[0].m_sym is the class; objects point to head[1]
};

struct ObjectRecord {
    Class* type = nullptr;
    std::uint64_t birth = 0;             // a number of its own, from 1
    std::vector<Attribute*> attributes;  // of the instance, owned
    Store stored;
    std::vector<Outlet*> outlets;  // as made, right to left, owned
    std::vector<Proxy*> proxies;   // as made, right to left, owned
    std::size_t signalInlets = 0;
    std::set<const t_symbol*> disabledAttributes;

    // Under the lock of all connections.
    t_symbol* nameSpace = nullptr;  // null while not registered
    t_symbol* name = nullptr;
    std::vector<void*> clients;  // attached to this object
    std::vector<void*> targets;  // to which this object is attached
};

/// The record of a live object, or null; the use of one that was freed is reported.  Thread: any.
ObjectRecord* FindObject(const void* object);

/// The same without a report.
ObjectRecord* FindLive(const void* object);

/// An object as work that was put off knows it.
struct Target {
    const void* object = nullptr;
    std::uint64_t birth = 0;  // 0: any other pointer, of which nothing is known
    const t_symbol* className = nullptr;
};
Target TargetOf(const void* object);
/// Whether a call that was put off may reach its object; one that would reach a freed object is
/// reported, also where a younger one stands in its place.  Thread: any.
bool CanReach(const Target& target);

/// Forgets which objects have died.
void ForgetDead();

/// Declares memory a live object of a class: header set, record made.  Thread: any.
ObjectRecord& AdoptObject(t_object* object, Class& type);

/// A class of the library's own whose objects are C++ records of type T, which begins with a
/// t_object.
template <class T>
Class& OwnClass(const char* name) {
    t_class* made = class_new(name, nullptr, nullptr, static_cast<max_long>(sizeof(T)), nullptr, 0);
    auto& type = *static_cast<Class*>(made);
    type.destroy = [](t_object* object) { delete T::FromObject(object); };
    return type;
}

/// The record behind a pointer; null when it is no live object of the library's own class `type`.
template <class T>
T* AsOwn(Class& (*type)(), const void* pointer) {
    const ObjectRecord* record = FindObject(pointer);
    if (!record || record->type != &type()) return nullptr;
    return T::FromObject(static_cast<t_object*>(const_cast<void*>(pointer)));
}

/// Frees an object whether or not others hold references.
void DestroyObject(t_object* object);

/// The method of an object's class, or null.
t_messlist* FindMessage(const void* object, const t_symbol* name);

/// Whether a message box reaches this message.
bool IsReachable(const t_messlist* message);

/// Calls every client's `notify`, then forgets them if `last`.
void NotifyClients(void* object, t_symbol* message, void* data);
void DetachEverywhere(void* object, ObjectRecord& record);

}  // namespace HostApi
