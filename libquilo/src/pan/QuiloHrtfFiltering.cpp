// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfFiltering.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quilo {

namespace {

constexpr float kMuteMs = 5.f;
constexpr unsigned kLongestChunk = 512;  // frames in which a share of the fades may begin

/// How many of the voices may begin a fade within a chunk.
unsigned StartsFor(unsigned numVoices) noexcept TAV_NONBLOCKING {
    return std::max(numVoices / 8, 8u);
}

}  // namespace

HrtfFiltering::HrtfFiltering(const std::shared_ptr<const HrtfResponses>& responses,
                             unsigned numSources,
                             unsigned blockSize,
                             bool isNearfield)
    : HrtfRendering(responses->Set(), responses, blockSize),
      sources_(numSources),
      bank_(HrtfFilterBank::Make(*responses_, numSources, blockSize, isNearfield)),
      voices_(numSources,
              responses_->Format().rateHz,
              bank_->LongestPiece(),
              bank_->Past(),
              isNearfield ? 2 : 1) {
    if (!isNearfield) return;
    const std::size_t longest = bank_->LongestPiece();
    nearfield_ = std::make_unique<NearfieldStage>(numSources, responses_->Format().rateHz, longest);
    silence_.resize(longest);
}

void HrtfFiltering::SetSource(unsigned index, const Source& source, float glideMs) noexcept {
    sources_[index].shared.Store(
        {source.points, source.delays.left, source.delays.right, source.gain, glideMs});
}

void HrtfFiltering::Perform(float* left,
                            float* right,
                            const float* const* inputs,
                            unsigned frames) noexcept TAV_NONBLOCKING {
    if (Settings settings; settings_.Take(settings)) {
        bank_->SetFade(settings.fadeMs, settings.fadeShape);
        voices_.SetKind(settings.delayKind);
    }
    const std::uint32_t resets = resets_.load(std::memory_order_relaxed);
    const bool forget = std::exchange(resetsDone_, resets) != resets;
    for (unsigned i = 0; i < sources_.size(); ++i) {
        if (forget && sources_[i].state == SourceState::Awake) Sleep(i, SourceState::Asleep);
        TakeTarget(i, inputs[i] != nullptr);
    }
    const auto longest = static_cast<unsigned>(bank_->LongestPiece());
    unsigned starts = 0;
    for (unsigned done = 0; done < frames;) {
        if (done % kLongestChunk == 0) starts = StartsFor(NumSources());
        const unsigned count = std::min(frames - done, longest);
        TakeInputs(inputs, done, count);
        bank_->Perform(voices_, {left + done, count}, {right + done, count}, starts);
        done += count;
    }
}

void HrtfFiltering::TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING {
    SourceSlot& source = sources_[index];
    const Target& target = source.taken;
    const bool changed = source.shared.Take(source.taken);
    if (source.state != SourceState::Awake) {
        if (present && target.gain != 0.f) Wake(index);
        if (source.state != SourceState::Awake)
            source.state = present ? SourceState::Muted : SourceState::Asleep;
        return;
    }
    if (!present) return Sleep(index, SourceState::Asleep);
    if (changed) {
        const float rate = responses_->Format().rateHz;
        voices_.SetGain(index, target.gain, tav::Ramp::GlideLength(kMuteMs, rate));
        SetDelays(index, tav::Ramp::GlideLength(target.glideMs, rate));
        bank_->Load(index, target.points);
    }
    const std::size_t tail = responses_->AreCells() ? 0 : responses_->MaxTaps();
    if (target.gain == 0.f && voices_.IsSilenced(index, tail)) Sleep(index, SourceState::Muted);
}

void HrtfFiltering::TakeInputs(const float* const* inputs,
                               unsigned done,
                               unsigned frames) noexcept TAV_NONBLOCKING {
    constexpr auto kLanes = static_cast<unsigned>(NearfieldStage::kLanes);
    const auto isAwake = [this](unsigned i) { return sources_[i].state == SourceState::Awake; };
    for (unsigned first = 0; first < NumSources(); first += kLanes) {
        const unsigned end = std::min(first + kLanes, NumSources());
        NearfieldStage::Signals signals;
        signals.fill(silence_.data());
        bool isAnyAwake = false;
        for (unsigned i = first; i < end; ++i) {
            if (!isAwake(i)) continue;
            isAnyAwake = true;
            signals[i - first] = inputs[i] + done;
            if (!nearfield_) voices_.Take(i, {signals[i - first], frames});
        }
        if (!nearfield_ || !isAnyAwake) continue;
        nearfield_->Perform(first / kLanes, signals, frames);
        for (unsigned i = first; i < end; ++i) {
            if (!isAwake(i)) continue;
            voices_.Take(i, {nearfield_->Ear(0, i - first), frames},
                         {nearfield_->Ear(1, i - first), frames});
        }
    }
}

void HrtfFiltering::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    SourceSlot& source = sources_[index];
    voices_.Wake(index);
    SetDelays(index, 0);
    if (source.state == SourceState::Muted) {  // it may be in the middle of a sound
        voices_.SetGain(index, 0.f, 0);
        const float rate = responses_->Format().rateHz;
        voices_.SetGain(index, source.taken.gain, tav::Ramp::GlideLength(kMuteMs, rate));
    }
    bank_->Wake(index, source.taken.points);
    if (nearfield_) nearfield_->Wake(index);
    source.state = SourceState::Awake;
}

void HrtfFiltering::Sleep(unsigned index, SourceState state) noexcept TAV_NONBLOCKING {
    bank_->Sleep(index);
    sources_[index].state = state;
}

void HrtfFiltering::SetDelays(unsigned index, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    // Finite responses hold their delays, but not what nearness adds to them.
    if (!HasDelays()) return;
    voices_.SetDelay(index, 0, sources_[index].taken.leftMs, glideSamples);
    voices_.SetDelay(index, 1, sources_[index].taken.rightMs, glideSamples);
}

}  // namespace Quilo
