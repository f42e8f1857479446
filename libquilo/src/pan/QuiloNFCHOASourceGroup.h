// SPDX-License-Identifier: MIT
// Sources whose near-field filters run side by side.
//
// The moving parts of near-field compensated panning. All of them belong to one NFCHOAPanning, and
// what is not said to be written by control is touched by the audio thread alone.
//
//   object                  owner          written by    when
//   --------------------------------------------------------------------------------------------
//   NFCHOAPanningOneSource  panner         control       a source moves or changes its switch:
//     target (shared cell)                               new ratio radius / distance
//     ramp of the ratio                    audio         target taken at the start of a block
//   Controls (shared cell)  panner         control       radius, high-pass, order, reset, glide
//   ramps of the radius     panner         audio         controls taken at the start of a block
//     and of the high-pass
//   NFCHOAPiece             panner         panner        every piece of at most 64 samples, cut
//                                                        into steps on a grid of 8 samples
//   NFCHOAFilterBank        panner         bank          the frequency of an order's sections, when
//                                                        a step has another radius or rate
//   NFCHOAHighPassFilterBank panner        constructor   never after
//   NFCHOASourceGroup       panner         group         Prepare, then Run or Skip for each order,
//     states of sections                                 then Finish, in every piece
//   gain matrices           panner         control       rows of gains, through their own hand-over
//
#pragma once

#include "pan/QuiloNFCHOAFilterBank.h"
#include "pan/QuiloNFCHOAPanningOneSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Quilo {

/// Longest piece of audio that the filters take at once.
inline constexpr unsigned kNFCHOAFrames = 64;
/// Settings and the limits of the high-passes change at every eighth sample; ratios, which are only
/// mixed in at the output of a filter, move in every sample.
inline constexpr unsigned kNFCHOAGrid = 8;
inline constexpr std::size_t kNFCHOASteps = kNFCHOAFrames / kNFCHOAGrid + 1;

/// Samples of a piece that share their settings.
struct NFCHOAStep {
    int first = 0;
    int count = 0;
    bool isOnGrid = false;  // false: the piece begins between two points; the settings stay
    NFCHOASettings settings;
};

/// A piece of audio as all groups see it.
struct NFCHOAPiece {
    int frames = 0;
    std::array<NFCHOAStep, kNFCHOASteps> steps;
    std::size_t numSteps = 0;
    /// The switch of the high-pass, 0 .. 1, sample by sample.
    std::array<float, kNFCHOAFrames> highPass{};
    bool highPassMoves = false;
    /// The states of a high-pass that is no longer in use are multiplied by this in every sample.
    float keep = 1.f;
    /// The part of its way down that a limit still has before it after a step of the grid.
    float release = 1.f;
    /// A limit that comes down drops to 0 when it is here. Going on, it would take ever longer,
    /// and a high-pass at next to 0 Hz holds what it has taken away as a constant.
    float leastG = 0.f;
};

/// Up to kSourceLanes sources through all orders. A group whose sources are silent, and have died
/// away, costs nothing; one whose sources are all as far away as the array passes them on bit for
/// bit.
/// Pattern, per piece: Prepare (Run | Skip)*, one of them for each order from 1 on, Finish.
/// Thread: the constructor control, the rest audio.
class NFCHOASourceGroup {
public:
    NFCHOASourceGroup(std::span<NFCHOAPanningOneSource> sources,
                      NFCHOAFilterBank& bank,
                      const NFCHOAHighPassFilterBank& highPasses,
                      unsigned order);

    /// Silence in all filters.
    void Clear() noexcept TAV_NONBLOCKING;
    /// A glide that is running ends at its target.
    void SetSampleRate(float hz) noexcept TAV_NONBLOCKING;

    /// @param inputs  one per source, null for one that carries nothing
    /// @return false: nothing to be heard; neither Run nor Finish is to follow
    bool Prepare(const NFCHOAPiece& piece,
                 std::span<const float* const> inputs) noexcept TAV_NONBLOCKING;
    /// @param signals  kSourceLanes, of the piece's frames: the sources as this order has them
    void Run(unsigned order,
             const NFCHOAPiece& piece,
             float* const* signals) noexcept TAV_NONBLOCKING;
    /// In place of Run where nobody hears an order.
    void Skip(unsigned order) noexcept TAV_NONBLOCKING;
    void Finish() noexcept TAV_NONBLOCKING;

private:
    static constexpr std::size_t kLanes = static_cast<std::size_t>(tav::kSourceLanes);
    using Rows = std::array<float, kNFCHOAFrames * kLanes>;

    enum class Activity : std::uint8_t {
        Asleep,   // all states of all filters are 0, no input carries a signal
        Fed,      // an input carries a signal
        Ringing,  // none does, but the filters have not died away
    };
    enum class Motion : std::uint8_t {
        Clear,    // the states are 0; Run begins at the target, without a glide
        Resting,  // the limits are at their targets
        Gliding,  // a limit is still on its way
    };

    /// The filters of one order. The high-pass of a source is given by g = pi * its limit in Hz /
    /// rate; 0 where the source has none.
    struct OrderState {
        NFCHOARow highPassG{};       // now
        NFCHOARow highPassStep{};    // added in every sample, up to the next point of the grid
        NFCHOARow highPassNext{};    // at the next point of the grid
        NFCHOARow highPassSlow{};    // the first of the two poles that a limit comes down through
        NFCHOARow highPassTarget{};  // for the settings and ratios in force
        Motion motion = Motion::Clear;
        bool isTargetUsed = false;  // false: the target is 0 for all
        bool hasHighPass = false;   // some source has a high-pass
        bool leaks = false;         // some source has none any more, but its states are not 0 yet
    };
    /// What the targets of the high-passes are computed from.
    struct HighPassInput {
        NFCHOASettings settings;
        NFCHOARow ratios{};
        NFCHOARow logs{};  // of the ratios above 1; 0 for the others
        float largestLog = 0.f;
    };
    struct Step {
        HighPassInput input;     // in force
        bool refreshes = false;  // the input changed here
    };

    std::span<float> States(unsigned order) noexcept TAV_NONBLOCKING;
    void FillRatios(const NFCHOAPiece& piece, bool wakes) noexcept TAV_NONBLOCKING;
    void FindRefreshes(const NFCHOAPiece& piece, bool wakes) noexcept TAV_NONBLOCKING;
    void RunStep(unsigned order, const NFCHOAStep& step, float keep) noexcept TAV_NONBLOCKING;
    void TargetFor(unsigned order,
                   const HighPassInput& input,
                   NFCHOARow& target) const noexcept TAV_NONBLOCKING;
    bool AnyNewTarget(unsigned order, const NFCHOAPiece& piece) const noexcept TAV_NONBLOCKING;
    void ComputeTarget(unsigned order, const HighPassInput& input) noexcept TAV_NONBLOCKING;
    void JumpToTarget(unsigned order) noexcept TAV_NONBLOCKING;
    void GlideToTarget(unsigned order, const NFCHOAPiece& piece) noexcept TAV_NONBLOCKING;
    void UpdateUse(unsigned order) noexcept TAV_NONBLOCKING;
    void CapRatios(unsigned order, const NFCHOAPiece& piece) noexcept TAV_NONBLOCKING;
    void CheckStates(unsigned order, int frames) noexcept TAV_NONBLOCKING;
    void ClearOrder(unsigned order) noexcept TAV_NONBLOCKING;
    void ClearLane(unsigned order, std::size_t lane, std::size_t numRows) noexcept TAV_NONBLOCKING;

    const tav::FilterKernels& kernels_ = tav::BestKernels<tav::FilterKernels>();
    std::span<NFCHOAPanningOneSource> sources_;
    NFCHOAFilterBank& bank_;
    const NFCHOAHighPassFilterBank& highPasses_;
    std::vector<OrderState> orders_;  // from 1 on
    std::vector<float> states_;       // kNearFieldStates rows per section

    Activity activity_ = Activity::Asleep;
    HighPassInput input_;  // the one in force at the end of the piece
    NFCHOARow reached_{};  // ratios at the end of the piece

    // of the piece
    bool isPlain_ = false;     // all ratios are 1 and no high-pass has states: output is input
    bool ratiosMove_ = false;  // in every sample
    bool refreshes_ = false;   // in any step
    bool scaleMoves_ = false;  // from step to step
    float largestLog_ = 0.f;   // of the inputs of all steps that refresh
    NFCHOARow loudest_{};      // largest sum of states of any order
    std::array<NFCHOARow, kNFCHOASteps> askedRatios_{};  // at the start of each step, uncapped
    std::array<Step, kNFCHOASteps> steps_;
    // A row of kLanes values per sample.
    Rows inputs_{};
    Rows outputs_{};
    Rows ratios_{};                       // only the first row when they do not move
    Rows capped_{};                       // the ratios as far as the order that runs may use them;
                                          // before, scratch of FillRatios
    const float* ratiosInUse_ = nullptr;  // one of these two
    std::ptrdiff_t ratioStride_ = 0;      // 0: one row for all samples
};

}  // namespace Quilo
