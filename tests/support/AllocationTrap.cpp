// SPDX-License-Identifier: MIT
#include "support/AllocationTrap.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TRAP_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TRAP_SANITIZED 1
#endif
#endif

#if defined(__GLIBC__) && !defined(TRAP_SANITIZED)
#define TRAP_STANDS_BEFORE_LIBC 1
#include <dlfcn.h>
#include <pthread.h>
#endif

namespace Tests {

namespace {

// Plain integers: nothing here may allocate or initialise itself on first use.
constinit thread_local unsigned trapsSet = 0;
constinit thread_local unsigned violations = 0;

[[maybe_unused]] void Note() noexcept {
    if (trapsSet > 0) ++violations;
}

}  // namespace

AllocationTrap::AllocationTrap() noexcept : before_(violations) { ++trapsSet; }

AllocationTrap::~AllocationTrap() noexcept { --trapsSet; }

unsigned AllocationTrap::Violations() const noexcept { return violations - before_; }

bool AllocationTrap::IsAtWork() noexcept {
#ifdef TRAP_STANDS_BEFORE_LIBC
    return true;
#else
    return false;
#endif
}

}  // namespace Tests

// Operator new and delete of the standard library end here, too.
#ifdef TRAP_STANDS_BEFORE_LIBC

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the library's own names for what stands behind malloc
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)

// Visible to the shared libraries as well, although this project hides its symbols.
[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    Tests::Note();
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    Tests::Note();
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept {
    Tests::Note();
    return __libc_realloc(block, size);
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment,
                                                   std::size_t size) noexcept {
    Tests::Note();
    return __libc_memalign(alignment, size);
}

[[gnu::visibility("default")]] void free(void* block) noexcept {
    Tests::Note();
    __libc_free(block);
}

[[gnu::visibility("default")]] int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    using Lock = int (*)(pthread_mutex_t*);
    static constinit std::atomic<Lock> next{nullptr};
    Lock lock = next.load(std::memory_order_relaxed);
    if (lock == nullptr) {
        lock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
        next.store(lock, std::memory_order_relaxed);
    }
    Tests::Note();
    return lock(mutex);
}

}  // extern "C"

#endif
