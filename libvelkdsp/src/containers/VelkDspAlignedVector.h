// SPDX-License-Identifier: MIT
// A vector that begins at a cache line, so that no vector register straddles two lines.
#pragma once

#include <cstddef>
#include <new>
#include <vector>

namespace tav {

inline constexpr std::size_t kCacheLineBytes = 64;

template <class T>
struct CacheLineAllocator {
    using value_type = T;

    CacheLineAllocator() = default;
    template <class U>
    explicit(false) CacheLineAllocator(const CacheLineAllocator<U>&) noexcept {}

    T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / sizeof(T)) throw std::bad_array_new_length();
        return static_cast<T*>(
            ::operator new (count * sizeof(T), std::align_val_t{kCacheLineBytes}));
    }
    void deallocate(T* memory, std::size_t) noexcept {
        ::operator delete (memory, std::align_val_t{kCacheLineBytes});
    }

    friend bool operator==(const CacheLineAllocator&, const CacheLineAllocator&) { return true; }
};

template <class T>
using AlignedVector = std::vector<T, CacheLineAllocator<T>>;

/// Distance in floats between the starts of rows of `count` floats that all begin at cache lines.
constexpr std::size_t AlignedPitch(std::size_t count) {
    constexpr std::size_t kFloats = kCacheLineBytes / sizeof(float);
    return (count + kFloats - 1) / kFloats * kFloats;
}

}  // namespace tav
