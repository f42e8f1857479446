// SPDX-License-Identifier: MIT
// The mixing half of the gain matrices: holds the gains of one ramp segment, sorted for the
// kernels.
//
// Gains rest or move in a line while a segment lasts, so what a block has to compute is decided
// once per segment: pairs that are silent are dropped, an input that reaches most outputs of a tile
// goes to the tile's panels, the other pairs go to a list per output. A block then costs what its
// audible pairs cost.
#pragma once

#include "kernels/VelkDspKernels.h"
#include "text/VelkDspNonblocking.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace tav {

/// Which part of a ramp segment a piece of audio lies in: its gains are `start + w * step`, where w
/// runs in a line from `position` at the first sample to `position + frames` at the last one. Hence
/// the gain at a place where two pieces meet sounds twice; one sample alone takes the later one.
struct RampPiece {
    std::int32_t position = 0;  // samples of the segment that were played before
    int frames = 0;
};

/// inputs x outputs gains.  Thread: audio, but for the constructor; no allocation after it.
class GainMixer {
public:
    static constexpr float kAudibleGain = 1e-4f;  // up to here, a resting gain is silence
    static constexpr float kMovingGain = 1e-6f;   // up to here, a difference is no movement

    GainMixer(unsigned numInputs, unsigned numOutputs, const Kernels& kernels);

    /// The input glides from `from` to `to`, by (to - from) * inverseLength each sample.
    /// Pairs with unconnected outputs are dropped: connect them first.
    void SetRow(unsigned input,
                std::span<const float> from,
                std::span<const float> to,
                float inverseLength) noexcept TAV_NONBLOCKING;
    /// The input rests at `gains`, where their magnitude is above `silence`.
    void SetRow(unsigned input,
                std::span<const float> gains,
                float silence = kAudibleGain) noexcept TAV_NONBLOCKING;

    /// Inactive inputs are not read. All are active at first.
    void SetActive(unsigned input, bool active) noexcept TAV_NONBLOCKING;
    /// Unconnected outputs are not touched. All are connected at first.
    /// @return true: this changed, and all rows have to be set again
    bool SetConnected(unsigned output, bool connected) noexcept TAV_NONBLOCKING;

    /// Adds the inputs into the outputs, both from sample `offset` on.
    void Mix(float* const* outputs,
             const float* const* inputs,
             int offset,
             const RampPiece& piece) noexcept TAV_NONBLOCKING;

private:
    enum class Route : std::uint8_t { Silent, Lists, ConstantPanel, RampedPanel };
    struct Counts {
        int constant = 0;
        int ramped = 0;
    };
    static constexpr int kMostFrames = 512;  // mixed at once

    void Repack(unsigned input) noexcept TAV_NONBLOCKING;
    void RouteTile(unsigned tile, unsigned input) noexcept TAV_NONBLOCKING;
    void Rebuild() noexcept TAV_NONBLOCKING;
    void RebuildTile(unsigned tile) noexcept TAV_NONBLOCKING;
    void AddPairs(unsigned tile, unsigned input) noexcept TAV_NONBLOCKING;
    void CollectPanelInputs() noexcept TAV_NONBLOCKING;
    void FillWeights(const RampPiece& piece, int first, int count) noexcept TAV_NONBLOCKING;
    void MixLists(float* const* outputs,
                  const float* const* inputs,
                  int offset,
                  int frames) noexcept TAV_NONBLOCKING;
    void MixPanels(float* const* outputs,
                   const float* const* inputs,
                   int offset,
                   int frames) noexcept TAV_NONBLOCKING;
    void FillStrip(const float* const* inputs, int offset, int frames) noexcept TAV_NONBLOCKING;
    void MixStrip(float* const* outputs,
                  int offset,
                  const float* weights,
                  int frames) noexcept TAV_NONBLOCKING;
    std::size_t Slot(unsigned tile, unsigned input) const noexcept TAV_NONBLOCKING;

    const Kernels& kernels_;
    const unsigned numInputs_;
    const unsigned numOutputs_;
    const unsigned numTiles_;
    std::vector<std::uint8_t> active_;     // per input
    std::vector<std::uint8_t> connected_;  // per output

    // One slot per tile and input, tile by tile: kTileOutputs gains and steps, 0 where silent.
    std::vector<float> gains_;
    std::vector<float> steps_;
    std::vector<Route> routes_;
    std::vector<std::uint8_t> tileStale_;
    bool stale_ = false;

    // Made from the slots by Rebuild, active inputs only.
    std::vector<Counts> panelCounts_;  // per tile
    std::vector<int> constantRows_;    // numInputs per tile: inputs of the constant panel
    std::vector<int> rampedRows_;
    std::vector<Counts> listCounts_;  // per output
    std::vector<MixPair> pairs_;      // numInputs per output: resting from the front, moving
                                      // from the back
    std::vector<int> panelInputs_;    // inputs of any panel
    int numPanelInputs_ = 0;
    bool anyRamped_ = false;

    // Scratch
    std::vector<float> rowGains_;
    std::vector<float> rowSteps_;
    std::vector<float> strip_;
    std::array<float, kMostFrames + kMostStripFrames> weights_{};
    std::array<float, kMostStripFrames>
        unheard_{};  // outputs that do not exist or that nobody hears
};

}  // namespace tav
