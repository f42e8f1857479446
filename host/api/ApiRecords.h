// SPDX-License-Identifier: MIT
// The records of classes and objects; inside the libraries only.
//
// An object's memory holds only what a module can see (t_object and the module's own fields). All
// else (outlets, stored values, instance attributes, clients) is in an ObjectRecord that is found
// by the object's address, so that a freed or foreign pointer is noticed.
#pragma once

#include "ext.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace HostApi {

/// Range of a clip filter.
struct Clip {
    double min, max;
    bool useMin, useMax;
};

struct Attribute : t_attr {
    enum class Place : std::uint8_t { Record, OwnValues };

    Place place = Place::OwnValues;
    std::size_t size = 1;  // largest number of values
    std::size_t offset = 0, offsetCount = 0;
    std::vector<t_atom> values;  // Place::OwnValues
    std::optional<Clip> clipOnGet, clipOnSet;

    static Attribute* FromObject(t_object* object) {
        return static_cast<Attribute*>(reinterpret_cast<t_attr*>(object));
    }
    t_object* Object() { return &ob; }
};

struct Outlet {
    t_object ob;
    t_object* owner;
    t_symbol* type;  // the empty symbol: any message

    static Outlet* FromObject(t_object* object) { return reinterpret_cast<Outlet*>(object); }
    t_object* Object() { return &ob; }
};

struct Proxy {
    t_object ob;
    max_long id;  // the number that proxy_getinlet returns
    max_long* place;

    static Proxy* FromObject(t_object* object) { return reinterpret_cast<Proxy*>(object); }
    t_object* Object() { return &ob; }
};

/// A value stored with an object or a class, and how it is freed (OBJ_FLAG_).
struct StoredValue {
    t_atom value{};
    max_long flags = OBJ_FLAG_DATA;
};
using Store = std::map<const t_symbol*, StoredValue>;

/// A class.  Lives as long as the process.
struct Class : t_class {
    t_symbol* nameSpace = nullptr;
    std::vector<std::unique_ptr<t_messlist>> messages;  // in the order of registration
    std::unordered_map<const t_symbol*, t_messlist*> messageByName;
    std::vector<Attribute*> attributes;
    Store extra;
    bool answersGet = false;  // class_dumpout_wrap was called
    short path = 0;           // id of the folder of its module

    // Set for the library's own classes, whose objects are C++ records made with new.
    void (*destroy)(t_object* object) = nullptr;
    bool (*release)(t_object* object) = nullptr;  // false: still referenced, must not be freed yet

    t_messlist creation{};  // types of the creation routine
    t_messlist head[2]{};   // head[0].m_sym is the class; objects point to head[1]
};

struct ObjectRecord {
    Class* type = nullptr;
    std::uint64_t birth = 0;             // unique number, from 1
    std::vector<Attribute*> attributes;  // of the instance, owned
    Store stored;
    std::vector<Outlet*> outlets;  // as made, right to left, owned
    std::vector<Proxy*> proxies;   // as made, right to left, owned
    std::size_t signalInlets = 0;
    std::set<const t_symbol*> disabledAttributes;

    // Guarded by the lock of Connections.
    t_symbol* nameSpace = nullptr;  // null while not registered
    t_symbol* name = nullptr;
    std::vector<void*> clients;  // attached to this object
    std::vector<void*> targets;  // to which this object is attached
};

}  // namespace HostApi
