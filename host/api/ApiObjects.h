// SPDX-License-Identifier: MIT
// Live objects and their records; inside the library only.
#pragma once

#include "ApiRecords.h"

#include <cstdint>

namespace HostApi {

/// Stores a value under a key and frees the old one.
void PutStored(Store& store, const t_symbol* key, const StoredValue& value);
void FreeStored(Store& store);

/// The record of a live object; null for others, and the use of a freed object is reported.
/// Thread: any.
ObjectRecord* FindObject(const void* object);

/// The same without a report.
ObjectRecord* FindLive(const void* object);

/// The receiver of deferred work: an address and the object that lived there.
struct Target {
    const void* object = nullptr;
    std::uint64_t birth = 0;  // 0: the pointer was no live object
    const t_symbol* className = nullptr;
};
Target TargetOf(const void* object);
/// Whether deferred work may call its object. Reports when the object has been freed, also if a
/// newer object has the same address.
/// Thread: any.
bool CanReach(const Target& target);

/// Forgets all freed objects.
void ForgetDead();

/// Makes memory a live object of a class: sets its header and makes its record.  Thread: any.
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

/// Calls the method `notify` of every client.
void NotifyClients(void* object, t_symbol* message, void* data);
void DetachEverywhere(void* object, ObjectRecord& record);

}  // namespace HostApi
