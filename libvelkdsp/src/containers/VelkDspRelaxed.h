// SPDX-License-Identifier: MIT
// The memory order for atomics that do not guard other data.
#pragma once

#include <atomic>

namespace tav {

inline constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

}  // namespace tav
