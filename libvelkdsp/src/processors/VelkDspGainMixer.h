// SPDX-License-Identifier: MIT
// The mixing half of the gain matrices: holds the gains of one ramp segment, sorted for the
// kernels.
//
// During a segment each gain rests or moves in a straight line, so what a block has to compute is
// decided once per segment. Outputs are grouped in tiles of six. An input that is audible on most
// outputs of a tile is mixed by the tile's panels, which keep all sums of the tile in registers;
// the other audible pairs of an input and an output stand in a list per output. Silent pairs are in
// neither, so a block costs what its audible pairs cost.
#pragma once

#include "containers/VelkDspAlignedVector.h"
#include "kernels/VelkDspGainKernels.h"
#include "processors/VelkDspHostDrain.h"
#include "text/VelkDspNonblocking.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tav {

/// A piece of a ramp segment. Its gains are `from + w * step`, where w runs in a straight line from
/// `position` at the first sample to `position + frames` at the last one. So the last sample of a
/// piece and the first sample of the next one have the same gain. A piece of one sample uses the
/// gain at its end.
struct RampPiece {
    std::int32_t position = 0;  // samples of the segment that were played before
    int frames = 0;
};

/// What is mixed into what: a pointer per port. With a host, every output is drained as soon as it
/// is finished; without one, the sums stay where they are.
struct MixPorts {
    float* const* outputs;
    const float* const* inputs;
    const HostDrain* host;  // may be null
};

/// inputs x outputs gains, all 0 at first.
/// Thread: audio, but for the constructor; no allocation after it.
class GainMixer {
public:
    static constexpr float kAudibleGain = 1e-4f;  // up to here, a gain that rests is silence

    GainMixer(unsigned numInputs, unsigned numOutputs, const GainKernels& kernels);

    /// Floats in a row of gains: one per output, and zeros up to a whole number of groups.
    static std::size_t RowLength(unsigned numOutputs) noexcept TAV_NONBLOCKING;

    /// The input glides from `from` to `to`, or rests there when both are the same.
    /// @param from, to  RowLength gains
    /// @param inverseLength  1 / samples of the glide
    void SetRow(unsigned input,
                const float* from,
                const float* to,
                float inverseLength,
                float silence = kAudibleGain) noexcept TAV_NONBLOCKING;

    /// Inactive inputs are not read. All are active at first.
    void SetActive(unsigned input, bool active) noexcept TAV_NONBLOCKING;
    /// Unconnected outputs are not touched. All are connected at first.
    /// @return true: this changed, and all rows have to be set again
    bool SetConnected(unsigned output, bool connected) noexcept TAV_NONBLOCKING;

    /// Adds the inputs into the outputs, both from sample `offset` on. A host gets those samples of
    /// all outputs, the unconnected and the silent ones too.
    void Mix(const MixPorts& ports, int offset, const RampPiece& piece) noexcept TAV_NONBLOCKING;

private:
    enum class Route : std::uint8_t { Silent, Lists, ConstantPanel, RampedPanel };
    struct Counts {
        int constant = 0;
        int ramped = 0;
    };
    struct Ends {
        MixPair* constant = nullptr;
        MixPair* ramped = nullptr;
    };
    using Mask = std::uint64_t;              // a bit per output of a group
    static constexpr int kMostFrames = 512;  // mixed at once

    static Route RouteOf(Mask audible, Mask moving) noexcept TAV_NONBLOCKING;
    void TakeGroup(unsigned input, unsigned group) noexcept TAV_NONBLOCKING;
    void RouteGroup(unsigned input, unsigned group) noexcept TAV_NONBLOCKING;
    void RebuildLists() noexcept TAV_NONBLOCKING;
    template <class Body>
    void ForEachListed(Body body) const noexcept TAV_NONBLOCKING;
    void RebuildPanels() noexcept TAV_NONBLOCKING;
    bool AddToPanels(unsigned input) noexcept TAV_NONBLOCKING;
    void FillWeights(const RampPiece& piece, int first, int count) noexcept TAV_NONBLOCKING;
    void MixLists(const MixPorts& ports, int offset, int frames) noexcept TAV_NONBLOCKING;
    void MixPanels(const MixPorts& ports, int offset, int frames) noexcept TAV_NONBLOCKING;
    Strip StripOf(const float* const* inputs, int offset, int frames) noexcept TAV_NONBLOCKING;
    void MixTile(unsigned tile,
                 const Strip& strip,
                 float* const* outputs,
                 int offset,
                 const float* weights,
                 int frames) noexcept TAV_NONBLOCKING;
    void DrainTile(unsigned tile,
                   const MixPorts& ports,
                   int offset,
                   int frames) const noexcept TAV_NONBLOCKING;
    /// The first of the six gains, or steps, of an input in a tile.
    std::size_t Slot(unsigned tile, unsigned input) const noexcept TAV_NONBLOCKING;

    const GainKernels& kernels_;
    const unsigned numInputs_;
    const unsigned numOutputs_;
    const unsigned numTiles_;
    const unsigned numGroups_;
    std::vector<std::uint8_t> active_;  // per input
    std::vector<float> heard_;          // per output: 1 when connected; then zeros

    // The gains in force. Slots: tile by tile, within a tile input by input. Where an input is
    // silent in a whole tile, its slot there holds old numbers, which nobody reads.
    std::vector<float> gains_;
    std::vector<float> steps_;
    std::vector<Mask> audible_;  // input by input, group by group
    std::vector<Mask> moving_;
    std::vector<Mask> listed_;   // those of the audible pairs that lists mix
    std::vector<Route> routes_;  // input by input, tile by tile, whole groups

    // The same gains, sorted for the kernels; only those of active inputs.
    bool listsStale_ = false;
    bool panelsStale_ = false;
    bool anyList_ = false;
    bool anyRampedList_ = false;
    bool anyRampedPanel_ = false;
    std::vector<Counts> listCounts_;   // per output
    std::vector<MixPair> pairs_;       // output by output without gaps; of each output first the
                                       // pairs at rest, then the moving ones
    std::vector<Counts> panelCounts_;  // per tile
    std::vector<int> constantInputs_;  // numInputs per tile
    std::vector<int> rampedInputs_;
    std::vector<int> panelInputs_;  // the inputs that any panel reads
    int numPanelInputs_ = 0;

    // Scratch
    std::vector<Ends> listEnds_;  // per output, while the lists are rebuilt
    std::vector<float> rowGains_;
    std::vector<float> rowSteps_;
    std::vector<Mask> rowAudible_;
    std::vector<Mask> rowMoving_;
    AlignedVector<float> strip_;
    std::array<float, kMostFrames + kStripFrames> weights_{};
    std::array<float, kStripFrames> unheard_{};  // takes what a panel adds to unconnected outputs
};

}  // namespace tav
