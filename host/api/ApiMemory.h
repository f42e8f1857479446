// SPDX-License-Identifier: MIT
// Blocks of sysmem memory; inside the library only.
#pragma once

namespace HostApi {

/// Reports writes to freed blocks and returns their memory to the system.
void ReleaseFreedBlocks();

}  // namespace HostApi
