// SPDX-License-Identifier: MIT
// Planned failures of API calls, and reports of calls that a perform routine must not make; inside
// the library only.
#pragma once

#include "ext_codes.h"

#include <optional>
#include <string_view>

namespace HostApi {

/// The error code with which this call of an API function has to fail; normally nothing. A function
/// asks once per call, before it does anything.
/// Thread: any.
std::optional<t_max_err> InjectedFailure(std::string_view function);

/// Posts a bug when the calling thread is running a perform routine.
void RefusePerform(const char* function);

}  // namespace HostApi
