// SPDX-License-Identifier: MIT
#include "support/AllocationTrap.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <mutex>

namespace Tests {
namespace {

/// Kept from the optimiser, which may remove an allocation that nobody looks at.
void* volatile sink = nullptr;

TEST(AllocationTrap, CatchesHeapAndLocksButNoTryLock) {
    if (!AllocationTrap::IsAtWork()) GTEST_SKIP() << "a sanitizer has these functions";
    struct alignas(64) Wide {
        float values[16];
    };
    EXPECT_GE(ViolationsOf([] { sink = std::make_unique<int>(1).get(); }), 2u);
    EXPECT_GE(ViolationsOf([] { sink = std::make_unique<Wide>().get(); }), 2u);
    EXPECT_EQ(ViolationsOf([] { sink = std::malloc(10); }), 1u);
    EXPECT_EQ(ViolationsOf([] { std::free(sink); }), 1u);
    std::mutex mutex;
    EXPECT_EQ(ViolationsOf([&] { mutex.lock(); }), 1u);
    mutex.unlock();
    const auto tryLock = [&] {
        if (mutex.try_lock()) mutex.unlock();
    };
    EXPECT_EQ(ViolationsOf(tryLock), 0u);
}

}  // namespace
}  // namespace Tests
