// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfRingFilters.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace Quilo {

namespace {

constexpr float kCellsTailMs = 200.f;  // by then, cells that may be loaded have fallen silent
constexpr float kLargestRingSum = 1e12f;

std::size_t TailOf(const HrtfResponses& responses) {
    if (!responses.AreCells()) return responses.MaxTaps();
    return static_cast<std::size_t>(kCellsTailMs * 0.001f * responses.Format().rateHz);
}

}  // namespace

HrtfRingFilters::HrtfRingFilters(std::shared_ptr<const HrtfResponses> responses)
    : responses_(std::move(responses)),
      tail_(TailOf(*responses_)) {
    quiet_.fill(tail_ + 1);
    if (responses_->AreCells()) {
        cells_.assign(kNumGroups, LaneFilters(std::max<std::size_t>(responses_->MaxCells(), 1)));
        for (std::size_t bus = 0; bus < kNumBuses; ++bus) {
            const auto& ears = responses_->CellsOf(bus)->ears;
            cells_[bus / kLanes].Set(bus % kLanes, {.ears = {&ears[0], &ears[1]}});
        }
        return;
    }
    const float rate = responses_->Format().rateHz;
    for (std::size_t bus = 0; bus < kNumBuses; ++bus) {
        for (const tav::FirResponse& ear : responses_->TapsOf(bus)->ears) {
            taps_.emplace_back(std::max<std::size_t>(responses_->MaxTaps(), 1), rate).Reset(&ear);
        }
    }
}

void HrtfRingFilters::Clear() noexcept TAV_NONBLOCKING {
    for (std::size_t bus = 0; bus < kNumBuses && !cells_.empty(); ++bus) {
        cells_[bus / kLanes].ClearStates(bus % kLanes);
    }
    for (tav::CrossfadedFir& fir : taps_) fir.Clear();
    quiet_.fill(tail_ + 1);
}

void HrtfRingFilters::Perform(const Buses& buses,
                              std::span<float> left,
                              std::span<float> right) noexcept TAV_NONBLOCKING {
    Listen(buses, left.size());
    if (!cells_.empty()) return RunCells(buses, left, right);
    RunTaps(buses, 0, left);
    RunTaps(buses, 1, right);
}

void HrtfRingFilters::Listen(const Buses& buses, std::size_t frames) noexcept TAV_NONBLOCKING {
    for (std::size_t bus = 0; bus < kNumBuses; ++bus) {
        float sum = 0.f;
        for (const auto& ear : buses) {
            for (std::size_t k = 0; k < frames; ++k) sum += std::abs(ear[bus][k]);
        }
        runs_[bus] = sum != 0.f || quiet_[bus] <= tail_;
        quiet_[bus] = sum != 0.f ? 0 : quiet_[bus] + frames;
    }
}

void HrtfRingFilters::RunCells(const Buses& buses,
                               std::span<float> left,
                               std::span<float> right) noexcept TAV_NONBLOCKING {
    const std::size_t frames = left.size();
    const auto n = static_cast<int>(frames);
    const auto pointers = [](std::array<Rows, 2>& rows) {
        return tav::EarRows{rows[0].front().values.data(), rows[1].front().values.data()};
    };
    for (Rows& ear : sums_) std::fill_n(ear.begin(), frames, LaneRow{});
    for (std::size_t first = 0; first < kNumBuses; first += kLanes) {
        const std::size_t count = std::min(kLanes, kNumBuses - first);
        const auto runs = std::span(runs_).subspan(first, count);
        LaneFilters& filters = cells_[first / kLanes];
        if (std::ranges::none_of(runs, std::identity())) {
            for (std::size_t k = 0; k < count; ++k) filters.ClearStates(k);
            continue;
        }
        for (std::size_t ear = 0; ear < 2; ++ear) {
            std::array<const float*, kLanes> signals{};
            signals.fill(silence_.data());
            for (std::size_t k = 0; k < count; ++k) signals[k] = buses[ear][first + k].data();
            rowKernels_.toRows(signals.data(), rows_[ear].front().values.data(), n);
        }
        kernels_.cascade(filters.Lanes(count), pointers(rows_), pointers(sums_), nullptr, n);
    }
    std::array<std::array<float, kLongest>, 2> heard{};
    float loudness = 0.f;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        kernels_.sumLanes(sums_[ear].front().values.data(), heard[ear].data(), n);
        for (std::size_t k = 0; k < frames; ++k) loudness += std::abs(heard[ear][k]);
    }
    if (!(loudness <= kLargestRingSum)) {
        for (LaneFilters& filters : cells_) filters.Recover();
        return;
    }
    for (std::size_t k = 0; k < frames; ++k) left[k] += heard[0][k];
    for (std::size_t k = 0; k < frames; ++k) right[k] += heard[1][k];
}

void HrtfRingFilters::RunTaps(const Buses& buses,
                              std::size_t ear,
                              std::span<float> out) noexcept TAV_NONBLOCKING {
    for (std::size_t bus = 0; bus < kNumBuses; ++bus) {
        if (!runs_[bus]) continue;
        taps_[2 * bus + ear].Perform(filtered_.data(), buses[ear][bus].data(),
                                     static_cast<unsigned>(out.size()));
        for (std::size_t k = 0; k < out.size(); ++k) out[k] += filtered_[k];
    }
}

}  // namespace Quilo
