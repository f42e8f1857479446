// SPDX-License-Identifier: MIT
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>

namespace Tests {
namespace {

template <class Action>
unsigned Caught(Action action) {
    const AllocationTrap trap;
    action();
    return trap.Violations();
}

/// Kept from the optimiser, which may remove an allocation that nobody looks at.
void* volatile sink = nullptr;

TEST(AllocationTrap, CatchesHeapAndLocksButNoTryLock) {
    struct alignas(64) Wide {
        float values[16];
    };
    EXPECT_GE(Caught([] { sink = std::make_unique<int>(1).get(); }), 2u);
    EXPECT_GE(Caught([] { sink = std::make_unique<Wide>().get(); }), 2u);
    const unsigned once = AllocationTrap::WatchesTheCLibrary() ? 1 : 0;
    std::mutex mutex;
    EXPECT_EQ(Caught([] { sink = std::malloc(10); }), once);
    EXPECT_EQ(Caught([] { std::free(sink); }), once);
    EXPECT_EQ(Caught([&] { mutex.lock(); }), once);
    mutex.unlock();
    EXPECT_EQ(Caught([&] {
                  if (mutex.try_lock()) mutex.unlock();
              }),
              0u);
}

}  // namespace
}  // namespace Tests
