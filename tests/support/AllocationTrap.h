// SPDX-License-Identifier: MIT
// Counts what the audio thread must not do: allocate, free, lock.
//
// The test program replaces operator new and delete and, with the GNU C library, stands in front of
// malloc and its relatives and of pthread_mutex_lock (a try-lock is allowed). Under the address and
// thread sanitizers, which own those functions, only operator new and delete are watched.
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

    /// False where only operator new and delete are watched.
    static bool WatchesTheCLibrary() noexcept;

private:
    unsigned before_;
};

/// Of `action` alone.
template <class Action>
unsigned ViolationsOf(Action action) {
    const AllocationTrap trap;
    action();
    return trap.Violations();
}

}  // namespace Tests
