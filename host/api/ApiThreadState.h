// SPDX-License-Identifier: MIT
// What caused the work of a thread; inside the library only. Kinds of threads are in HostBridge.h.
#pragma once

#include "HostBridge.h"

namespace HostApi {

/// The cause of work that is being deferred.
class PutOffCause {
public:
    /// @param before  the cause of earlier work that is merged with this
    void Add(const PutOffCause& before);
    /// The cause that CurrentCause returns while the work runs.
    Cause AtWork() const;

    /// The cause that applies to the calling thread.
    static PutOffCause Now();

private:
    Cause cause_;
    bool isOfAudio_ =
        false;  // then also later actions of the audio interrupt count until the work runs
};

/// Sets the cause of the calling thread while deferred work runs.
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
