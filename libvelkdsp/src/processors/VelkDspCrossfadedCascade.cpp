// SPDX-License-Identifier: MIT
#include "processors/VelkDspCrossfadedCascade.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tav {

namespace {

constexpr float kLargestStateSum = 1e12f;

/// Number of samples after which the start of a cascade from silence is no longer audible.
std::size_t PastLength(float sampleRateHz) {
    const float rate = std::isfinite(sampleRateHz) ? std::clamp(sampleRateHz, 1.f, 768000.f) : 1.f;
    return 128 * static_cast<std::size_t>(std::ceil(rate / 48000.f));
}

}  // namespace

void Cascade::Clear() noexcept TAV_NONBLOCKING { std::ranges::fill(states_, State{}); }

void Cascade::Perform(std::span<const BiquadCell> cells,
                      std::span<float> output,
                      const float* input) noexcept TAV_NONBLOCKING {
    for (std::size_t k = 0; k < output.size(); ++k) {
        float x = input[k];
        // Cells in the inner loop, so that the processor overlaps cells of neighbouring samples.
        for (std::size_t c = 0; c < cells.size(); ++c) {
            const BiquadCell& cell = cells[c];
            State& state = states_[c];
            const float y = cell.b0 * x + state.s1;
            state.s1 = cell.b1 * x - cell.a1 * y + state.s2;
            state.s2 = cell.b2 * x - cell.a2 * y;
            x = y;
        }
        output[k] = x;
    }
}

bool Cascade::IsSane() const noexcept TAV_NONBLOCKING {
    float sum = 0.f;
    for (const State& state : states_) sum += std::abs(state.s1) + std::abs(state.s2);
    return sum <= kLargestStateSum;
}

CrossfadedCascade::CrossfadedCascade(std::size_t maxCells, float sampleRateHz)
    : sounding_(maxCells),
      incoming_(maxCells),
      fade_(sampleRateHz),
      past_(PastLength(sampleRateHz)) {}

void CrossfadedCascade::Load(const BiquadCells* cells) noexcept TAV_NONBLOCKING {
    if (cells == nullptr || cells->size() <= sounding_.MaxCells()) fade_.Load(cells);
}

void CrossfadedCascade::Clear() noexcept TAV_NONBLOCKING {
    sounding_.Clear();
    incoming_.Clear();
    std::ranges::fill(past_, 0.f);
}

void CrossfadedCascade::Perform(float* output,
                                const float* input,
                                unsigned frames,
                                unsigned& starts) noexcept TAV_NONBLOCKING {
    for (std::size_t done = 0; done < frames;) {
        const std::size_t count = std::min(frames - done, kLargestBlock);
        PerformPiece({output + done, count}, input + done, starts);
        done += count;
    }
}

void CrossfadedCascade::PerformPiece(std::span<float> output,
                                     const float* input,
                                     unsigned& starts) noexcept TAV_NONBLOCKING {
    float incoming[kLargestBlock];
    for (std::size_t done = 0; done < output.size();) {
        if (fade_.Waiting() && starts > 0) {
            --starts;
            Begin();
        }
        const std::size_t count = fade_.FramesWithin(output.size() - done);
        const std::span sounding = output.subspan(done, count);
        Remember({input + done, count});
        const bool fading = fade_.Fading();
        const auto mixed = std::span(incoming).first(count);
        if (fading) Play(incoming_, fade_.Incoming(), mixed, input + done);
        Play(sounding_, fade_.Current(), sounding, input + done);
        if (fading && fade_.Mix(sounding, mixed)) std::swap(sounding_, incoming_);
        done += count;
    }
    if (sounding_.IsSane() && incoming_.IsSane()) return;
    Clear();
    std::ranges::fill(output, 0.f);
}

void CrossfadedCascade::Begin() noexcept TAV_NONBLOCKING {
    incoming_.Clear();
    float unheard[kLargestBlock];
    for (std::size_t done = 0; done < past_.size();) {
        const std::size_t at = (position_ + done) % past_.size();
        const std::size_t count = std::min({past_.size() - done, past_.size() - at, kLargestBlock});
        Play(incoming_, fade_.Incoming(), std::span(unheard).first(count), past_.data() + at);
        done += count;
    }
    if (!fade_.Begin()) std::swap(sounding_, incoming_);
}

void CrossfadedCascade::Remember(std::span<const float> input) noexcept TAV_NONBLOCKING {
    input = input.last(std::min(input.size(), past_.size()));
    const std::size_t first = std::min(input.size(), past_.size() - position_);
    std::ranges::copy(input.first(first), past_.data() + position_);
    std::ranges::copy(input.subspan(first), past_.data());
    position_ = (position_ + input.size()) % past_.size();
}

void CrossfadedCascade::Play(Cascade& cascade,
                             const BiquadCells* cells,
                             std::span<float> output,
                             const float* input) noexcept TAV_NONBLOCKING {
    if (cells == nullptr || cells->empty()) {
        std::ranges::fill(output, 0.f);
    } else {
        cascade.Perform(*cells, output, input);
    }
}

}  // namespace tav
