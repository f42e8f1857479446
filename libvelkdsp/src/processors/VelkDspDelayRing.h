// SPDX-License-Identifier: MIT
// The memory of a delay line, which can be read at any delay.
#pragma once

#include "math/VelkDspVector.h"
#include "processors/VelkDspDelayKernels.h"
#include "text/VelkDspNonblocking.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tav {

/// A ring of samples with guard samples at both ends, so that kernels need no test for the wrap.
/// Pattern: (Write Read?)*, blocks of at most kLargestBlock; reads belong to the block written
/// last. Thread: the constructor control, the rest audio.
class DelayRing {
public:
    static constexpr std::size_t kLargestBlock = 512;
    /// Samples of a ring beyond the longest delay, needed for blocks and glides.
    static constexpr std::size_t kHeadroom = 8193;

    /// Length in samples of a ring for delays up to `maximumMs`; a power of two.
    static std::size_t LengthFor(float maximumMs, float sampleRateHz) noexcept;

    /// Silence.  @param length  a power of two above kHeadroom.  Throws: std::bad_alloc.
    explicit DelayRing(std::size_t length);

    /// Samples
    float LongestDelay() const noexcept TAV_NONBLOCKING {
        return static_cast<float>(mask_ + 1 - kHeadroom);
    }

    /// Copies the samples of a ring that is not longer than this one.
    void CopyFrom(const DelayRing& older) noexcept TAV_NONBLOCKING;
    /// Clears the samples and the state of the all-pass kernel.
    void Clear() noexcept TAV_NONBLOCKING;

    void Write(std::span<const float> block) noexcept TAV_NONBLOCKING;
    /// @param delay  samples, 0 .. LongestDelay(), the same for the whole block
    void Read(DelayKind kind, float delay, std::span<float> output) noexcept TAV_NONBLOCKING;
    /// @param delays  samples, 0 .. LongestDelay(), one per sample of the block
    void Read(DelayKind kind,
              std::span<const float> delays,
              std::span<float> output) noexcept TAV_NONBLOCKING;

private:
    static constexpr std::size_t kGuard = 4;

    float* Samples() noexcept TAV_NONBLOCKING { return storage_.Data() + kGuard; }
    const float* Samples() const noexcept TAV_NONBLOCKING { return storage_.Data() + kGuard; }
    void Append(std::span<const float> samples) noexcept TAV_NONBLOCKING;
    void RefreshGuards() noexcept TAV_NONBLOCKING;
    void RecoverAllpass(std::span<float> output) noexcept TAV_NONBLOCKING;
    template <class Action>
    void WithKernel(DelayKind kind, Action action) noexcept TAV_NONBLOCKING;

    Vector<float> storage_;  // guard, ring, guard
    std::size_t mask_;
    std::size_t blockPosition_ = 0;  // of the first sample of the block written last, masked
    std::size_t writePosition_ = 0;  // of the next sample, masked
    float lastAllpass_ = 0.f;
};

}  // namespace tav
