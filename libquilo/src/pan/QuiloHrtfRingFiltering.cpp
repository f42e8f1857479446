// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfRingFiltering.h"

#include <algorithm>
#include <utility>

namespace Quilo {

namespace {

constexpr float kRingMuteMs = 5.f;

}  // namespace

HrtfRingFiltering::HrtfRingFiltering(std::shared_ptr<const Hrtf> set,
                                     HrtfRing ring,
                                     std::shared_ptr<const HrtfResponses> responses,
                                     unsigned numSources,
                                     unsigned blockSize)
    : HrtfRendering(std::move(set), std::move(responses), blockSize),
      ring_(std::move(ring)),
      sources_(numSources),
      matrices_{tav::SignalMatrix(numSources, HrtfRingFilters::kNumBuses),
                tav::SignalMatrix(numSources, HrtfRingFilters::kNumBuses)},
      voices_(numSources, responses_->Format().rateHz, kPiece, 0),
      filters_(responses_) {
    for (tav::SignalMatrix& matrix : matrices_) matrix.SetSampleRate(responses_->Format().rateHz);
    for (auto& rows : delayed_) rows.resize(numSources);
    for (auto& pointers : sent_) pointers.assign(numSources, silence_.data());
}

void HrtfRingFiltering::SetInterpolationTime(float ms) noexcept {
    for (tav::SignalMatrix& matrix : matrices_) matrix.SetInterpolationTime(ms);
}

void HrtfRingFiltering::SetSource(unsigned index,
                                  const std::array<std::vector<float>, 2>& shares,
                                  const EarDelays& delays,
                                  float gain,
                                  float glideMs) noexcept {
    for (std::size_t ear = 0; ear < kNumEars; ++ear)
        matrices_[ear].SetRow(index, shares[ear], glideMs == 0.f);
    sources_[index].shared.Store({delays, gain, glideMs});
}

void HrtfRingFiltering::Perform(float* left,
                                float* right,
                                const float* const* inputs,
                                unsigned frames) noexcept TAV_NONBLOCKING {
    if (Settings settings; settings_.Take(settings)) voices_.SetKind(settings.delayKind);
    const std::uint32_t resets = resets_.load(std::memory_order_relaxed);
    if (std::exchange(resetsDone_, resets) != resets) {
        for (Source& source : sources_) source.state = SourceState::Asleep;
        filters_.Clear();
    }
    for (unsigned i = 0; i < sources_.size(); ++i) TakeTarget(i, inputs[i] != nullptr);
    for (unsigned done = 0; done < frames;) {
        const unsigned count = std::min(frames - done, kPiece);
        Delay(inputs, done, count);
        for (std::size_t ear = 0; ear < kNumEars; ++ear) {
            std::array<float*, HrtfRingFilters::kNumBuses> buses{};
            for (std::size_t k = 0; k < buses.size(); ++k) {
                buses[k] = buses_[ear][k].data();
                std::fill_n(buses[k], count, 0.f);
            }
            matrices_[ear].Perform(buses.data(), sent_[ear].data(), count);
        }
        filters_.Perform(buses_, {left + done, count}, {right + done, count});
        done += count;
    }
}

/// The sources as they come to both ears, before any filter.
void HrtfRingFiltering::Delay(const float* const* inputs,
                              unsigned done,
                              unsigned frames) noexcept TAV_NONBLOCKING {
    for (unsigned i = 0; i < sources_.size(); ++i) {
        const bool isAwake = sources_[i].state == SourceState::Awake;
        if (isAwake) voices_.Take(i, {inputs[i] + done, frames});
        for (std::size_t ear = 0; ear < kNumEars; ++ear) {
            const auto room = std::span(delayed_[ear][i]).first(frames);
            sent_[ear][i] = isAwake ? voices_.Delayed(i, ear, room) : silence_.data();
        }
    }
}

void HrtfRingFiltering::TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING {
    Source& source = sources_[index];
    const bool changed = source.shared.Take(source.taken);
    const bool isAwake = source.state == SourceState::Awake;
    const bool isSilenced = isAwake && voices_.IsSilenced(index);
    const SourceState next = NextState(source.state, present, source.taken.gain != 0.f, isSilenced);
    if (next == SourceState::Awake && !isAwake) {
        Wake(index);
    } else if (isAwake && changed) {
        const float rate = responses_->Format().rateHz;
        voices_.SetGain(index, source.taken.gain, tav::Ramp::GlideLength(kRingMuteMs, rate));
        SetDelays(index, source.taken.glideMs);
    }
    source.state = next;
}

void HrtfRingFiltering::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    const Source& source = sources_[index];
    voices_.Wake(index);
    SetDelays(index, 0.f);
    // A source that was muted may be in the middle of a sound.
    const bool fades = source.state == SourceState::Muted;
    voices_.SetGain(index, fades ? 0.f : source.taken.gain, 0);
    const float rate = responses_->Format().rateHz;
    voices_.SetGain(index, source.taken.gain, tav::Ramp::GlideLength(kRingMuteMs, rate));
}

void HrtfRingFiltering::SetDelays(unsigned index, float glideMs) noexcept TAV_NONBLOCKING {
    const std::uint32_t glide = tav::Ramp::GlideLength(glideMs, responses_->Format().rateHz);
    const EarDelays& delays = sources_[index].taken.delays;
    voices_.SetDelay(index, 0, delays.left, glide);
    voices_.SetDelay(index, 1, delays.right, glide);
}

}  // namespace Quilo
