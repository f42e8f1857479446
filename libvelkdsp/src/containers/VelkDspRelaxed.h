// SPDX-License-Identifier: MIT
// The order of atomics whose value alone matters: it publishes nothing else.
#pragma once

#include <atomic>

namespace tav {

inline constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

}  // namespace tav
