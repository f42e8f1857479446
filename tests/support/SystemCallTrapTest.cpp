// SPDX-License-Identifier: MIT
#include "support/SystemCallTrap.h"

#include <gtest/gtest.h>

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

#include <chrono>
#include <mutex>
#include <sys/syscall.h>
#include <unistd.h>

namespace Tests {
namespace {

TEST(SystemCallTrap, CatchesEveryCallInOrderAndDoesNotChangeIt) {
    int ends[2] = {-1, -1};
    char text[4] = "";
    ASSERT_EQ(pipe(ends), 0);
    std::timed_mutex mutex;
    const std::scoped_lock held(mutex);
    const std::vector<int> calls = SystemCallsOf([&] {
        if (write(ends[1], "abc", 3) != 3 || read(ends[0], text, 3) != 3) return;
        if (!mutex.try_lock()) mutex.try_lock_for(std::chrono::milliseconds(1));
    });
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(std::vector(calls.begin(), calls.begin() + 3),
              (std::vector<int>{SYS_write, SYS_read, SYS_futex}));
    EXPECT_STREQ(text, "abc");
    for (const int end : ends) close(end);
}

}  // namespace
}  // namespace Tests

#else

TEST(SystemCallTrap, IsNotThere) { GTEST_SKIP() << "needs Linux on x86-64 and no sanitizer"; }

#endif
