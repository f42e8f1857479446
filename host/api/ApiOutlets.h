// SPDX-License-Identifier: MIT
// Outlet and proxy objects; inside the libraries only.
#pragma once

#include "ext.h"

#include <cstddef>

namespace HostApi {

struct Outlet {
    t_object ob;
    t_object* owner;
    t_symbol* type;  // the empty symbol: any message

    static Outlet* FromObject(t_object* object) { return reinterpret_cast<Outlet*>(object); }
    t_object* Object() { return &ob; }
};

struct Proxy {
    t_object ob;
    max_long id;  // what proxy_getinlet tells
    max_long* place;

    static Proxy* FromObject(t_object* object) { return reinterpret_cast<Proxy*>(object); }
    t_object* Object() { return &ob; }
};

/// While this lives, proxy_getinlet answers `inlet` for `object` in the calling thread.
class InletScope {
public:
    InletScope(const t_object* object, std::size_t inlet);
    ~InletScope();
    InletScope(const InletScope&) = delete;
    InletScope& operator=(const InletScope&) = delete;

private:
    const t_object* previousObject_;
    max_long previousInlet_;
};

/// How many of the inlets from the left take signals; told by the MSP side, 0 once it let go of the
/// object.
MAXAPI_EXPORT void SetSignalInlets(t_object* object, std::size_t count);

}  // namespace HostApi
