// SPDX-License-Identifier: MIT
// Measured cells of many sources, side by side.
//
// A recursion cannot be spread over samples, so it is spread over sources: kSourceLanes of them are
// a group, one pass of a kernel whatever they do. Voices that are awake fill the groups without
// gaps. Those in a fade need two filters and sit in groups of their own:
//
//   what            one per           holds
//   steady_         group             the filters that sound
//   fading_         group             the filters that go, those that come
//   seats           voice             in which list it sits, and where
//   queue_          voice that waits  in the order in which they asked
//
// A filter that comes in has run over the recent past unheard before its fade begins; that is the
// work which `starts` limits.
#pragma once

#include "pan/QuiloHrtfFilterBank.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Quilo {

/// A value of each source of a group.
struct alignas(64) LaneRow {
    std::array<float, static_cast<std::size_t>(tav::kSourceLanes)> values{};
};

/// The cells of one group and their states.
class LaneFilters {
public:
    explicit LaneFilters(std::size_t numPairs);

    /// Null and no cells: silence. States are cleared.
    void Set(std::size_t lane, const HrtfResponses::Cells* response) noexcept TAV_NONBLOCKING;
    /// Cells and states.
    void Copy(std::size_t lane,
              const LaneFilters& from,
              std::size_t fromLane) noexcept TAV_NONBLOCKING;
    void ClearStates(std::size_t lane) noexcept TAV_NONBLOCKING;
    /// Clears the states of lanes that have run away.
    void Recover() noexcept TAV_NONBLOCKING;
    tav::CellLanes Lanes(std::size_t count) noexcept TAV_NONBLOCKING;

private:
    std::size_t numPairs_;
    std::vector<LaneRow> coefficients_;
    std::vector<LaneRow> states_;
};

class HrtfCellBank final : public HrtfFilterBank {
public:
    HrtfCellBank(const HrtfResponses& responses, unsigned numVoices);

    std::size_t LongestPiece() const noexcept TAV_NONBLOCKING override { return kPiece; }
    std::size_t Past() const noexcept TAV_NONBLOCKING override { return past_; }
    void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING override;
    void Wake(unsigned voice, std::size_t point) noexcept TAV_NONBLOCKING override;
    void Sleep(unsigned voice) noexcept TAV_NONBLOCKING override;
    void Load(unsigned voice, std::size_t point) noexcept TAV_NONBLOCKING override;
    void Perform(HrtfVoices& voices,
                 std::span<float> left,
                 std::span<float> right,
                 unsigned& starts) noexcept TAV_NONBLOCKING override;

private:
    static constexpr std::size_t kLanes = static_cast<std::size_t>(tav::kSourceLanes);
    static constexpr std::size_t kPiece = 64;

    using Rows = std::array<LaneRow, kPiece>;
    struct Ears {
        Rows left, right;
        tav::EarRows Pointers() noexcept TAV_NONBLOCKING {
            return {left.front().values.data(), right.front().values.data()};
        }
    };
    enum class Place : std::uint8_t { Asleep, Steady, Fading };
    struct Voice {
        tav::Crossfade<HrtfResponses::Cells> fade;
        Place place = Place::Asleep;
        bool queued = false;
        std::uint32_t seat = 0;
    };
    struct FadingGroup {
        LaneFilters going, coming;
    };

    // Seats are numbered through all groups of a list.
    static std::size_t GroupOf(std::size_t seat) noexcept TAV_NONBLOCKING { return seat / kLanes; }
    static std::size_t LaneOf(std::size_t seat) noexcept TAV_NONBLOCKING { return seat % kLanes; }
    void Sit(unsigned voice, Place place, std::vector<unsigned>& seats) noexcept TAV_NONBLOCKING;
    void LeaveSteady(unsigned voice) noexcept TAV_NONBLOCKING;
    void LeaveFading(unsigned voice) noexcept TAV_NONBLOCKING;

    void Queue(unsigned voice) noexcept TAV_NONBLOCKING;
    void BeginFades(HrtfVoices& voices, unsigned& starts) noexcept TAV_NONBLOCKING;
    void RunOverPast(HrtfVoices& voices, std::span<const unsigned> batch) noexcept TAV_NONBLOCKING;
    void BeginFade(unsigned voice, std::size_t lane) noexcept TAV_NONBLOCKING;
    void EndFade(unsigned voice) noexcept TAV_NONBLOCKING;

    template <class Source>
    void FillRows(std::span<const unsigned> members,
                  std::size_t frames,
                  Source source) noexcept TAV_NONBLOCKING;
    void FillWeights(std::span<const unsigned> members,
                     std::size_t frames) noexcept TAV_NONBLOCKING;
    void RunSteady(HrtfVoices& voices, std::size_t frames) noexcept TAV_NONBLOCKING;
    void RunFading(HrtfVoices& voices, std::size_t frames) noexcept TAV_NONBLOCKING;
    void Recover() noexcept TAV_NONBLOCKING;

    const HrtfResponses& responses_;
    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const tav::FilterKernels& rowKernels_ = tav::BestKernels<tav::FilterKernels>();
    std::size_t past_;
    std::vector<Voice> voices_;
    std::vector<LaneFilters> steady_;
    std::vector<FadingGroup> fading_;
    std::vector<unsigned> steadySeats_;  // the voice on each seat, in both lists
    std::vector<unsigned> fadingSeats_;
    std::vector<unsigned> queue_;  // of voices; never grows
    LaneFilters unheard_;          // those that run over the past
    // of one group, in one piece
    std::array<std::array<float, kPiece>, kLanes> signals_{};
    std::array<float, kPiece> silence_{};
    Ears input_{}, work_{}, sum_{};
    Rows weightsOut_{}, weightsIn_{};
    tav::FadeLanes fadeLanes_{};
};

}  // namespace Quilo
