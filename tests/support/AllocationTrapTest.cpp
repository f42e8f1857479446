// SPDX-License-Identifier: MIT
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

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

TEST(AllocationTrap, CatchesEveryWayToTheHeap) {
    EXPECT_GE(Caught([] { sink = std::make_unique<int>(1).get(); }), 2u);
    EXPECT_GE(Caught([] { sink = std::vector<double>(100).data(); }), 2u);
    EXPECT_GE(Caught([] { sink = std::string(100, 'x').data(); }), 2u);
    struct alignas(64) Wide {
        float values[16];
    };
    EXPECT_GE(Caught([] { sink = std::make_unique<Wide>().get(); }), 2u);
}

TEST(AllocationTrap, IsSilentWithoutReasonAndOutside) {
    int count = 0;
    EXPECT_EQ(Caught([&] { ++count; }), 0u);
    const auto outside = std::make_unique<int>(count);
    EXPECT_EQ(Caught([&] { count += *outside; }), 0u);
}

TEST(AllocationTrap, CatchesTheCLibraryAndLocksButNoTryLock) {
    const unsigned once = AllocationTrap::WatchesTheCLibrary() ? 1 : 0;
    EXPECT_EQ(Caught([] { sink = std::malloc(10); }), once);
    EXPECT_EQ(Caught([] { std::free(sink); }), once);
    std::mutex plain;
    std::recursive_mutex recursive;
    EXPECT_EQ(Caught([&] { plain.lock(); }), once);
    EXPECT_EQ(Caught([&] { recursive.lock(); }), once);
    EXPECT_EQ(Caught([&] {
                  plain.unlock();
                  recursive.unlock();
                  if (plain.try_lock()) plain.unlock();
              }),
              0u);
}

}  // namespace
}  // namespace Tests
