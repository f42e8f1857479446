// SPDX-License-Identifier: MIT
#include "processors/VelkDspGainMixer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tav {
namespace {

// An input with fewer pairs in a tile costs less in the lists of its outputs.
constexpr int kLeastPanelPairs = 4;

constexpr unsigned kTile = kTileOutputs;

}  // namespace

GainMixer::GainMixer(unsigned numInputs, unsigned numOutputs, const Kernels& kernels)
    : kernels_(kernels),
      numInputs_(numInputs),
      numOutputs_(numOutputs),
      numTiles_((numOutputs + kTile - 1) / kTile),
      active_(numInputs, 1),
      connected_(numOutputs, 1),
      gains_(std::size_t{numTiles_} * numInputs * kTile),
      steps_(gains_.size()),
      routes_(std::size_t{numTiles_} * numInputs, Route::Silent),
      tileStale_(numTiles_),
      panelCounts_(numTiles_),
      constantRows_(std::size_t{numTiles_} * numInputs),
      rampedRows_(std::size_t{numTiles_} * numInputs),
      listCounts_(numOutputs),
      pairs_(std::size_t{numOutputs} * numInputs),
      panelInputs_(numInputs),
      rowGains_(std::size_t{numTiles_} * kTile),
      rowSteps_(rowGains_.size()),
      strip_(std::size_t{numInputs} * static_cast<unsigned>(kernels_.stripFrames)) {}

std::size_t GainMixer::Slot(unsigned tile, unsigned input) const noexcept TAV_NONBLOCKING {
    return std::size_t{tile} * numInputs_ + input;
}

void GainMixer::SetRow(unsigned input,
                       std::span<const float> from,
                       std::span<const float> to,
                       float inverseLength) noexcept TAV_NONBLOCKING {
    for (unsigned o = 0; o < numOutputs_; ++o) {
        const float difference = to[o] - from[o];
        const bool moves = std::abs(difference) > kMovingGain;
        const float resting = std::abs(to[o]) > kAudibleGain ? to[o] : 0.f;
        rowGains_[o] = moves ? from[o] : resting;
        rowSteps_[o] = moves ? difference * inverseLength : 0.f;
    }
    Repack(input);
}

void GainMixer::SetRow(unsigned input,
                       std::span<const float> gains,
                       float silence) noexcept TAV_NONBLOCKING {
    for (unsigned o = 0; o < numOutputs_; ++o) {
        rowGains_[o] = std::abs(gains[o]) > silence ? gains[o] : 0.f;
        rowSteps_[o] = 0.f;
    }
    Repack(input);
}

/// Moves the row from scratch to the input's slots.
void GainMixer::Repack(unsigned input) noexcept TAV_NONBLOCKING {
    for (unsigned o = 0; o < numOutputs_; ++o) {
        if (connected_[o] == 0) rowGains_[o] = rowSteps_[o] = 0.f;
    }
    for (unsigned tile = 0; tile < numTiles_; ++tile) {
        const std::size_t slot = Slot(tile, input) * kTile;
        std::copy_n(&rowGains_[std::size_t{tile} * kTile], kTile, &gains_[slot]);
        std::copy_n(&rowSteps_[std::size_t{tile} * kTile], kTile, &steps_[slot]);
        RouteTile(tile, input);
    }
}

void GainMixer::RouteTile(unsigned tile, unsigned input) noexcept TAV_NONBLOCKING {
    const std::size_t slot = Slot(tile, input);
    int audible = 0;
    int moving = 0;
    for (std::size_t at = slot * kTile; at < (slot + 1) * kTile; ++at) {
        audible += (gains_[at] != 0.f || steps_[at] != 0.f) ? 1 : 0;
        moving += steps_[at] != 0.f ? 1 : 0;
    }
    Route route = Route::Silent;
    if (audible >= kLeastPanelPairs) {
        route = moving > 0 ? Route::RampedPanel : Route::ConstantPanel;
    } else if (audible > 0) {
        route = Route::Lists;
    }
    const bool same = route == routes_[slot] && route != Route::Lists;
    routes_[slot] = route;
    if (same) return;  // the panels read the slot itself
    tileStale_[tile] = 1;
    stale_ = true;
}

void GainMixer::SetActive(unsigned input, bool active) noexcept TAV_NONBLOCKING {
    if ((active_[input] != 0) == active) return;
    active_[input] = active ? 1 : 0;
    for (unsigned tile = 0; tile < numTiles_; ++tile) {
        if (routes_[Slot(tile, input)] == Route::Silent) continue;
        tileStale_[tile] = 1;
        stale_ = true;
    }
}

bool GainMixer::SetConnected(unsigned output, bool connected) noexcept TAV_NONBLOCKING {
    if ((connected_[output] != 0) == connected) return false;
    connected_[output] = connected ? 1 : 0;
    return true;
}

void GainMixer::Rebuild() noexcept TAV_NONBLOCKING {
    if (!stale_) return;
    stale_ = false;
    anyRamped_ = false;
    for (unsigned tile = 0; tile < numTiles_; ++tile) {
        if (tileStale_[tile] != 0) RebuildTile(tile);
        tileStale_[tile] = 0;
        anyRamped_ = anyRamped_ || panelCounts_[tile].ramped > 0;
    }
    for (const Counts& counts : listCounts_) anyRamped_ = anyRamped_ || counts.ramped > 0;
    CollectPanelInputs();
}

void GainMixer::RebuildTile(unsigned tile) noexcept TAV_NONBLOCKING {
    Counts& panel = panelCounts_[tile];
    panel = {};
    const unsigned lastOutput = std::min((tile + 1) * kTile, numOutputs_);
    for (unsigned o = tile * kTile; o < lastOutput; ++o) listCounts_[o] = {};
    int* const constantRows = constantRows_.data() + Slot(tile, 0);
    int* const rampedRows = rampedRows_.data() + Slot(tile, 0);
    for (unsigned input = 0; input < numInputs_; ++input) {
        if (active_[input] == 0) continue;
        switch (routes_[Slot(tile, input)]) {
            case Route::Silent: break;
            case Route::Lists: AddPairs(tile, input); break;
            case Route::ConstantPanel:
                constantRows[panel.constant++] = static_cast<int>(input);
                break;
            case Route::RampedPanel: rampedRows[panel.ramped++] = static_cast<int>(input); break;
        }
    }
}

void GainMixer::AddPairs(unsigned tile, unsigned input) noexcept TAV_NONBLOCKING {
    const std::size_t slot = Slot(tile, input) * kTile;
    const unsigned lastOutput = std::min((tile + 1) * kTile, numOutputs_);
    for (unsigned o = tile * kTile; o < lastOutput; ++o) {
        const std::size_t at = slot + (o - tile * kTile);
        const MixPair pair{static_cast<int>(input), gains_[at], steps_[at]};
        MixPair* const first = pairs_.data() + std::size_t{o} * numInputs_;
        if (pair.step != 0.f) {
            first[numInputs_ - 1 - static_cast<unsigned>(listCounts_[o].ramped++)] = pair;
        } else if (pair.gain != 0.f) {
            first[listCounts_[o].constant++] = pair;
        }
    }
}

void GainMixer::CollectPanelInputs() noexcept TAV_NONBLOCKING {
    numPanelInputs_ = 0;
    for (unsigned input = 0; input < numInputs_; ++input) {
        if (active_[input] == 0) continue;
        for (unsigned tile = 0; tile < numTiles_; ++tile) {
            if (routes_[Slot(tile, input)] < Route::ConstantPanel) continue;
            panelInputs_[static_cast<unsigned>(numPanelInputs_++)] = static_cast<int>(input);
            break;
        }
    }
}

void GainMixer::Mix(float* const* outputs,
                    const float* const* inputs,
                    int offset,
                    const RampPiece& piece) noexcept TAV_NONBLOCKING {
    Rebuild();
    for (int done = 0; done < piece.frames; done += kMostFrames) {
        const int frames = std::min(piece.frames - done, kMostFrames);
        if (anyRamped_) FillWeights(piece, done, frames);
        MixLists(outputs, inputs, offset + done, frames);
        if (numPanelInputs_ > 0) MixPanels(outputs, inputs, offset + done, frames);
    }
}

/// Each weight by its index, never accumulated; zeros up to the end of the last strip.
void GainMixer::FillWeights(const RampPiece& piece, int first, int count) noexcept TAV_NONBLOCKING {
    const double position = piece.position;
    const double frames = piece.frames;
    if (piece.frames == 1) {
        weights_[0] = static_cast<float>(position + 1.0);
    } else {
        const double slope = frames / (frames - 1.0);
        for (int k = 0; k < count; ++k) {
            const double weight = position + static_cast<double>(first + k) * slope;
            weights_[static_cast<unsigned>(k)] = static_cast<float>(weight);
        }
    }
    std::fill_n(weights_.begin() + count, kMostStripFrames, 0.f);
}

void GainMixer::MixLists(float* const* outputs,
                         const float* const* inputs,
                         int offset,
                         int frames) noexcept TAV_NONBLOCKING {
    for (unsigned o = 0; o < numOutputs_; ++o) {
        const Counts& counts = listCounts_[o];
        const MixPair* const first = pairs_.data() + std::size_t{o} * numInputs_;
        if (counts.constant > 0) {
            kernels_.mixConstantList(outputs[o] + offset, inputs, offset, first, counts.constant,
                                     frames);
        }
        if (counts.ramped > 0) {
            kernels_.mixRampedList(outputs[o] + offset, inputs, offset,
                                   first + (static_cast<int>(numInputs_) - counts.ramped),
                                   counts.ramped, weights_.data(), frames);
        }
    }
}

void GainMixer::MixPanels(float* const* outputs,
                          const float* const* inputs,
                          int offset,
                          int frames) noexcept TAV_NONBLOCKING {
    for (int done = 0; done < frames; done += kernels_.stripFrames) {
        const int count = std::min(frames - done, kernels_.stripFrames);
        FillStrip(inputs, offset + done, count);
        MixStrip(outputs, offset + done, weights_.data() + done, count);
    }
}

void GainMixer::FillStrip(const float* const* inputs,
                          int offset,
                          int frames) noexcept TAV_NONBLOCKING {
    const int padded = (frames + kStripPadding - 1) / kStripPadding * kStripPadding;
    for (int index = 0; index < numPanelInputs_; ++index) {
        const int input = panelInputs_[static_cast<unsigned>(index)];
        float* const samples = strip_.data() + input * kernels_.stripFrames;
        std::copy_n(inputs[input] + offset, frames, samples);
        std::fill(samples + frames, samples + padded, 0.f);
    }
}

void GainMixer::MixStrip(float* const* outputs,
                         int offset,
                         const float* weights,
                         int frames) noexcept TAV_NONBLOCKING {
    std::array<float*, kTile> tileOutputs;
    for (unsigned tile = 0; tile < numTiles_; ++tile) {
        const Counts& counts = panelCounts_[tile];
        if (counts.constant + counts.ramped == 0) continue;
        for (unsigned o = 0; o < kTile; ++o) {
            const unsigned output = tile * kTile + o;
            const bool heard = output < numOutputs_ && connected_[output] != 0;
            tileOutputs[o] = heard ? outputs[output] + offset : unheard_.data();
        }
        const std::size_t slot = Slot(tile, 0);
        Panel panel{&gains_[slot * kTile], &steps_[slot * kTile], nullptr, 0};
        if (counts.constant > 0) {
            panel.inputs = &constantRows_[slot];
            panel.numInputs = counts.constant;
            kernels_.mixConstantPanel(tileOutputs.data(), strip_.data(), panel, frames);
        }
        if (counts.ramped > 0) {
            panel.inputs = &rampedRows_[slot];
            panel.numInputs = counts.ramped;
            kernels_.mixRampedPanel(tileOutputs.data(), strip_.data(), panel, weights, frames);
        }
    }
}

}  // namespace tav
