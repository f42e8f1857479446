// SPDX-License-Identifier: MIT
// Catches every system call of an audio callback: a lock that waits, a wake-up, a file, memory that
// the C library hands back to the kernel.
//
// The kernel itself watches (a seccomp filter of one thread), so that nothing can go past as it can
// past replaced functions. Needs Linux on x86-64; under sanitizers, which call the kernel
// themselves, it is not there.
#pragma once

#include <functional>
#include <string>
#include <vector>

#if defined(__linux__) && defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__) && \
    !defined(__SANITIZE_THREAD__)
#define TRAP_CATCHES_SYSTEM_CALLS 1
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#undef TRAP_CATCHES_SYSTEM_CALLS
#endif
#endif
#endif

#if defined(TRAP_CATCHES_SYSTEM_CALLS)

namespace Tests {

/// Runs `action` in a thread of its own under the kernel's eye, and waits for its end.
/// Returns the numbers (SYS_write, ...) of the system calls it made, in order, at most the
/// first 64.
/// @param action  throws nothing, holds no assertion (a failing one writes)
/// Throws: std::runtime_error where the kernel refuses the filter; `action` has not run then.
std::vector<int> SystemCallsOf(const std::function<void()>& action);

}  // namespace Tests

#endif
