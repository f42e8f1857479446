// SPDX-License-Identifier: MIT
// Counts what the module allocates with operator new, and can make one allocation fail.
#pragma once

#include <cstddef>

namespace Quilo::Host {

/// Makes the n-th allocation that the module makes from now on in this thread throw std::bad_alloc.
/// @param n  0: none; cancels an earlier call
/// @return false where the module's allocations cannot be intercepted
bool FailAllocation(unsigned n);

/// Called for every allocation of the module; true for the one that has to fail.
bool RefuseAllocation();

/// Whether the planned failure has not happened yet.
bool AllocationFailureWaits();

/// Allocations of the whole program that have not been freed; 0 where they are not counted
/// (Windows).
std::size_t CountAllocations();

}  // namespace Quilo::Host
