// SPDX-License-Identifier: MIT
// Rows of the console; inside the library only.
#pragma once

#include "HostBridge.h"

#include <string>
#include <string_view>

namespace HostApi {

/// Passes a row to the host's sink. @param object  whose row it is, may be null.  Thread: any.
void WriteRow(PostKind kind, std::string_view text, t_object* object);

/// Posts a row about a module's mistake. For code that object_bug depends on and that so cannot
/// call it.
/// Thread: any.
inline void ReportBug(const std::string& text, t_object* object = nullptr) {
    WriteRow(PostKind::Bug, text, object);
}

}  // namespace HostApi
