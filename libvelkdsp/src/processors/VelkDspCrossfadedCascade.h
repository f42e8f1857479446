// SPDX-License-Identifier: MIT
// A cascade of measured cells that can be replaced while it sounds.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"
#include "processors/VelkDspCrossfade.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// The states of cells in series. The coefficients are passed with every call.
/// Thread: the constructor control, the rest audio.
class Cascade {
public:
    explicit Cascade(std::size_t maxCells) : states_(maxCells) {}

    void Clear() noexcept TAV_NONBLOCKING;
    /// @param cells  at most maxCells      @param output, input  may be the same samples
    void Perform(std::span<const BiquadCell> cells,
                 std::span<float> output,
                 const float* input) noexcept TAV_NONBLOCKING;
    /// False if the states have diverged.
    bool IsSane() const noexcept TAV_NONBLOCKING;
    std::size_t MaxCells() const noexcept TAV_NONBLOCKING { return states_.size(); }

private:
    struct State {
        float s1 = 0.f;
        float s2 = 0.f;
    };
    std::vector<State> states_;
};

/// Silent until cells are loaded. Before new cells fade in they run, unheard, over the last input
/// samples, since cells with states of 0, or of others, click. Cells must be stable.
/// Thread: the constructor control, the rest audio.
class CrossfadedCascade {
public:
    /// @param sampleRateHz  the rate of the cells      Throws: std::bad_alloc.
    CrossfadedCascade(std::size_t maxCells, float sampleRateHz);

    void SetFade(float ms, FadeShape shape) noexcept TAV_NONBLOCKING { fade_.Set(ms, shape); }
    /// Null or no cells: silence. A response with more than maxCells is ignored.
    void Load(const BiquadCells* cells) noexcept TAV_NONBLOCKING;
    /// Clears the input history; fades continue.
    void Clear() noexcept TAV_NONBLOCKING;

    /// @param output, input  `frames` samples each, may be the same buffer
    /// @param starts  how many fades may still begin in this block, counted down; preparing one
    /// takes time, which must not add up over many voices. With 0, a fade is postponed to the next
    /// call.
    void Perform(float* output,
                 const float* input,
                 unsigned frames,
                 unsigned& starts) noexcept TAV_NONBLOCKING;

    /// A suitable number of starts per block for this number of voices.
    static unsigned StartsFor(unsigned numVoices) noexcept TAV_NONBLOCKING {
        return numVoices / 8 > 8 ? numVoices / 8 : 8;
    }

private:
    static constexpr std::size_t kLargestBlock = 512;

    void PerformPiece(std::span<float> output,
                      const float* input,
                      unsigned& starts) noexcept TAV_NONBLOCKING;
    void Begin() noexcept TAV_NONBLOCKING;
    void Remember(std::span<const float> input) noexcept TAV_NONBLOCKING;
    static void Play(Cascade& cascade,
                     const BiquadCells* cells,
                     std::span<float> output,
                     const float* input) noexcept TAV_NONBLOCKING;

    Cascade sounding_;
    Cascade incoming_;
    Crossfade<BiquadCells> fade_;
    std::vector<float> past_;   // a ring of input samples
    std::size_t position_ = 0;  // of the oldest sample
};

}  // namespace tav
