// SPDX-License-Identifier: MIT
// Rows of the console; inside the library only.
#pragma once

#include "HostBridge.h"

#include <string>
#include <string_view>

namespace HostApi {

/// Gives a row to the host's sink.  @param object  whose it is, null: nobody's.  Thread: any.
void WriteRow(PostKind kind, std::string_view text, t_object* object);

/// What the library itself says of a module's mistake. Parts of the library that object_bug uses
/// say it with this.  Thread: any.
inline void ReportBug(const std::string& text, t_object* object = nullptr) {
    WriteRow(PostKind::Bug, text, object);
}

}  // namespace HostApi
