// SPDX-License-Identifier: MIT
// Marks that the attributes of an object are being set from a stored state.
#pragma once

#include <cstdint>

namespace VelkMax {

/// While an instance lives, the setters that its thread runs get values from a state that the
/// object itself stored. Some attributes print a word that they refuse from a user; from a stored
/// state they accept that word as the value that prints it.
/// Thread: main or scheduler.
class RestoringState {
public:
    /// Where the state comes from: a message, or a client such as pattr, which knows the new state
    /// and therefore is not notified that it changed.
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
