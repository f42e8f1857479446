// SPDX-License-Identifier: MIT
// A cascade of measured cells that may be exchanged while it sounds.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"
#include "processors/VelkDspCrossfade.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// The states of cells in series. The cells themselves are given with every run: they stay where
/// they were loaded.  Thread: the constructor control, the rest audio.
class Cascade {
public:
    explicit Cascade(std::size_t maxCells) : states_(maxCells) {}

    void Clear() noexcept TAV_NONBLOCKING;
    /// @param cells  at most maxCells      @param output, input  may be the same samples
    void Perform(std::span<const BiquadCell> cells,
                 std::span<float> output,
                 const float* input) noexcept TAV_NONBLOCKING;
    /// False: the states have run away.
    bool IsSane() const noexcept TAV_NONBLOCKING;
    std::size_t MaxCells() const noexcept TAV_NONBLOCKING { return states_.size(); }

private:
    struct State {
        float s1 = 0.f;
        float s2 = 0.f;
    };
    std::vector<State> states_;
};

/// Silent until cells are loaded. Cells that come in have run over the last input samples unheard
/// before they fade in, for cells that start from silence, or from the states of others, click.
/// Cells have to be stable.  Thread: the constructor control, the rest audio.
class CrossfadedCascade {
public:
    /// @param sampleRateHz  the rate of the cells      Throws: std::bad_alloc.
    CrossfadedCascade(std::size_t maxCells, float sampleRateHz);

    void SetFade(float ms, FadeShape shape) noexcept TAV_NONBLOCKING { fade_.Set(ms, shape); }
    /// Null and no cells: silence. More cells than announced are ignored.
    void Load(const BiquadCells* cells) noexcept TAV_NONBLOCKING;
    /// The input so far is forgotten; fades go on.
    void Clear() noexcept TAV_NONBLOCKING;

    /// @param output, input  `frames` samples each, may be the same buffer
    /// @param starts  how many fades may still begin, counted down: preparing one costs time, and
    /// many voices shall not do it in the same block. A fade that may not begin waits for the next
    /// call.
    void Perform(float* output,
                 const float* input,
                 unsigned frames,
                 unsigned& starts) noexcept TAV_NONBLOCKING;

    /// A fair share of starts in a block of so many voices.
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
    std::size_t position_ = 0;  // of the oldest one
};

}  // namespace tav
