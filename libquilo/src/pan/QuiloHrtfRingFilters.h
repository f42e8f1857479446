// SPDX-License-Identifier: MIT
// The filters of a ring of directions, which never change: a signal a direction and ear.
#pragma once

#include "hrtf/QuiloHrtfResponses.h"
#include "hrtf/QuiloHrtfRing.h"
#include "pan/QuiloHrtfCellBank.h"
#include "processors/VelkDspCrossfadedFir.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace Quilo {

/// Thread: audio; the constructor control.
class HrtfRingFilters {
public:
    static constexpr std::size_t kNumBuses = HrtfRing::kNumPoints;
    static constexpr std::size_t kLongest = GroupReader::kLongest;  // frames
    /// A bus to each ear for each direction.
    using Buses = std::array<std::array<std::array<float, kLongest>, kNumBuses>, 2>;

    /// @param responses  of a ring      Throws: std::bad_alloc.
    explicit HrtfRingFilters(std::shared_ptr<const HrtfResponses> responses);

    void Clear() noexcept TAV_NONBLOCKING;
    /// Adds the filtered buses to the ears. Those that have been silent for long cost nothing.
    /// @param left, right  at most kLongest frames
    void Perform(const Buses& buses,
                 std::span<float> left,
                 std::span<float> right) noexcept TAV_NONBLOCKING;

private:
    static constexpr std::size_t kLanes = LaneList::kLanes;
    static constexpr std::size_t kNumGroups = (kNumBuses + kLanes - 1) / kLanes;
    using Rows = std::array<LaneRow, kLongest>;

    void Listen(const Buses& buses, std::size_t frames) noexcept TAV_NONBLOCKING;
    void RunCells(const Buses& buses,
                  std::span<float> left,
                  std::span<float> right) noexcept TAV_NONBLOCKING;
    void RunTaps(const Buses& buses,
                 std::size_t ear,
                 std::span<float> out) noexcept TAV_NONBLOCKING;

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const tav::FilterKernels& rowKernels_ = tav::BestKernels<tav::FilterKernels>();
    const std::shared_ptr<const HrtfResponses> responses_;
    const std::size_t tail_;  // frames that a filter may sound after its input
    std::vector<LaneFilters> cells_;
    std::vector<tav::CrossfadedFir> taps_;        // left and right of each bus
    std::array<std::size_t, kNumBuses> quiet_{};  // frames before the piece without a signal
    std::array<bool, kNumBuses> runs_{};          // in the piece
    std::array<float, kLongest> silence_{};
    std::array<float, kLongest> filtered_{};
    std::array<Rows, 2> rows_{}, sums_{};
};

}  // namespace Quilo
