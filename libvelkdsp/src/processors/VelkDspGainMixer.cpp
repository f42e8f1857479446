// SPDX-License-Identifier: MIT
#include "processors/VelkDspGainMixer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace tav {
namespace {

constexpr unsigned kTile = kTileOutputs;
constexpr unsigned kGroup = kGroupOutputs;
constexpr std::uint64_t kTileMask = (std::uint64_t{1} << kTile) - 1;

constexpr unsigned RoundedUp(unsigned count, unsigned unit) { return (count + unit - 1) / unit; }

/// How many of a tile's outputs a mask holds.
constexpr auto kTileCounts = [] {
    std::array<std::uint8_t, kTileMask + 1> counts{};
    for (std::size_t mask = 1; mask < counts.size(); ++mask) {
        counts[mask] = static_cast<std::uint8_t>(counts[mask / 2] + mask % 2);
    }
    return counts;
}();

/// Floats from each input to the next where all lie in a row, each at a cache line, and near enough
/// to each other to stay in the nearest cache together; 0 otherwise.
std::ptrdiff_t DistanceOf(const float* const* inputs, unsigned numInputs) noexcept TAV_NONBLOCKING {
    constexpr std::uintptr_t kNear = 32768;  // bytes, all inputs
    if (numInputs < 2) return 0;
    const auto address = [&](unsigned i) { return reinterpret_cast<std::uintptr_t>(inputs[i]); };
    const std::uintptr_t distance = address(1) - address(0);
    if ((address(0) | distance) % kCacheLineBytes != 0 || distance > kNear / numInputs) return 0;
    for (unsigned i = 1; i < numInputs; ++i) {
        if (address(i) - address(i - 1) != distance) return 0;
    }
    return static_cast<std::ptrdiff_t>(distance / sizeof(float));
}

}  // namespace

GainMixer::GainMixer(unsigned numInputs, unsigned numOutputs, const GainKernels& kernels)
    : kernels_(kernels),
      numInputs_(numInputs),
      numOutputs_(numOutputs),
      numTiles_(RoundedUp(numOutputs, kTile)),
      numGroups_(RoundedUp(numOutputs, kGroup)),
      active_(numInputs, 1),
      heard_(RowLength(numOutputs)),
      gains_(std::size_t{numTiles_} * numInputs * kTile),
      steps_(gains_.size()),
      audible_(std::size_t{numGroups_} * numInputs),
      moving_(audible_.size()),
      listed_(audible_.size()),
      routes_(audible_.size() * kGroupTiles, Route::Silent),
      listCounts_(numOutputs),
      pairs_(std::size_t{numOutputs} * numInputs),
      panelCounts_(numTiles_),
      constantInputs_(std::size_t{numTiles_} * numInputs),
      rampedInputs_(constantInputs_.size()),
      panelInputs_(numInputs),
      listEnds_(numOutputs),
      rowGains_(heard_.size()),
      rowSteps_(heard_.size()),
      rowAudible_(numGroups_),
      rowMoving_(numGroups_),
      strip_(std::size_t{numInputs} * kStripFrames) {
    std::fill_n(heard_.begin(), numOutputs, 1.f);
}

std::size_t GainMixer::RowLength(unsigned numOutputs) noexcept TAV_NONBLOCKING {
    return std::size_t{RoundedUp(numOutputs, kGroup)} * kGroup;
}

std::size_t GainMixer::Slot(unsigned tile, unsigned input) const noexcept TAV_NONBLOCKING {
    return (std::size_t{tile} * numInputs_ + input) * kTile;
}

void GainMixer::SetRow(unsigned input,
                       const float* from,
                       const float* to,
                       float inverseLength,
                       float silence) noexcept TAV_NONBLOCKING {
    kernels_.planRow({from, to, heard_.data(), inverseLength, silence},
                     {rowGains_.data(), rowSteps_.data(), rowAudible_.data(), rowMoving_.data()},
                     static_cast<int>(numGroups_));
    for (unsigned group = 0; group < numGroups_; ++group) TakeGroup(input, group);
}

GainMixer::Route GainMixer::RouteOf(Mask audible, Mask moving) noexcept TAV_NONBLOCKING {
    if (audible == 0) return Route::Silent;
    // A panel always computes all outputs of its tile; for few audible ones the lists cost less.
    if (kTileCounts[audible] < kLeastTileOutputs) return Route::Lists;
    return moving == 0 ? Route::ConstantPanel : Route::RampedPanel;
}

/// Moves a group of the planned row to its slots.
void GainMixer::TakeGroup(unsigned input, unsigned group) noexcept TAV_NONBLOCKING {
    const std::size_t at = std::size_t{input} * numGroups_ + group;
    Mask left = rowAudible_[group];
    while (left != 0) {
        const unsigned t = static_cast<unsigned>(std::countr_zero(left)) / kTile;
        left &= ~(kTileMask << (t * kTile));
        const std::size_t slot = Slot(group * kGroupTiles + t, input);
        const std::size_t planned = group * kGroup + t * kTile;
        std::memcpy(&gains_[slot], &rowGains_[planned], kTile * sizeof(float));
        std::memcpy(&steps_[slot], &rowSteps_[planned], kTile * sizeof(float));
    }
    // Panels read the slots, so new gains reach them by themselves. Lists hold copies of the gains,
    // and which inputs are in a panel or a list depends on which gains are audible.
    if (rowAudible_[group] != audible_[at] || rowMoving_[group] != moving_[at]) {
        RouteGroup(input, group);
    }
    if (listed_[at] != 0) listsStale_ = true;
}

void GainMixer::RouteGroup(unsigned input, unsigned group) noexcept TAV_NONBLOCKING {
    const std::size_t at = std::size_t{input} * numGroups_ + group;
    Mask concerned = rowAudible_[group] | audible_[at];
    audible_[at] = rowAudible_[group];
    moving_[at] = rowMoving_[group];
    if (listed_[at] != 0) listsStale_ = true;
    listed_[at] = 0;
    while (concerned != 0) {
        const unsigned t = static_cast<unsigned>(std::countr_zero(concerned)) / kTile;
        const unsigned shift = t * kTile;
        concerned &= ~(kTileMask << shift);
        const Mask audible = (audible_[at] >> shift) & kTileMask;
        const Route route = RouteOf(audible, (moving_[at] >> shift) & kTileMask);
        if (route == Route::Lists) listed_[at] |= audible << shift;
        Route& before = routes_[at * kGroupTiles + t];
        if (route != before && std::max(route, before) >= Route::ConstantPanel) panelsStale_ = true;
        before = route;
    }
}

void GainMixer::SetActive(unsigned input, bool active) noexcept TAV_NONBLOCKING {
    if ((active_[input] != 0) == active) return;
    active_[input] = active ? 1 : 0;
    listsStale_ = true;
    panelsStale_ = true;
}

bool GainMixer::SetConnected(unsigned output, bool connected) noexcept TAV_NONBLOCKING {
    const float heard = connected ? 1.f : 0.f;
    if (heard_[output] == heard) return false;
    heard_[output] = heard;
    return true;
}

/// Calls body(input, output, whether the gain moves) for each pair that lists mix.
template <class Body>
void GainMixer::ForEachListed(Body body) const noexcept TAV_NONBLOCKING {
    for (unsigned input = 0; input < numInputs_; ++input) {
        if (active_[input] == 0) continue;
        for (unsigned group = 0; group < numGroups_; ++group) {
            const std::size_t at = std::size_t{input} * numGroups_ + group;
            for (Mask listed = listed_[at]; listed != 0; listed &= listed - 1) {
                const auto bit = static_cast<unsigned>(std::countr_zero(listed));
                body(input, group * kGroup + bit, (moving_[at] >> bit & 1) != 0);
            }
        }
    }
}

void GainMixer::RebuildLists() noexcept TAV_NONBLOCKING {
    listsStale_ = false;
    anyList_ = false;
    anyRampedList_ = false;
    std::ranges::fill(listCounts_, Counts{});
    ForEachListed([&](unsigned, unsigned output, bool moves) {
        ++(moves ? listCounts_[output].ramped : listCounts_[output].constant);
        anyList_ = true;
        anyRampedList_ = anyRampedList_ || moves;
    });
    MixPair* next = pairs_.data();
    for (unsigned o = 0; o < numOutputs_; ++o) {
        listEnds_[o] = {next, next + listCounts_[o].constant};
        next = listEnds_[o].ramped + listCounts_[o].ramped;
    }
    ForEachListed([&](unsigned input, unsigned output, bool moves) {
        const std::size_t at = Slot(output / kTile, input) + output % kTile;
        MixPair*& end = moves ? listEnds_[output].ramped : listEnds_[output].constant;
        *end++ = {static_cast<int>(input), gains_[at], steps_[at]};
    });
}

void GainMixer::RebuildPanels() noexcept TAV_NONBLOCKING {
    panelsStale_ = false;
    anyRampedPanel_ = false;
    numPanelInputs_ = 0;
    std::ranges::fill(panelCounts_, Counts{});
    for (unsigned input = 0; input < numInputs_; ++input) {
        if (active_[input] == 0 || !AddToPanels(input)) continue;
        panelInputs_[static_cast<unsigned>(numPanelInputs_++)] = static_cast<int>(input);
    }
}

/// @return whether any panel has the input
bool GainMixer::AddToPanels(unsigned input) noexcept TAV_NONBLOCKING {
    bool any = false;
    for (unsigned group = 0; group < numGroups_; ++group) {
        const std::size_t at = std::size_t{input} * numGroups_ + group;
        if (audible_[at] == listed_[at]) continue;
        for (unsigned t = 0; t < kGroupTiles; ++t) {
            const Route route = routes_[at * kGroupTiles + t];
            if (route < Route::ConstantPanel) continue;
            const unsigned tile = group * kGroupTiles + t;
            const std::size_t first = std::size_t{tile} * numInputs_;
            Counts& counts = panelCounts_[tile];
            any = true;
            if (route == Route::ConstantPanel) {
                constantInputs_[first + static_cast<unsigned>(counts.constant++)] =
                    static_cast<int>(input);
            } else {
                rampedInputs_[first + static_cast<unsigned>(counts.ramped++)] =
                    static_cast<int>(input);
                anyRampedPanel_ = true;
            }
        }
    }
    return any;
}

void GainMixer::Mix(const MixPorts& ports,
                    int offset,
                    const RampPiece& piece) noexcept TAV_NONBLOCKING {
    if (listsStale_) RebuildLists();
    if (panelsStale_) RebuildPanels();
    for (int done = 0; done < piece.frames; done += kMostFrames) {
        const int frames = std::min(piece.frames - done, kMostFrames);
        if (anyRampedList_ || anyRampedPanel_) FillWeights(piece, done, frames);
        MixLists(ports, offset + done, frames);
        if (numPanelInputs_ > 0) MixPanels(ports, offset + done, frames);
    }
}

/// Each weight by its index, never accumulated; zeros up to the end of the last strip.
void GainMixer::FillWeights(const RampPiece& piece, int first, int count) noexcept TAV_NONBLOCKING {
    const auto position = static_cast<float>(piece.position);
    const auto frames = static_cast<float>(piece.frames);
    const float slope = piece.frames == 1 ? 0.f : frames / (frames - 1.f);
    const float start = piece.frames == 1 ? position + 1.f : position;
    for (int k = 0; k < count; ++k) {
        weights_[static_cast<unsigned>(k)] = start + static_cast<float>(first + k) * slope;
    }
    std::fill_n(weights_.begin() + count, kStripFrames, 0.f);
}

void GainMixer::MixLists(const MixPorts& ports, int offset, int frames) noexcept TAV_NONBLOCKING {
    const bool isAll = numPanelInputs_ == 0;
    if (!anyList_ && !isAll) return;
    const MixPair* pairs = pairs_.data();
    for (unsigned o = 0; o < numOutputs_; ++o) {
        const Counts counts = listCounts_[o];
        if (counts.constant > 0) {
            kernels_.mixConstantList(ports.outputs[o] + offset, ports.inputs, offset, pairs,
                                     counts.constant, frames);
            pairs += counts.constant;
        }
        if (counts.ramped > 0) {
            kernels_.mixRampedList(ports.outputs[o] + offset, ports.inputs, offset, pairs,
                                   counts.ramped, weights_.data(), frames);
            pairs += counts.ramped;
        }
        if (isAll && ports.host != nullptr) {
            ports.host->Drain(o, ports.outputs[o], offset, frames);
        }
    }
}

void GainMixer::MixPanels(const MixPorts& ports, int offset, int frames) noexcept TAV_NONBLOCKING {
    for (int done = 0; done < frames; done += kStripFrames) {
        const int count = std::min(frames - done, kStripFrames);
        const Strip strip = StripOf(ports.inputs, offset + done, count);
        for (unsigned tile = 0; tile < numTiles_; ++tile) {
            MixTile(tile, strip, ports.outputs, offset + done, weights_.data() + done, count);
            if (ports.host != nullptr) DrainTile(tile, ports, offset + done, count);
        }
    }
}

/// The inputs themselves where they lie like a strip, or a copy of them.
Strip GainMixer::StripOf(const float* const* inputs,
                         int offset,
                         int frames) noexcept TAV_NONBLOCKING {
    if (const auto distance = frames == kStripFrames ? DistanceOf(inputs, numInputs_) : 0) {
        return {inputs[0] + offset, distance, 1};
    }
    return kernels_.fillStrip(strip_.data(), static_cast<int>(numInputs_), inputs, offset,
                              panelInputs_.data(), numPanelInputs_, frames);
}

void GainMixer::MixTile(unsigned tile,
                        const Strip& strip,
                        float* const* outputs,
                        int offset,
                        const float* weights,
                        int frames) noexcept TAV_NONBLOCKING {
    const Counts counts = panelCounts_[tile];
    if (counts.constant + counts.ramped == 0) return;
    const unsigned numOutputs = std::min(numOutputs_ - tile * kTile, kTile);
    std::array<float*, kTile> tileOutputs{};
    for (unsigned o = 0; o < numOutputs; ++o) {
        const unsigned output = tile * kTile + o;
        tileOutputs[o] = heard_[output] != 0.f ? outputs[output] + offset : unheard_.data();
    }
    const std::size_t slot = Slot(tile, 0);
    const std::size_t first = std::size_t{tile} * numInputs_;
    Panel panel{&gains_[slot], &steps_[slot], nullptr, 0, static_cast<int>(numOutputs)};
    if (counts.constant > 0) {
        panel.inputs = &constantInputs_[first];
        panel.numInputs = counts.constant;
        kernels_.mixConstantPanel(tileOutputs.data(), strip, panel, frames);
    }
    if (counts.ramped > 0) {
        panel.inputs = &rampedInputs_[first];
        panel.numInputs = counts.ramped;
        kernels_.mixRampedPanel(tileOutputs.data(), strip, panel, weights, frames);
    }
}

void GainMixer::DrainTile(unsigned tile,
                          const MixPorts& ports,
                          int offset,
                          int frames) const noexcept TAV_NONBLOCKING {
    const unsigned end = std::min(numOutputs_, (tile + 1) * kTile);
    for (unsigned o = tile * kTile; o < end; ++o) {
        ports.host->Drain(o, ports.outputs[o], offset, frames);
    }
}

}  // namespace tav
