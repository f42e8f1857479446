// SPDX-License-Identifier: MIT
// Attributes that state which data a lock guards and which functions need it.
//
// clang checks every access against them (-Wthread-safety, an error in our builds); for other
// compilers they only inform the reader. They follow `override` and precede `= 0`.
#pragma once

#if defined(__clang__)
#define TAV_THREAD_SAFETY(mark) __attribute__((mark))
#else
#define TAV_THREAD_SAFETY(mark)
#endif

/// A class whose objects are locks.
#define TAV_CAPABILITY(name) TAV_THREAD_SAFETY(capability(name))
/// A class whose objects hold a lock as long as they exist.
#define TAV_SCOPED_CAPABILITY TAV_THREAD_SAFETY(scoped_lockable)
/// A member that is read and written with this lock held.
#define TAV_GUARDED_BY(lock) TAV_THREAD_SAFETY(guarded_by(lock))
/// A function that must be called with this lock held and does not release it.
#define TAV_REQUIRES(lock) TAV_THREAD_SAFETY(requires_capability(lock))
/// A function that acquires or releases a lock: the one named, or the object's own.
#define TAV_ACQUIRE(...) TAV_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define TAV_RELEASE(...) TAV_THREAD_SAFETY(release_capability(__VA_ARGS__))
/// A function that has taken the lock when it answers the value named first.
#define TAV_TRY_ACQUIRE(...) TAV_THREAD_SAFETY(try_acquire_capability(__VA_ARGS__))
/// A function that takes the lock itself: not to be called with it held.
#define TAV_EXCLUDES(lock) TAV_THREAD_SAFETY(locks_excluded(lock))
/// A function that returns only where the lock is held, so that what follows may rely on it.
#define TAV_ASSERT_HELD(lock) TAV_THREAD_SAFETY(assert_capability(lock))
/// A function that holds the lock on some of its ways only, which the compiler cannot follow.
#define TAV_UNCHECKED TAV_THREAD_SAFETY(no_thread_safety_analysis)
