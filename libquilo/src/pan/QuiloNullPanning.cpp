// SPDX-License-Identifier: MIT
#include "pan/QuiloNullPanning.h"

namespace Quilo {

void NullPanning::Process(float* const* outputs,
                          const float* const*,
                          unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
}

void NullPanning::Perform(float* const* outputs,
                          const float* const*,
                          unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
}

}  // namespace Quilo
