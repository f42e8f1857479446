// SPDX-License-Identifier: MIT
#include "processors/VelkDspDelay.h"

#include "containers/VelkDspRelaxed.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace tav {

namespace {
constexpr float kLongestDelayMs = 10000.f;
constexpr auto kLastDelayKind = static_cast<std::uint32_t>(DelayKind::Cardinal);
constexpr std::uint32_t kUnusedDelayKind = 4;  // the unused code between the all-pass and Hermite
}  // namespace

Delay::Delay() : AudioProcessorWithAutoMute(1, 1) { GrowRing(0.f); }

void Delay::Process(float* const* outputs,
                    const float* const* inputs,
                    unsigned frames) noexcept TAV_NONBLOCKING {
    if (!OutputConnected(0)) return Rest(frames);
    if (InputActive(0)) return Perform(outputs[0], inputs[0], frames);
    ZeroOutputs(outputs, frames);
    Rest(frames);
}

std::string Delay::Name() const { return "delay"; }

void Delay::SetSampleRate(float hz) {
    const float before = SampleRate();
    AudioProcessorWithAutoMute::SetSampleRate(hz);
    if (SampleRate() == before) return;
    GrowRing(maximumMs_);
    RequestDelay(true);
    Clear();
}

void Delay::Reset() {
    AudioProcessorWithAutoMute::Reset();
    Clear();
}

void Delay::SetMaximumDelay(float ms) {
    if (!std::isfinite(ms)) return;
    const float clamped = std::clamp(ms, 0.f, kLongestDelayMs);
    GrowRing(clamped);
    maximumMs_ = clamped;
}

void Delay::GrowRing(float maximumMs) {
    const std::size_t length = DelayRing::LengthFor(maximumMs, SampleRate());
    if (length <= ringLength_) return;
    rings_.Publish(std::make_unique<DelayRing>(length));
    ringLength_ = length;
}

void Delay::SetDelay(float ms, bool immediate) {
    if (!std::isfinite(ms)) return;
    const float clamped = std::clamp(ms, 0.f, kLongestDelayMs);
    if (clamped == delayMs_ && !immediate) return;
    if (clamped > maximumMs_) SetMaximumDelay(clamped);
    delayMs_ = clamped;
    RequestDelay(immediate);
}

void Delay::RequestDelay(bool immediate) noexcept {
    const double samples =
        static_cast<double>(delayMs_) * 0.001 * static_cast<double>(SampleRate());
    const std::uint32_t glideSamples = Ramp::GlideLength(interpolationMs_, SampleRate());
    newest_.glideTo = static_cast<float>(samples);
    if (immediate || glideSamples == 0) {
        newest_.jumpTo = newest_.glideTo;
        ++newest_.jumpCount;
    } else {
        newest_.glideSamples = glideSamples;
        ++newest_.glideCount;
    }
    requests_.Store(newest_);
}

void Delay::SetInterpolationTime(float ms) {
    if (std::isfinite(ms)) interpolationMs_ = std::max(ms, 0.f);
}

void Delay::SetInterpolationKind(std::uint32_t code) {
    const bool known = code <= kLastDelayKind && code != kUnusedDelayKind;
    kind_.store(known ? code : static_cast<std::uint32_t>(DelayKind::Nearest), kRelaxed);
}

void Delay::SetInterpolationKind(DelayKind kind) {
    SetInterpolationKind(static_cast<std::uint32_t>(kind));
}

void Delay::Clear() { clear_.store(true, kRelaxed); }

void Delay::TakeChanges() noexcept TAV_NONBLOCKING {
    rings_.TakeNext([](DelayRing& newest, const DelayRing* replaced) {
        if (replaced != nullptr) newest.CopyFrom(*replaced);
    });
    if (clear_.load(kRelaxed)) {
        clear_.store(false, kRelaxed);
        rings_.Live()->Clear();
    }
    const Request done = request_;
    requests_.Take(request_);
    // The longer ring that a delay needs may arrive one block after it.
    const float longest = rings_.Live()->LongestDelay();
    if (request_.jumpCount != done.jumpCount) {
        delay_.SetOverSamples(std::min(request_.jumpTo, longest), 0);
    }
    const float target = std::min(request_.glideTo, longest);
    if (request_.glideCount != done.glideCount || target != delay_.Target()) {
        delay_.SetOverSamples(target, request_.glideSamples);
    }
}

void Delay::Perform(float* output, const float* input, unsigned frames) noexcept TAV_NONBLOCKING {
    TakeChanges();
    DelayRing& ring = *rings_.Live();
    if (resting_) ring.Clear();
    resting_ = false;
    const auto kind = static_cast<DelayKind>(kind_.load(kRelaxed));
    while (frames > 0) {
        const auto count = std::min<unsigned>(frames, DelayRing::kLargestBlock);
        ring.Write({input, count});
        if (delay_.IsConstant()) {
            ring.Read(kind, delay_.Target(), {output, count});
        } else {
            const std::span<float> delays(delays_.Data(), count);
            delay_.Fill(delays);
            ring.Read(kind, delays, {output, count});
        }
        output += count;
        input += count;
        frames -= count;
    }
}

void Delay::Rest(unsigned frames) noexcept TAV_NONBLOCKING {
    TakeChanges();
    delay_.Skip(frames);
    resting_ = true;
}

}  // namespace tav
