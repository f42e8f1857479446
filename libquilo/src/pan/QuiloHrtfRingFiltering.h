// SPDX-License-Identifier: MIT
// Sources through the directions of a ring to two ears: gains and delays move, filters never do.
//
//   what        one per            written by, when
//   Target      source             control; audio takes it at the start of a block
//   voices_     source             audio: its window and the delays to both ears
//   matrices_   ear                control sets rows of gains, audio glides to them
//   filters_    direction and ear  nobody: made with the object
#pragma once

#include "laws/QuiloInterauralTimeDifference.h"
#include "pan/QuiloHrtfRendering.h"
#include "pan/QuiloHrtfRingFilters.h"
#include "pan/QuiloHrtfVoices.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspSignalMatrix.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Quilo {

class HrtfRingFiltering final : public HrtfRendering {
public:
    /// @param ring  of the set      @param responses  of the ring      Throws: std::bad_alloc.
    HrtfRingFiltering(std::shared_ptr<const Hrtf> set,
                      HrtfRing ring,
                      std::shared_ptr<const HrtfResponses> responses,
                      unsigned numSources,
                      unsigned blockSize);

    const HrtfRing& Ring() const noexcept { return ring_; }

    // Thread: control.
    void SetSettings(const Settings& settings) noexcept override { settings_.Store(settings); }
    void SetInterpolationTime(float ms) noexcept;
    /// @param shares  of each ear, one per direction of the ring; they glide over the interpolation
    /// time
    /// @param gain  glides over 5 ms      @param glideMs  of the delays; 0: shares and delays jump
    void SetSource(unsigned index,
                   const std::array<std::vector<float>, 2>& shares,
                   const EarDelays& delays,
                   float gain,
                   float glideMs) noexcept;
    void Reset() noexcept override { resets_.fetch_add(1, std::memory_order_relaxed); }

    // Thread: audio.
    void Perform(float* left,
                 float* right,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

private:
    static constexpr std::size_t kNumEars = 2;
    static constexpr unsigned kPiece = HrtfRingFilters::kLongest;

    struct Target {
        EarDelays delays;
        float gain = 1.f;
        float glideMs = 0.f;
    };
    struct Source {
        tav::SharedCell<Target> shared;
        // audio only
        Target taken;
        SourceState state = SourceState::Asleep;
    };

    void TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING;
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    void SetDelays(unsigned index, float glideMs) noexcept TAV_NONBLOCKING;
    void Delay(const float* const* inputs, unsigned done, unsigned frames) noexcept TAV_NONBLOCKING;

    const HrtfRing ring_;
    // shared: control writes, audio reads
    std::vector<Source> sources_;
    tav::SharedCell<Settings> settings_;
    std::atomic<std::uint32_t> resets_{0};
    std::array<tav::SignalMatrix, kNumEars> matrices_;
    // audio only
    std::uint32_t resetsDone_ = 0;
    HrtfVoices voices_;
    HrtfRingFilters filters_;
    std::array<float, kPiece> silence_{};
    std::array<std::vector<std::array<float, kPiece>>, kNumEars> delayed_;  // room for each source
    std::array<std::vector<const float*>, kNumEars> sent_;  // the delayed sources, or silence
    HrtfRingFilters::Buses buses_{};
};

}  // namespace Quilo
