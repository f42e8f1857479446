// SPDX-License-Identifier: MIT
// The processor's treatment of denormal numbers while audio is computed.
#pragma once

#include "text/VelkDspNonblocking.h"

namespace tav {

/// While it exists, denormal operands and results of this thread count as zero; the destructor
/// restores the caller's mode. Guards nest. Does nothing on machines without such a mode.
/// Thread: any; created and destroyed in the same one.  Cost: a few cycles.
class DenormalGuard {
public:
    DenormalGuard() noexcept TAV_NONBLOCKING;
    ~DenormalGuard() noexcept TAV_NONBLOCKING;
    DenormalGuard(const DenormalGuard&) = delete;
    DenormalGuard& operator=(const DenormalGuard&) = delete;

private:
    unsigned callersMode_ = 0;
};

}  // namespace tav
