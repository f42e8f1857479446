// SPDX-License-Identifier: MIT
// The window of the polyphase synthesis.
#pragma once

#include <cstddef>

namespace tav {

/// D[i] of ISO 11172-3, Table B.3. @param i  0 to 511
float Mp3WindowValue(std::size_t i) noexcept;

}  // namespace tav
