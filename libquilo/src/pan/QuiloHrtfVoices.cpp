// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfVoices.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

constexpr std::size_t kGuard = 4;     // samples that kernels read beyond
constexpr std::size_t kSlack = 1024;  // samples until a window is moved

/// A delay as a place between two samples: `whole` samples back, then `fraction` forward.
struct Place {
    std::ptrdiff_t whole;
    float fraction;
};

Place PlaceOf(float delay) noexcept TAV_NONBLOCKING {
    const float whole = std::ceil(delay);
    return {static_cast<std::ptrdiff_t>(whole), whole - delay};
}

/// Four-point kernels need a sample after the next one: with less than a sample of delay there is
/// none yet. Without any delay every kind copies.
tav::DelayKind KindFor(tav::DelayKind kind, float delay) noexcept TAV_NONBLOCKING {
    const bool fourPoints = kind != tav::DelayKind::Nearest && kind != tav::DelayKind::Allpass;
    return delay < 1.f && fourPoints ? tav::DelayKind::Linear : kind;
}

/// Calls `action` with a kernel that remembers nothing.
template <class Action>
auto WithKernel(tav::DelayKind kind, Action action) noexcept TAV_NONBLOCKING {
    switch (kind) {
        case tav::DelayKind::Linear: return action(tav::kLinearKernel);
        case tav::DelayKind::Lagrange: return action(tav::kLagrangeKernel);
        case tav::DelayKind::Hermite: return action(tav::kHermiteKernel);
        case tav::DelayKind::Quadratic: return action(tav::kQuadraticKernel);
        case tav::DelayKind::BSpline: return action(tav::kBSplineKernel);
        case tav::DelayKind::Cardinal: return action(tav::kCardinalKernel);
        default: return action(tav::kNearestKernel);
    }
}

}  // namespace

HrtfVoices::HrtfVoices(unsigned numVoices, float rateHz, std::size_t longestPiece, std::size_t past)
    : samplesPerMs_(rateHz * 0.001f),
      longestDelay_(std::ceil(kLongestDelayMs * samplesPerMs_)),
      kept_(static_cast<std::size_t>(longestDelay_) + past + kGuard),
      length_(kept_ + longestPiece + kSlack + kGuard),
      samples_(numVoices * length_),
      voices_(numVoices),
      glide_(longestPiece) {}

void HrtfVoices::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    voice = Voice();
    // Windows of different sources are moved at different times.
    voice.end = kept_ + std::size_t{index} * 64 % kSlack;
    std::fill_n(samples_.data() + index * length_, length_, 0.f);
}

void HrtfVoices::SetGain(unsigned voice,
                         float gain,
                         std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    if (gain != voices_[voice].gain.Target()) {
        voices_[voice].gain.SetOverSamples(gain, glideSamples);
    }
}

void HrtfVoices::SetDelay(unsigned voice,
                          std::size_t path,
                          float ms,
                          std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    const float samples = std::clamp(ms * samplesPerMs_, 0.f, longestDelay_);
    tav::Ramp& delay = voices_[voice].delays[path];
    if (samples != delay.Target() || glideSamples == 0) delay.SetOverSamples(samples, glideSamples);
}

bool HrtfVoices::IsSilenced(unsigned voice) const noexcept TAV_NONBLOCKING {
    return voices_[voice].silence > kept_;
}

void HrtfVoices::Take(unsigned index, std::span<const float> input) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    float* const window = samples_.data() + index * length_;
    if (voice.end + input.size() + kGuard > length_) {
        std::copy_n(window + voice.end - kept_, kept_, window);
        voice.end = kept_;
    }
    voice.piece = voice.end;
    voice.end += input.size();
    float* const piece = window + voice.piece;
    if (voice.gain.IsConstant()) {
        const float gain = voice.gain.Target();
        if (gain == 1.f) {
            std::ranges::copy(input, piece);
        } else {
            std::ranges::transform(input, piece, [gain](float x) { return gain * x; });
        }
        voice.silence = gain == 0.f ? voice.silence + input.size() : 0;
        return;
    }
    const auto gains = std::span(glide_).first(input.size());
    voice.gain.Fill(gains);
    for (std::size_t k = 0; k < input.size(); ++k) piece[k] = gains[k] * input[k];
    voice.silence = 0;
}

void HrtfVoices::Delayed(unsigned index,
                         std::size_t path,
                         std::span<float> output) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    const float* piece = Piece(index);
    tav::Ramp& delay = voice.delays[path];
    const float before = delay.Value();
    const bool isShort = std::min(before, delay.Target()) < 1.f;
    if (kind_ == tav::DelayKind::Allpass ||
        (!delay.IsConstant() && (kind_ != tav::DelayKind::Lagrange || isShort))) {
        return ReadOneByOne(voice, path, piece, output);
    }
    if (!delay.IsConstant()) {
        const auto count = std::min<std::size_t>(output.size(), delay.SamplesLeft());
        delay.Skip(static_cast<std::uint32_t>(count));
        const float step = (delay.Value() - before) / static_cast<float>(count);
        ReadGliding(before + step, step, piece, output.first(count));
        output = output.subspan(count);
        piece += count;
    }
    ReadFixed(kind_, delay.Target(), piece, output);
}

void HrtfVoices::PastOf(unsigned index,
                        std::size_t path,
                        std::size_t before,
                        std::span<float> output) const noexcept TAV_NONBLOCKING {
    const float delay = voices_[index].delays[path].Value();
    const auto kind = kind_ == tav::DelayKind::Allpass ? tav::DelayKind::Lagrange : kind_;
    ReadFixed(kind, delay, Piece(index) - before, output);
}

void HrtfVoices::ReadFixed(tav::DelayKind kind,
                           float delay,
                           const float* piece,
                           std::span<float> output) const noexcept TAV_NONBLOCKING {
    const Place place = PlaceOf(delay);
    const float* const x = piece - place.whole;
    if (place.fraction == 0.f && kind != tav::DelayKind::BSpline) {
        std::copy_n(x, output.size(), output.begin());
        return;
    }
    // All kernels are sums of four samples; what each weighs is what comes of it alone.
    std::array<float, 4> taps{};  // of x[2], x[1], x[0], x[-1]
    WithKernel(KindFor(kind, delay), [&](const auto& kernel) {
        for (std::size_t i = 0; i < taps.size(); ++i) {
            std::array<float, 4> alone{};
            alone[3 - i] = 1.f;
            taps[i] = kernel(alone.data() + 1, place.fraction);
        }
    });
    fir_.fir(output.data(), x + 2, taps.data(), static_cast<int>(taps.size()),
             static_cast<int>(output.size()));
}

void HrtfVoices::ReadGliding(float first,
                             float step,
                             const float* piece,
                             std::span<float> output) const noexcept TAV_NONBLOCKING {
    // In stretches that lie between the same two samples, seen from their first one.
    for (std::size_t begin = 0; begin < output.size();) {
        const float delay = first + static_cast<float>(begin) * step;
        const Place place = PlaceOf(delay);
        const float room = step > 0.f ? place.fraction : 1.f - place.fraction;
        const auto rest = static_cast<float>(output.size() - begin);
        const float within = room < std::abs(step) * rest ? room / std::abs(step) : rest;
        const auto count =
            std::clamp<std::size_t>(static_cast<std::size_t>(within), 1, output.size() - begin);
        const float* const x = piece + static_cast<std::ptrdiff_t>(begin) - place.whole;
        kernels_.glide(output.data() + begin, x, place.fraction, -step, static_cast<int>(count));
        begin += count;
    }
}

void HrtfVoices::ReadOneByOne(Voice& voice,
                              std::size_t path,
                              const float* piece,
                              std::span<float> output) noexcept TAV_NONBLOCKING {
    const auto delays = std::span(glide_).first(output.size());
    voice.delays[path].Fill(delays);
    for (std::size_t k = 0; k < output.size(); ++k) {
        const Place place = PlaceOf(delays[k]);
        const float* const x = piece + k - place.whole;
        if (kind_ == tav::DelayKind::Allpass) {
            tav::AllpassKernel kernel{voice.allpass[path]};
            output[k] = kernel(x, place.fraction);
            voice.allpass[path] = std::abs(kernel.previous) < 1e12f ? kernel.previous : 0.f;
            continue;
        }
        output[k] = WithKernel(KindFor(kind_, delays[k]),
                               [&](const auto& kernel) { return kernel(x, place.fraction); });
    }
}

}  // namespace Quilo
