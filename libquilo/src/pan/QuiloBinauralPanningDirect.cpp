// SPDX-License-Identifier: MIT
#include "pan/QuiloBinauralPanningDirect.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace Quilo {

using tav::ControlGuard;

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;
constexpr std::uint32_t kNoPoint = ~std::uint32_t{0};
constexpr float kWarmUpMs = 10.f;  // of a new set, before it is heard
constexpr float kShortestChangeMs = 20.f;

bool IsForTwoEars(const HrtfData& set) {
    using enum Hrtfs::FilterType;
    return set.architecture == Hrtfs::Architecture::Binaural && set.numChannels == 2 &&
           (set.filterType == BiquadCells || set.filterType == Fir);
}

unsigned Frames(float ms, float rateHz) noexcept TAV_NONBLOCKING {
    return static_cast<unsigned>(std::ceil(ms * 0.001f * rateHz));
}

}  // namespace

BinauralPanningDirect::BinauralPanningDirect(unsigned numInputs, unsigned numOutputs)
    : BinauralPanning(numInputs, numOutputs),
      set_(Pan::GetHrtf()),
      points_(numInputs, kNoPoint),
      inputs_(numInputs) {}

// ---- Control

bool BinauralPanningDirect::LoadHrtf(const std::string& path) {
    HrtfLoad load(*this);
    return load.Read(path) && load.Install();
}

bool BinauralPanningDirect::HrtfLoad::Read(const std::string& path) {
    const auto set = Hrtf::LoadShared(path);
    if (!IsForTwoEars(set->Data())) return false;
    bundle_ = panner_.PrepareBundle(set, false);
    return true;
}

bool BinauralPanningDirect::Install(HrtfLoad& load) {
    for (;;) {
        {
            const ControlGuard guard(controlLock_);
            if (load.number_ < loadInForce_) return false;
            if (IsUpToDate(*load.bundle_)) {
                Install(std::move(load.bundle_));
                loadInForce_ = load.number_;
                return true;
            }
        }
        // A setting has changed since the filters were computed.
        load.bundle_ = PrepareBundle(load.bundle_->rendering->Set(), false);
    }
}

std::shared_ptr<const Hrtf> BinauralPanningDirect::GetHrtf() const {
    const ControlGuard guard(controlLock_);
    return set_;
}

HrtfFormat BinauralPanningDirect::Format() const { return {SampleRate(), realisation_, maxTaps_}; }

bool BinauralPanningDirect::IsUpToDate(const Bundle& bundle) const {
    return bundle.rendering->Responses().Format() == Format() &&
           bundle.rendering->BlockSize() == BufferSize();
}

std::unique_ptr<BinauralPanningDirect::Bundle> BinauralPanningDirect::PrepareBundle(
    const std::shared_ptr<const Hrtf>& set, bool atOnce) const {
    HrtfFormat format;
    {
        const ControlGuard guard(controlLock_);
        format = Format();
    }
    return std::make_unique<Bundle>(MakeRendering(set, format), atOnce);
}

std::unique_ptr<HrtfRendering> BinauralPanningDirect::MakeRendering(
    const std::shared_ptr<const Hrtf>& set, const HrtfFormat& format) const {
    return std::make_unique<HrtfFiltering>(HrtfResponses::Of(set, format), NumInputs(),
                                           BufferSize());
}

void BinauralPanningDirect::Install(std::unique_ptr<Bundle> bundle) {
    set_ = bundle->rendering->Set();
    newest_ = bundle.get();
    PublishSettings();
    ApplySet();
    RecomputeAll(true);
    bundles_.Publish(std::move(bundle));
}

void BinauralPanningDirect::RefitSet(bool atOnce) {
    std::shared_ptr<const Hrtf> set;
    {
        const ControlGuard guard(controlLock_);
        if (newest_ == nullptr || IsUpToDate(*newest_)) return;
        set = set_;
    }
    auto bundle = PrepareBundle(set, atOnce);
    const ControlGuard guard(controlLock_);
    // Otherwise somebody else has made one meanwhile, for all settings that hold now.
    if (set == set_ && IsUpToDate(*bundle)) Install(std::move(bundle));
}

void BinauralPanningDirect::PublishSettings() {
    crossfadeMs_.store(Settings().fadeMs, kRelaxed);
    if (newest_ != nullptr) newest_->rendering->SetSettings(Settings());
}

void BinauralPanningDirect::ApplyReset() {
    if (newest_ != nullptr) newest_->rendering->Reset();
}

void BinauralPanningDirect::ComputeSource(unsigned index, bool immediate, bool force) {
    if (newest_ == nullptr) return;
    FreeRetired();
    const tav::CartesianVector position = RelativePosition(index);
    const HrtfPoint* const point = set_->NearestPoint(position, points_[index]);
    if (point == nullptr || (point->index == points_[index] && !force)) return;
    points_[index] = point->index;
    const EarDelays delays = Itd().Delays(position, point->delay);
    const float scale = DelayPart();
    static_cast<HrtfFiltering&>(*newest_->rendering)
        .SetSource(
            index,
            {point->index, {delays.left * scale, delays.right * scale}, IsMuted(index) ? 0.f : 1.f},
            immediate ? 0.f : glideMs_);
}

void BinauralPanningDirect::SetDelayScale(float percent) {
    const ControlGuard guard(controlLock_);
    if (!std::isfinite(percent)) return;
    delayScale_ = std::clamp(percent, 50.f, 200.f);
    RecomputeSources();
}

float BinauralPanningDirect::DelayScale() const {
    const ControlGuard guard(controlLock_);
    return delayScale_;
}

HrtfRealisation BinauralPanningDirect::Realisation() const {
    const ControlGuard guard(controlLock_);
    return realisation_;
}

unsigned BinauralPanningDirect::ResponseLength() const {
    const ControlGuard guard(controlLock_);
    return maxTaps_ > 0 ? maxTaps_ : kLongestCut;
}

void BinauralPanningDirect::SetRealisation(HrtfRealisation realisation, Refitting when) {
    {
        const ControlGuard guard(controlLock_);
        if (std::exchange(realisation_, realisation) == realisation) return;
    }
    if (when == Refitting::AtOnce) Refit();
}

void BinauralPanningDirect::SetResponseLength(unsigned taps, Refitting when) {
    {
        const ControlGuard guard(controlLock_);
        const unsigned clamped = std::clamp(taps, kShortestCut, kLongestCut);
        if (std::exchange(maxTaps_, clamped) == clamped) return;
    }
    if (when == Refitting::AtOnce) Refit();
}

void BinauralPanningDirect::Describe(std::vector<std::string>& lines) const {
    BinauralPanning::Describe(lines);
    const std::vector<std::string> set = set_->InfoLines();
    lines.insert(lines.end(), set.begin(), set.end());
}

// ---- Audio

void BinauralPanningDirect::Perform(float* const* outputs,
                                    const float* const* inputs,
                                    unsigned frames) noexcept TAV_NONBLOCKING {
    TakeBundle();
    if (bundles_.Live() == nullptr && bundles_.Incoming() == nullptr) return;
    for (unsigned i = 0; i < NumInputs(); ++i) inputs_[i] = InputActive(i) ? inputs[i] : nullptr;
    for (unsigned done = 0; done < frames;) {
        unsigned count = frames - done;
        for (const Bundle* bundle : {bundles_.Live(), bundles_.Incoming()}) {
            if (bundle != nullptr) count = std::min(count, bundle->rendering->BlockSize());
        }
        EarPointers ears;
        for (unsigned e = 0; e < 2; ++e) {
            ears[e] = OutputConnected(e) ? outputs[e] + done : nullptr;
        }
        PerformPiece(ears, count);
        for (const float*& input : inputs_) input = input != nullptr ? input + count : nullptr;
        done += count;
    }
}

void BinauralPanningDirect::TakeBundle() noexcept TAV_NONBLOCKING {
    const bool isFirst = !std::exchange(hasPlayed_, true);
    if (!bundles_.TakeNext()) return;
    const Bundle& incoming = *bundles_.Incoming();
    const HrtfResponses& responses = incoming.rendering->Responses();
    const float rate = responses.Format().rateHz;
    // What was made for another rate or block size cannot fade; audio stood still since then.
    const Bundle* const live = bundles_.Live();
    const bool fits =
        live == nullptr || (live->rendering->BlockSize() == incoming.rendering->BlockSize() &&
                            live->rendering->Responses().Format().rateHz == rate);
    if (incoming.atOnce || isFirst || !fits) return bundles_.Finish();
    const auto longest = static_cast<unsigned>(responses.AreCells() ? 0 : responses.MaxTaps());
    changeFrames_ = 0;
    changeStart_ = std::max(Frames(kWarmUpMs, rate), longest);
    changeLength_ = Frames(std::max(crossfadeMs_.load(kRelaxed), kShortestChangeMs), rate);
}

/// What a bundle says by itself; null: nothing at all.
const std::vector<float>* BinauralPanningDirect::Render(Bundle* bundle,
                                                        unsigned frames) noexcept TAV_NONBLOCKING {
    if (bundle == nullptr) return nullptr;
    for (auto& ear : bundle->ears) std::fill_n(ear.begin(), frames, 0.f);
    bundle->rendering->Perform(bundle->ears[0].data(), bundle->ears[1].data(), inputs_.data(),
                               frames);
    return bundle->ears.data();
}

void BinauralPanningDirect::PerformPiece(const EarPointers& outputs,
                                         unsigned frames) noexcept TAV_NONBLOCKING {
    const bool changing = bundles_.Incoming() != nullptr;
    const std::vector<float>* const going = Render(bundles_.Live(), frames);
    const std::vector<float>* const coming = Render(bundles_.Incoming(), frames);
    for (unsigned k = 0; k < frames; ++k) {
        float in = 0.f;
        if (changing && changeFrames_ + k >= changeStart_) {
            const unsigned heard = changeFrames_ + k - changeStart_ + 1;
            const double part = std::min(static_cast<double>(heard) / changeLength_, 1.0);
            in = static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * part));
        }
        for (std::size_t e = 0; e < 2; ++e) {
            if (outputs[e] == nullptr) continue;
            if (going != nullptr) outputs[e][k] += (1.f - in) * going[e][k];
            if (coming != nullptr) outputs[e][k] += in * coming[e][k];
        }
    }
    changeFrames_ += frames;
    if (changing && changeFrames_ >= changeStart_ + changeLength_) bundles_.Finish();
}

}  // namespace Quilo
