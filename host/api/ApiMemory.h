// SPDX-License-Identifier: MIT
// Blocks of sysmem memory; inside the library only.
#pragma once

namespace HostApi {

/// Reports writes to freed blocks and gives the blocks back.
void ReleaseFreedBlocks();

}  // namespace HostApi
