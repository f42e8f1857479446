// SPDX-License-Identifier: MIT
// Inlets as the message at hand sees them; inside the libraries only.
#pragma once

#include "ApiRecords.h"

#include <cstddef>

namespace HostApi {

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
