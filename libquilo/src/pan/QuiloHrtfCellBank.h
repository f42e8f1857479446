// SPDX-License-Identifier: MIT
// Measured cells of many sources, side by side.
//
// A recursion cannot be spread over samples, so it is spread over sources: kSourceLanes of them are
// a group, one pass of a kernel whatever they do. Filters sit in groups without gaps, in two lists:
//
//   what            holds                                              one per
//   sounding_       the filters that are heard or fade out             voice that is awake
//   coming_         the filters that fade in                           voice in a fade
//   queue_          voices in the order in which they asked for a fade
//
// A filter that comes in has run over the recent past unheard before its fade begins; that is the
// work which `starts` limits.
#pragma once

#include "pan/QuiloHrtfFilterBank.h"

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

namespace Quilo {

/// A value of each source of a group.
struct alignas(64) LaneRow {
    std::array<float, static_cast<std::size_t>(tav::kSourceLanes)> values{};
};

/// Left and right; null is silence.
struct EarCells {
    std::array<const tav::BiquadCells*, 2> ears{};

    friend bool operator==(const EarCells& a, const EarCells& b) noexcept {
        const auto same = [](const auto* x, const auto* y) {
            return x == y || (x != nullptr && y != nullptr && *x == *y);
        };
        return same(a.ears[0], b.ears[0]) && same(a.ears[1], b.ears[1]);
    }
};

/// The cells of one group and their states.
class LaneFilters {
public:
    /// @param numCells  of each ear, at least 1
    explicit LaneFilters(std::size_t numCells);

    /// The cells of one ear in series.
    struct Chain {
        std::size_t lane, ear;
    };

    /// Null and no cells: silence. Where there are fewer cells, the signal passes the others.
    /// States are cleared.
    void Set(Chain chain, const tav::BiquadCells* cells) noexcept TAV_NONBLOCKING;
    void Set(std::size_t lane, const EarCells& cells) noexcept TAV_NONBLOCKING {
        for (std::size_t ear = 0; ear < 2; ++ear) Set({lane, ear}, cells.ears[ear]);
    }
    /// Cells and states.
    void Copy(Chain chain, const LaneFilters& from, Chain fromChain) noexcept TAV_NONBLOCKING;
    void Copy(std::size_t lane,
              const LaneFilters& from,
              std::size_t fromLane) noexcept TAV_NONBLOCKING {
        for (std::size_t ear = 0; ear < 2; ++ear) Copy({lane, ear}, from, {fromLane, ear});
    }
    void ClearStates(std::size_t lane) noexcept TAV_NONBLOCKING;
    /// Clears the states of lanes that have run away.
    void Recover() noexcept TAV_NONBLOCKING;
    tav::CellLanes Lanes(std::size_t count) noexcept TAV_NONBLOCKING;

private:
    std::size_t NumCoefficients() const noexcept TAV_NONBLOCKING {
        return coefficients_.size() / 2;
    }
    std::size_t NumStates() const noexcept TAV_NONBLOCKING { return states_.size() / 2; }

    std::size_t numCells_;
    // as tav::CellLanes
    std::vector<LaneRow> coefficients_;
    std::array<LaneRow, 2> gains_{};
    std::vector<LaneRow> states_;
};

/// Filters of voices, in groups without gaps. A seat is a lane of a group, numbered through.
class LaneList {
public:
    static constexpr std::size_t kLanes = static_cast<std::size_t>(tav::kSourceLanes);
    struct Seat {
        LaneFilters& filters;
        std::size_t lane;
    };

    LaneList(const LaneFilters& filters, unsigned numVoices);

    /// The next seat, whose states are still.
    std::uint32_t Sit(unsigned voice) noexcept TAV_NONBLOCKING;
    /// @return who sits there now; beyond the last seat: the one that left
    unsigned Leave(std::uint32_t seat) noexcept TAV_NONBLOCKING;

    Seat At(std::size_t seat) noexcept TAV_NONBLOCKING {
        return {groups_[seat / kLanes], seat % kLanes};
    }
    /// The voice on each seat.
    std::span<const unsigned> Voices() const noexcept TAV_NONBLOCKING { return voices_; }
    void Recover() noexcept TAV_NONBLOCKING;

private:
    std::vector<LaneFilters> groups_;
    std::vector<unsigned> voices_;  // never grows beyond what was reserved
};

class HrtfCellBank final : public HrtfFilterBank {
public:
    HrtfCellBank(const HrtfResponses& responses, unsigned numVoices);

    std::size_t LongestPiece() const noexcept TAV_NONBLOCKING override { return kPiece; }
    std::size_t Past() const noexcept TAV_NONBLOCKING override { return past_; }
    void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING override;
    void Wake(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    void Sleep(unsigned voice) noexcept TAV_NONBLOCKING override;
    void Load(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    void Perform(HrtfVoices& voices,
                 std::span<float> left,
                 std::span<float> right,
                 unsigned& starts) noexcept TAV_NONBLOCKING override;

private:
    static constexpr std::size_t kLanes = LaneList::kLanes;
    static constexpr std::size_t kPiece = GroupReader::kLongest;

    using Rows = std::array<LaneRow, kPiece>;
    struct Ears {
        Rows left, right;
        tav::EarRows Pointers() noexcept TAV_NONBLOCKING {
            return {left.front().values.data(), right.front().values.data()};
        }
    };
    /// Cosine and sine of an angle.
    using Turn = std::complex<double>;
    struct Voice {
        tav::Crossfade<EarCells> fade;
        std::array<EarCells, 3> cells{};  // those that the fade may point at
        bool awake = false;
        bool queued = false;
        std::uint32_t seat = 0;        // in sounding_, while it is awake
        std::uint32_t comingSeat = 0;  // in coming_, while it fades
        Turn perSample{}, perPiece{};  // of the fade; the latter for whole pieces
        Turn next{};                   // where its next sample is
    };
    enum class Side : std::uint8_t { Going, Coming };

    /// The cells of the points, where the fade does not look at others.
    const EarCells* CellsFor(Voice& voice, EarPoints points) const noexcept TAV_NONBLOCKING;
    void Queue(unsigned voice) noexcept TAV_NONBLOCKING;
    void BeginFades(HrtfVoices& voices, unsigned& starts) noexcept TAV_NONBLOCKING;
    void RunOverPast(HrtfVoices& voices, std::span<const unsigned> batch) noexcept TAV_NONBLOCKING;
    /// @param place  in the batch that has just run over the past
    void BeginFade(unsigned voice, std::size_t place) noexcept TAV_NONBLOCKING;
    void LeaveComing(unsigned voice) noexcept TAV_NONBLOCKING;
    void AdvanceFades(std::size_t frames) noexcept TAV_NONBLOCKING;

    /// Rows of what members hear at both ears.
    void FillRows(std::span<const unsigned> members,
                  HrtfVoices& voices,
                  std::size_t frames) noexcept TAV_NONBLOCKING;
    const float* FillWeights(std::span<const unsigned> members,
                             Side side,
                             std::size_t frames) noexcept TAV_NONBLOCKING;
    void Run(LaneList& list,
             Side side,
             HrtfVoices& voices,
             std::size_t frames) noexcept TAV_NONBLOCKING;

    const HrtfResponses& responses_;
    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    std::size_t past_;
    std::vector<Voice> voices_;
    LaneFilters unheard_;  // those that run over the past
    LaneList sounding_;
    LaneList coming_;
    std::vector<unsigned> queue_;  // of voices; never grows
    // of one group, in one piece
    GroupReader reader_;
    Ears rows_{}, sum_{};
    Rows weights_{};
    tav::FadeLanes fadeLanes_{};
};

}  // namespace Quilo
