// SPDX-License-Identifier: MIT
// An object of any class, as the messages that every object has see it.
#pragma once

#include "ext.h"

namespace VelkMax {

/// The header that every record begins with. It has no lock of its own: what these messages do goes
/// through the attributes, whose accessors take the object's lock one by one, so that nothing is
/// locked while a message leaves an outlet.
struct AnyObject {
    t_object header;

    static AnyObject& Of(void* record) { return *static_cast<AnyObject*>(record); }
    friend t_object* MaxObjectOf(const AnyObject& object) {
        return &const_cast<AnyObject&>(object).header;
    }

    struct NoLock {
        ~NoLock() {}  // NOLINT(modernize-use-equals-default): a trivial one would count as unused
    };
    static NoLock Lock() { return {}; }
};

}  // namespace VelkMax
