// SPDX-License-Identifier: MIT
#include "processors/VelkDspDelayRing.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace tav {

namespace {

/// A delay as a read position: `whole` samples before the present one, plus `fraction`.
struct Distance {
    std::size_t whole;
    float fraction;
};

Distance Split(float delay) noexcept TAV_NONBLOCKING {
    const auto below = static_cast<std::int32_t>(delay);  // faster than std::ceil
    const float past = delay - static_cast<float>(below);
    const float fraction = 1.f - past;
    // If the fraction rounds to 1, the delay is a whole number of samples.
    return fraction < 1.f ? Distance{static_cast<std::size_t>(below) + 1, fraction}
                          : Distance{static_cast<std::size_t>(below), 0.f};
}

/// The kind to use for a delay: below one sample, the four-point kernels would read samples that
/// are not written yet.
DelayKind KindFor(DelayKind kind, float delay) noexcept TAV_NONBLOCKING {
    if (kind == DelayKind::Allpass || delay >= 1.f) return kind;
    if (kind == DelayKind::Nearest || delay == 0.f) return DelayKind::Nearest;
    return DelayKind::Linear;
}

}  // namespace

std::size_t DelayRing::LengthFor(float maximumMs, float sampleRateHz) noexcept {
    const double samples =
        (static_cast<double>(maximumMs) + 50.0) * 0.001 * static_cast<double>(sampleRateHz);
    return std::bit_ceil(static_cast<std::size_t>(samples) + kHeadroom);
}

DelayRing::DelayRing(std::size_t length) : storage_(length + 2 * kGuard), mask_(length - 1) {}

void DelayRing::CopyFrom(const DelayRing& older) noexcept TAV_NONBLOCKING {
    const std::span<const float> samples(older.Samples(), older.mask_ + 1);
    Append(samples.subspan(older.writePosition_));  // the older part
    Append(samples.first(older.writePosition_));
    lastAllpass_ = older.lastAllpass_;
}

void DelayRing::Clear() noexcept TAV_NONBLOCKING {
    std::ranges::fill(storage_, 0.f);
    lastAllpass_ = 0.f;
}

void DelayRing::Write(std::span<const float> block) noexcept TAV_NONBLOCKING {
    blockPosition_ = writePosition_;
    Append(block);
    RefreshGuards();
}

void DelayRing::Append(std::span<const float> samples) noexcept TAV_NONBLOCKING {
    const std::size_t beforeWrap = std::min(samples.size(), mask_ + 1 - writePosition_);
    std::ranges::copy(samples.first(beforeWrap), Samples() + writePosition_);
    std::ranges::copy(samples.subspan(beforeWrap), Samples());
    writePosition_ = (writePosition_ + samples.size()) & mask_;
}

void DelayRing::RefreshGuards() noexcept TAV_NONBLOCKING {
    float* const first = Samples();
    float* const end = first + mask_ + 1;
    std::copy_n(end - kGuard, kGuard, first - kGuard);
    std::copy_n(first, kGuard, end);
}

/// Calls `action` with the kernel of a kind.
template <class Action>
void DelayRing::WithKernel(DelayKind kind, Action action) noexcept TAV_NONBLOCKING {
    switch (kind) {
        case DelayKind::Linear: return action(kLinearKernel);
        case DelayKind::Lagrange: return action(kLagrangeKernel);
        case DelayKind::Hermite: return action(kHermiteKernel);
        case DelayKind::Quadratic: return action(kQuadraticKernel);
        case DelayKind::BSpline: return action(kBSplineKernel);
        case DelayKind::Cardinal: return action(kCardinalKernel);
        case DelayKind::Allpass: {
            AllpassKernel kernel{lastAllpass_};
            action(kernel);
            lastAllpass_ = kernel.previous;
            return;
        }
        default: return action(kNearestKernel);
    }
}

void DelayRing::Read(DelayKind kind,
                     float delay,
                     std::span<float> output) noexcept TAV_NONBLOCKING {
    const Distance distance = Split(delay);
    WithKernel(KindFor(kind, delay), [&](auto& kernel) {
        std::size_t index = (blockPosition_ - distance.whole) & mask_;
        for (std::span<float> rest = output; !rest.empty(); index = 0) {
            const std::size_t run = std::min(rest.size(), mask_ + 1 - index);
            const float* const x = Samples() + index;
            for (std::size_t k = 0; k < run; ++k) rest[k] = kernel(x + k, distance.fraction);
            rest = rest.subspan(run);
        }
    });
    if (kind == DelayKind::Allpass) RecoverAllpass(output);
}

void DelayRing::Read(DelayKind kind,
                     std::span<const float> delays,
                     std::span<float> output) noexcept TAV_NONBLOCKING {
    // A glide crosses a delay of one sample at most once, so there are few runs of the same kind.
    for (std::size_t begin = 0; begin < output.size();) {
        const DelayKind kindHere = KindFor(kind, delays[begin]);
        std::size_t end = begin + 1;
        while (end < output.size() && KindFor(kind, delays[end]) == kindHere) ++end;
        WithKernel(kindHere, [&](auto& kernel) {
            for (std::size_t k = begin; k < end; ++k) {
                const Distance distance = Split(delays[k]);
                const std::size_t index = (blockPosition_ + k - distance.whole) & mask_;
                output[k] = kernel(Samples() + index, distance.fraction);
            }
        });
        begin = end;
    }
    if (kind == DelayKind::Allpass) RecoverAllpass(output);
}

/// Clears ring and output if the state of the all-pass, the only kernel with one, is not finite or
/// above 1e12.
void DelayRing::RecoverAllpass(std::span<float> output) noexcept TAV_NONBLOCKING {
    constexpr float kImpossible = 1e12f;
    if (std::abs(lastAllpass_) <= kImpossible) return;
    Clear();
    std::ranges::fill(output, 0.f);
}

}  // namespace tav
