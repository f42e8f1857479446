// SPDX-License-Identifier: MIT
#include "support/SystemCallTrap.h"

#include <gtest/gtest.h>

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace Tests {
namespace {

using Numbers = std::vector<int>;

TEST(SystemCallTrap, CatchesEveryCallInOrderAndDoesNotChangeIt) {
    int ends[2] = {-1, -1};
    char text[4] = "";
    long answers[3] = {};
    ASSERT_EQ(pipe(ends), 0);
    const Numbers calls = SystemCallsOf([&] {
        answers[0] = write(ends[1], "abc", 3);
        answers[1] = read(ends[0], text, 3);
        answers[2] = getppid();
    });
    EXPECT_EQ(calls, (Numbers{SYS_write, SYS_read, SYS_getppid}));
    EXPECT_EQ(answers[0], 3);
    EXPECT_EQ(answers[1], 3);
    EXPECT_EQ(answers[2], getppid());
    EXPECT_STREQ(text, "abc");
    for (const int end : ends) close(end);
}

TEST(SystemCallTrap, CatchesAMutexThatSomebodyHolds) {
    std::timed_mutex mutex;
    const std::scoped_lock held(mutex);
    const Numbers calls = SystemCallsOf([&] { mutex.try_lock_for(std::chrono::milliseconds(1)); });
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front(), SYS_futex);
}

TEST(SystemCallTrap, CatchesTheWakeUpOfAnotherThread) {
    std::mutex mutex;
    std::condition_variable condition;
    bool waiting = false, woken = false;
    std::thread sleeper([&] {
        std::unique_lock lock(mutex);
        waiting = true;
        condition.wait(lock, [&] { return woken; });
    });
    while (!woken) {
        const std::scoped_lock lock(mutex);
        woken = waiting;  // and the sleeper has let go of the mutex, so it sleeps
    }
    EXPECT_EQ(SystemCallsOf([&] { condition.notify_all(); }), Numbers{SYS_futex});
    sleeper.join();
}

TEST(SystemCallTrap, CatchesMemoryFromTheKernelAndSleeping) {
    void* volatile block = nullptr;
    const Numbers memory = SystemCallsOf([&] { block = std::malloc(std::size_t{1} << 30); });
    std::free(block);
    ASSERT_FALSE(memory.empty());
    EXPECT_EQ(memory.front(), SYS_mmap);
    EXPECT_EQ(SystemCallsOf([] { usleep(1); }), Numbers{SYS_clock_nanosleep});
}

TEST(SystemCallTrap, IsSilentAboutArithmeticAtomicsAndTryLocks) {
    std::mutex mutex;
    std::atomic<int> shared{0};
    double sum = 0.0;
    const Numbers calls = SystemCallsOf([&] {
        for (int k = 0; k < 1000; ++k) sum += std::sin(k);
        shared.fetch_add(1);
        if (mutex.try_lock()) mutex.unlock();
    });
    EXPECT_EQ(calls, Numbers{});
    EXPECT_EQ(shared, 1);
    EXPECT_TRUE(std::isfinite(sum));
}

TEST(SystemCallTrap, WatchesNobodyElse) {
    std::atomic<int> state{0};
    std::thread other([&] {
        while (state != 1) std::this_thread::yield();
        state = getppid() > 0 ? 2 : 3;
    });
    const Numbers calls = SystemCallsOf([&] {
        state = 1;
        while (state < 2) {}
    });
    other.join();
    EXPECT_EQ(calls, Numbers{});
    EXPECT_EQ(state, 2);
    EXPECT_GT(getppid(), 0);  // nor this thread, afterwards
}

}  // namespace
}  // namespace Tests

#else

TEST(SystemCallTrap, IsNotThere) { GTEST_SKIP() << "needs Linux on x86-64 and no sanitizer"; }

#endif
