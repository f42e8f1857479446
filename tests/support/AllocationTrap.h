// SPDX-License-Identifier: MIT
// Counts what the audio thread must not do: allocate, free, lock.
//
// With the GNU C library the test program stands in front of malloc and its relatives, and with
// them of operator new and delete, and of pthread_mutex_lock (a try-lock is allowed). Sanitizers
// own those functions: under them nothing is counted.
#pragma once

namespace Tests {

/// While it lives, every allocation, release and lock of this thread counts. Traps nest.
/// Keep assertions outside: a failing one allocates.
///
///     unsigned violations = 0;
///     { AllocationTrap trap; Play(); violations = trap.Violations(); }
///     EXPECT_EQ(violations, 0u);
class AllocationTrap {
public:
    AllocationTrap() noexcept;
    ~AllocationTrap() noexcept;
    AllocationTrap(const AllocationTrap&) = delete;
    AllocationTrap& operator=(const AllocationTrap&) = delete;

    /// Since this trap was set.
    unsigned Violations() const noexcept;

    /// False where nothing is counted.
    static bool IsAtWork() noexcept;

private:
    unsigned before_;
};

/// Of `action` alone. It is not copied: a copied std::function allocates, outside the trap.
template <class Action>
unsigned ViolationsOf(const Action& action) {
    const AllocationTrap trap;
    action();
    return trap.Violations();
}

}  // namespace Tests
