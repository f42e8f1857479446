// SPDX-License-Identifier: MIT
// Whether an attribute is being set by a stored state.
#pragma once

#include "ext.h"

namespace VelkMax {

/// While one lives, the setters that its thread runs are told a state that the object itself gave
/// away. Some attributes print a word that they refuse from a user: there, and only there, such a
/// word is taken for the value that prints it.
class RestoringState {
public:
    RestoringState() noexcept : before_(isActive_) { isActive_ = true; }
    ~RestoringState() { isActive_ = before_; }
    RestoringState(const RestoringState&) = delete;
    RestoringState& operator=(const RestoringState&) = delete;

    static bool IsActive() noexcept { return isActive_; }

private:
    static inline thread_local bool isActive_ = false;
    bool before_;
};

/// Tells clients of the whole value, such as pattr, that it is another one now. While a state is
/// being restored nothing is told: who restores it tells it once, or is the client itself.
/// Thread: main or scheduler.
inline void AnnounceState(t_object* object) {
    if (!RestoringState::IsActive()) object_notify(object, gensym("modified"), nullptr);
}

}  // namespace VelkMax
