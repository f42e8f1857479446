// SPDX-License-Identifier: MIT
// Sources whose near-field filters run side by side.
#pragma once

#include "pan/QuiloNFCHOAFilterBank.h"
#include "pan/QuiloNFCHOAPanningOneSource.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace Quilo {

/// Longest piece of audio that the filters take at once.
inline constexpr unsigned kNFCHOAFrames = 64;
/// What moves with the distance, but for the output mix, does so this often.
inline constexpr unsigned kNFCHOAGrid = 8;
inline constexpr std::size_t kNFCHOASteps = kNFCHOAFrames / kNFCHOAGrid + 1;

/// Samples of a piece that share their settings.
struct NFCHOAStep {
    int first = 0;
    int count = 0;
    bool isOnGrid = false;  // false: the settings of the step before go on
    NFCHOASettings settings;
};

/// A piece of audio as all groups see it.
struct NFCHOAPiece {
    int frames = 0;
    std::array<NFCHOAStep, kNFCHOASteps> steps;
    std::size_t numSteps = 0;
    /// Of the settings, sample by sample.
    std::array<float, kNFCHOAFrames> highPass{};
    bool highPassMoves = false;
    /// What is left of a high-pass that went out of use, after a sample.
    float keep = 1.f;
    /// What is left of the way down of a limit, after a step of the grid.
    float release = 1.f;
    /// A limit that comes down drops from here on; below, a high-pass would hold what it has
    /// taken away as an offset.
    float leastG = 0.f;
};

/// Up to kSourceLanes sources through all orders. A group whose sources are silent, and have died
/// away, costs nothing; one whose sources all are as far as the array passes them bit for bit.
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
    /// A glide under way ends at its target.
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

    struct OrderState {
        NFCHOARow highPassG{};     // reached
        NFCHOARow highPassStep{};  // per sample, up to the next point of the grid
        NFCHOARow highPassNext{};  // there
        NFCHOARow highPassSlow{};  // halfway from the next to the target
        NFCHOARow highPassTarget{};
        bool glides = false;       // the target is not reached
        bool isStale = true;       // the target has to be computed
        bool hasHighPass = false;  // of any source
        bool leaks = false;        // a high-pass out of use still has states
        bool isClear = true;       // all states are 0
    };
    /// What the high-passes depend on.
    struct Place {
        NFCHOASettings settings;
        NFCHOARow ratios{};
        NFCHOARow logs{};
    };
    struct Step {
        Place place;             // in force
        bool refreshes = false;  // is a new one
    };

    std::span<float> States(unsigned order) noexcept TAV_NONBLOCKING;
    void FillRatios(const NFCHOAPiece& piece, bool wakes) noexcept TAV_NONBLOCKING;
    void FindRefreshes(const NFCHOAPiece& piece, bool wakes) noexcept TAV_NONBLOCKING;
    void RunStep(unsigned order, const NFCHOAStep& step, float keep) noexcept TAV_NONBLOCKING;
    void AimHighPass(unsigned order, const Place& place) noexcept TAV_NONBLOCKING;
    void JumpHighPass(unsigned order) noexcept TAV_NONBLOCKING;
    void GlideHighPass(unsigned order, const NFCHOAPiece& piece) noexcept TAV_NONBLOCKING;
    void NoteHighPass(unsigned order) noexcept TAV_NONBLOCKING;
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

    bool isAwake_ = false;
    bool isPlain_ = false;     // all ratios are 1 and no high-pass has states
    bool ratiosMove_ = false;  // sample by sample
    bool refreshes_ = false;   // in any step
    NFCHOARow loudest_{};      // largest sum of states of any order, in this piece
    NFCHOARow reached_{};      // ratios at the end of the piece
    std::array<NFCHOARow, kNFCHOASteps> leads_{};  // ratios of each step as the sources have them
    Place last_;                                   // the one in force at the end of the piece
    std::array<Step, kNFCHOASteps> steps_;
    Rows input_{};
    Rows output_{};
    Rows ratios_{};  // one row alone when they do not move
    Rows capped_{};  // the same as an order may use them
    const float* ratiosInUse_ = nullptr;
    std::ptrdiff_t ratioStride_ = 0;
};

}  // namespace Quilo
