// SPDX-License-Identifier: MIT
// Calls that are made to fail, and calls that a module must not make; inside the library only.
#pragma once

#include "ext_codes.h"

#include <optional>
#include <string_view>

namespace HostApi {

/// The code with which this call of an API function is to fail; nothing in the ordinary case.  A
/// function asks once a call, before it does anything.  Thread: any.
std::optional<t_max_err> InjectedFailure(std::string_view function);

/// Reports a function that a perform routine must not call, when one does.
void RefusePerform(const char* function);

}  // namespace HostApi
