// SPDX-License-Identifier: MIT
#include "HostAllocations.h"

#include "HostPlatform.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace Quilo::Host {

namespace {

std::atomic<std::size_t> liveAllocations = 0;
constinit thread_local unsigned callsUntilFailure = 0;         // 0: none is planned
[[maybe_unused]] constinit thread_local bool looking = false;  // the check itself may allocate

}  // namespace

bool FailAllocation(unsigned n) {
    callsUntilFailure = n;
    return WatchesAllocations();
}

bool AllocationFailureWaits() { return callsUntilFailure > 0; }

bool RefuseAllocation() {
    if (callsUntilFailure == 0) return false;
    --callsUntilFailure;
    return callsUntilFailure == 0;
}

std::size_t CountAllocations() { return liveAllocations; }

#if !defined(_WIN32)

namespace {

bool ShallFail() {
    if (callsUntilFailure == 0 || looking) return false;
    looking = true;
    const bool ofModule = CalledByModule();
    looking = false;
    return ofModule && RefuseAllocation();
}

void* TryToAllocate(std::size_t size, std::size_t alignment) noexcept {
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    void* const memory = ShallFail()      ? nullptr
                         : alignment <= 1 ? std::malloc(size > 0 ? size : 1)
                                          : std::aligned_alloc(alignment, whole);
    if (memory) liveAllocations.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* Allocate(std::size_t size, std::size_t alignment) {
    void* const memory = TryToAllocate(size, alignment);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void Release(void* memory) {
    if (memory) liveAllocations.fetch_sub(1, std::memory_order_relaxed);
    std::free(memory);
}

}  // namespace

#endif

}  // namespace Quilo::Host

// The dynamic linker makes these replace the standard library's operators in the module, too. The
// standard library's own array and non-throwing forms would call these, but a sanitizer's do not,
// so each form is replaced.
#if !defined(_WIN32)

void* operator new(std::size_t size) { return Quilo::Host::Allocate(size, 1); }

void* operator new(std::size_t size, std::align_val_t alignment) {
    return Quilo::Host::Allocate(size, static_cast<std::size_t>(alignment));
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Quilo::Host::TryToAllocate(size, 1);
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return Quilo::Host::TryToAllocate(size, static_cast<std::size_t>(alignment));
}

void* operator new[](std::size_t size) { return operator new(size); }

void* operator new[](std::size_t size, std::align_val_t alignment) {
    return operator new(size, alignment);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}

void* operator new[](std::size_t size,
                     std::align_val_t alignment,
                     const std::nothrow_t& tag) noexcept {
    return operator new(size, alignment, tag);
}

void operator delete(void* memory) noexcept { Quilo::Host::Release(memory); }

void operator delete(void* memory, std::size_t) noexcept { Quilo::Host::Release(memory); }

void operator delete(void* memory, std::align_val_t) noexcept { Quilo::Host::Release(memory); }

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    Quilo::Host::Release(memory);
}

void operator delete[](void* memory) noexcept { Quilo::Host::Release(memory); }

void operator delete[](void* memory, std::size_t) noexcept { Quilo::Host::Release(memory); }

void operator delete[](void* memory, std::align_val_t) noexcept { Quilo::Host::Release(memory); }

void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    Quilo::Host::Release(memory);
}

#endif
