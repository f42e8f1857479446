// SPDX-License-Identifier: MIT
// Tells the host of calls that reach others; inside the library only.
#pragma once

namespace HostApi {

/// The first thing that such a function does. Costs little while nobody watches.  Thread: any.
void NoteCall(const char* function);

}  // namespace HostApi
