// SPDX-License-Identifier: MIT
// What caused the work of a thread; inside the library only. Kinds of threads are in HostBridge.h.
#pragma once

#include "HostBridge.h"

namespace HostApi {

/// The cause of what is put off now.
class PutOffCause {
public:
    /// @param before  what waited already and is now done together with it
    void Add(const PutOffCause& before);
    /// As CurrentCause has it while the work runs.
    Cause AtWork() const;

    /// Of the calling thread.
    static PutOffCause Now();

private:
    Cause cause_;
    bool isOfAudio_ = false;  // and with it what the audio interrupt does until the work runs
};

/// Work that was put off runs while this lives.
class CauseScope {
public:
    explicit CauseScope(const PutOffCause& cause) : previous_(CurrentCause()) {
        SetCause(cause.AtWork());
    }
    ~CauseScope() { SetCause(previous_); }
    CauseScope(const CauseScope&) = delete;
    CauseScope& operator=(const CauseScope&) = delete;

private:
    Cause previous_;
};

}  // namespace HostApi
