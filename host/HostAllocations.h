// SPDX-License-Identifier: MIT
// Memory that the module takes with operator new: counted, and refused on demand.
#pragma once

#include <cstddef>

namespace Quilo::Host {

/// Lets the n-th allocation of the module from now on throw std::bad_alloc, in the calling thread.
/// @param n  0: none, whatever was planned
/// @return false where the module's memory is out of our reach
bool FailAllocation(unsigned n);

/// Asked at every allocation of the module: whether it is the one that fails.
bool RefuseAllocation();

/// Whether the allocation that was to fail has not been asked for yet.
bool AllocationFailureWaits();

/// Allocations of the whole program that have not been freed; 0 where they are not counted
/// (Windows).
std::size_t CountAllocations();

}  // namespace Quilo::Host
