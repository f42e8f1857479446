// SPDX-License-Identifier: MIT
// Whether an attribute is being set by a stored state.
#pragma once

#include <cstdint>

namespace VelkMax {

/// While one lives, the setters that its thread runs are told a state that the object itself gave
/// away. Some attributes print a word that they refuse from a user: there, and only there, such a
/// word is taken for the value that prints it.
/// Thread: main or scheduler.
class RestoringState {
public:
    /// Who brings the state: a message, or a client such as pattr, which holds the whole value and
    /// is not told that it is another one now.
    enum class By : std::uint8_t { Nobody, Message, Client };

    explicit RestoringState(By by) noexcept : before_(by_) { by_ = by; }
    ~RestoringState() { by_ = before_; }
    RestoringState(const RestoringState&) = delete;
    RestoringState& operator=(const RestoringState&) = delete;

    static bool IsActive() noexcept { return by_ != By::Nobody; }
    static bool IsByClient() noexcept { return by_ == By::Client; }

private:
    static inline thread_local By by_ = By::Nobody;
    By before_;
};

}  // namespace VelkMax
