// SPDX-License-Identifier: MIT
#include "pan/QuiloNearfieldStage.h"

#include "filterdesign/VelkDspSectionDesign.h"
#include "processors/VelkDspRamp.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Quilo {

namespace {

constexpr std::uint32_t kStepSamples = 16;
constexpr double kLargestState = 1e12;

NearfieldEar Between(const NearfieldEar& a,
                     const NearfieldEar& b,
                     float part) noexcept TAV_NONBLOCKING {
    const auto corner = [part](float from, float to) {
        return from == to ? to : from * std::pow(to / from, part);
    };
    return {std::lerp(a.gain, b.gain, part), std::lerp(a.shelf, b.shelf, part),
            corner(a.shelfHz, b.shelfHz), std::lerp(a.parallax, b.parallax, part),
            corner(a.parallaxHz, b.parallaxHz)};
}

/// A first-order section in integrator form: the low-pass plus `ratio` times the high-pass.
double Tick(double x, double step, double ratio, double& state) noexcept TAV_NONBLOCKING {
    const double v = (x - state) * step;
    const double low = v + state;
    state = low + v;
    return low + ratio * (x - low);
}

}  // namespace

NearfieldStage::NearfieldStage(unsigned numSources, float rateHz)
    : rateHz_(static_cast<double>(rateHz)),
      sources_(numSources) {
    for (Source& source : sources_) Place(source);
}

void NearfieldStage::SetSource(unsigned index, const NearfieldEars& ears, float glideMs) noexcept {
    sources_[index].shared.Store({ears, glideMs});
}

void NearfieldStage::TakeTarget(Source& source) noexcept TAV_NONBLOCKING {
    const NearfieldEars before = source.taken.ears;
    if (!source.shared.Take(source.taken)) return;
    // The target that is in force already does not start its glide again.
    if (source.taken.glideMs > 0.f && source.taken.ears == before) return;
    source.from = source.present;
    source.position = 0;
    source.length = tav::Ramp::GlideLength(source.taken.glideMs, static_cast<float>(rateHz_));
    Place(source);
}

void NearfieldStage::Place(Source& source) const noexcept TAV_NONBLOCKING {
    const bool isThere = source.position >= source.length;
    const float part =
        isThere ? 1.f : static_cast<float>(source.position) / static_cast<float>(source.length);
    const auto stepOf = [this](float hz) {
        const double g = tav::IntegratorGain(static_cast<double>(hz), rateHz_);
        return g / (1.0 + g);
    };
    for (std::size_t e = 0; e < 2; ++e) {
        const NearfieldEar& to = source.taken.ears[e];
        NearfieldEar& ear = source.present[e];
        Coefficients& at = source.at[e];
        ear = isThere ? to : Between(source.from[e], to, part);
        at.gain = static_cast<double>(ear.gain);
        at.shelf = static_cast<double>(ear.shelf);
        at.parallax = static_cast<double>(ear.parallax);
        // Where a block ends within a step the corners stay until the step is over.
        if (!isThere && source.position % kStepSamples != 0) continue;
        at.shelfStep = stepOf(ear.shelfHz);
        at.parallaxStep = stepOf(ear.parallaxHz);
    }
}

void NearfieldStage::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    Source& source = sources_[index];
    source.shared.Take(source.taken);
    source.position = source.length = 0;
    source.states = {};
    Place(source);
}

void NearfieldStage::Perform(unsigned index,
                             std::span<const float> input,
                             std::span<float> left,
                             std::span<float> right) noexcept TAV_NONBLOCKING {
    Source& source = sources_[index];
    TakeTarget(source);
    const std::array<float*, 2> outputs{left.data(), right.data()};
    for (std::size_t done = 0; done < input.size();) {
        auto count = input.size() - done;
        std::array<Coefficients, 2> at = source.at, by{};  // by: what is added at each sample
        if (source.position < source.length) {
            const std::uint32_t rest = source.length - source.position;
            const std::uint32_t toStep = kStepSamples - source.position % kStepSamples;
            count = std::min<std::size_t>(count, std::min(rest, toStep));
            source.position += static_cast<std::uint32_t>(count);
            Place(source);
            const double share = 1.0 / static_cast<double>(count);
            for (std::size_t e = 0; e < 2; ++e) {
                by[e].gain = (source.at[e].gain - at[e].gain) * share;
                by[e].shelf = (source.at[e].shelf - at[e].shelf) * share;
                by[e].parallax = (source.at[e].parallax - at[e].parallax) * share;
            }
        }
        auto states = source.states;
        for (std::size_t k = done; k < done + count; ++k) {
            const auto x = static_cast<double>(input[k]);
            for (std::size_t e = 0; e < 2; ++e) {
                at[e].gain += by[e].gain;
                at[e].shelf += by[e].shelf;
                at[e].parallax += by[e].parallax;
                const double shelved = Tick(x, at[e].shelfStep, at[e].shelf, states[e][0]);
                const double y = Tick(shelved, at[e].parallaxStep, at[e].parallax, states[e][1]);
                outputs[e][k] = static_cast<float>(at[e].gain * y);
            }
        }
        source.states = states;
        done += count;
    }
    double sum = 0.0;
    for (const auto& ear : source.states) sum += std::abs(ear[0]) + std::abs(ear[1]);
    if (sum <= kLargestState) return;
    source.states = {};
    std::ranges::fill(left, 0.f);
    std::ranges::fill(right, 0.f);
}

}  // namespace Quilo
