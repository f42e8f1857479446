// SPDX-License-Identifier: MIT
// The inlet of the present message, and signal inlets; inside the libraries only.
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

/// Sets how many inlets from the left take signals; 0 after z_dsp_free.
MAXAPI_EXPORT void SetSignalInlets(t_object* object, std::size_t count);

}  // namespace HostApi
