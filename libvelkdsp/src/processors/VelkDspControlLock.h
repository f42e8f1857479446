// SPDX-License-Identifier: MIT
// The lock that control threads take round what they share.
#pragma once

#include "text/VelkDspThreadSafety.h"

#include <mutex>

namespace tav {

/// A plain mutex: a thread that has it must not ask for it again. Held through a ControlGuard
/// wherever one function takes it and gives it back.
class TAV_CAPABILITY("control lock") ControlLock {
public:
    void Lock() TAV_ACQUIRE() { mutex_.lock(); }
    /// @return false: somebody else has it
    bool TryLock() noexcept TAV_TRY_ACQUIRE(true) { return mutex_.try_lock(); }
    void Unlock() noexcept TAV_RELEASE() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

/// Waits for the lock and has it for as long as it lives.  Thread: control.
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
