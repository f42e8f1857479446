// SPDX-License-Identifier: MIT
// The lock that protects the data which control threads share; the audio thread may try to lock it.
#pragma once

#include "text/VelkDspThreadSafety.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace tav {

/// Not recursive: a thread that holds it must not lock it again. Use a ControlGuard wherever the
/// same function locks and unlocks it.
///
/// Control threads wait for each other at a mutex. The audio thread only ever tries, and what it
/// then holds is a flag: giving that back is a plain store, which wakes nobody and calls no kernel.
/// A control thread that meets the audio thread here yields until the flag is free, which is at
/// most a part of a block.
class TAV_CAPABILITY("control lock") ControlLock {
public:
    void Lock() TAV_ACQUIRE() {
        mutex_.lock();
        while (isHeld_.exchange(true, std::memory_order_acquire)) std::this_thread::yield();
        hasMutex_ = true;
    }
    /// @return false if another thread holds it
    bool TryLock() noexcept TAV_TRY_ACQUIRE(true) {
        if (isHeld_.exchange(true, std::memory_order_acquire)) return false;
        hasMutex_ = false;
        return true;
    }
    void Unlock() noexcept TAV_RELEASE() {
        const bool hasMutex = hasMutex_;
        isHeld_.store(false, std::memory_order_release);
        if (hasMutex) mutex_.unlock();
    }

private:
    std::mutex mutex_;  // among control threads
    std::atomic<bool> isHeld_ = false;
    bool hasMutex_ = false;  // whoever has the lock
};

/// Locks when it is made, waiting if necessary, and unlocks when its scope ends.  Thread: control.
class TAV_SCOPED_CAPABILITY ControlGuard {
public:
    explicit ControlGuard(ControlLock& lock) TAV_ACQUIRE(lock) : lock_(lock) { lock_.Lock(); }
    ~ControlGuard() TAV_RELEASE() { lock_.Unlock(); }
    ControlGuard(const ControlGuard&) = delete;
    ControlGuard& operator=(const ControlGuard&) = delete;

private:
    ControlLock& lock_;
};

}  // namespace tav
