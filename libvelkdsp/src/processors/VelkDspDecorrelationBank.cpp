// SPDX-License-Identifier: MIT
#include "processors/VelkDspDecorrelationBank.h"

#include "kernels/VelkDspFilterKernels.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace tav {

namespace {

constexpr float kDefaultGlideMs = 30.f;
constexpr float kLoudest = 1e12f;  // sums of magnitudes above this are not valid audio
constexpr float kQuiet = 1e-12f;   // sums of magnitudes below this are silence
constexpr float kRingOutSeconds = 0.5f;

/// Fractional part of 0.5 + (output + 1) / p^(section + 1): the generalised golden ratio spreads
/// points evenly over four dimensions.
double StratumPosition(unsigned output, unsigned section) noexcept {
    constexpr double kRatio = 1.1673039782614187;  // root of p^5 = p + 1
    const double position = 0.5 + (output + 1.0) * std::pow(kRatio, -(section + 1.0));
    return position - std::floor(position);
}

bool IsNegative(unsigned output, unsigned section) noexcept {
    std::uint32_t hash = 2654435761u * (4 * output + section + 1);
    hash ^= hash >> 16;
    hash *= 0x45d9f3bu;
    hash ^= hash >> 16;
    return (hash & 1u) == 0;
}

float SumOfMagnitudes(const float* samples, unsigned count) noexcept TAV_NONBLOCKING {
    float sum = 0.f;
    for (unsigned k = 0; k < count; ++k) sum += std::fabs(samples[k]);
    return sum;
}

}  // namespace

std::array<AllPassSection, kAllPassSections> DecorrelationChain(unsigned output,
                                                                float sampleRateHz) noexcept {
    std::array<AllPassSection, kAllPassSections> chain;
    for (unsigned s = 0; s < kAllPassSections; ++s) {
        const double seconds =
            0.002 * std::pow(10.0, (s + StratumPosition(output, s)) / kAllPassSections);
        const double samples = std::round(static_cast<double>(sampleRateHz) * seconds);
        chain[s].delay = static_cast<std::uint32_t>(std::max(samples, 1.0));
        chain[s].gain = IsNegative(output, s) ? -0.5f : 0.5f;
    }
    return chain;
}

/// The delay memory of all outputs at one sample rate.
struct DecorrelationBank::Chains {
    struct Ring {
        float* samples;  // the last `delay` values of w, oldest at `position`
        AllPassSection section;
        std::uint32_t position;
    };

    Chains(unsigned numOutputs, float sampleRateHz)
        : silentAfter(static_cast<std::uint64_t>(sampleRateHz * kRingOutSeconds)),
          isEmpty(numOutputs, true) {
        if (numOutputs < 2) return;  // a single output is not filtered
        std::size_t total = 0;
        for (unsigned o = 0; o < numOutputs; ++o) {
            for (const AllPassSection& section : DecorrelationChain(o, sampleRateHz)) {
                rings.push_back({nullptr, section, 0});
                total += section.delay;
            }
        }
        memory.resize(total);
        float* next = memory.data();
        for (Ring& ring : rings) {
            ring.samples = next;
            next += ring.section.delay;
        }
    }

    /// Filters the signal in place with the chain of an output.
    void Run(unsigned output, float* signal, unsigned frames) noexcept TAV_NONBLOCKING {
        if (rings.empty()) return;
        isEmpty[output] = false;
        for (unsigned s = 0; s < kAllPassSections; ++s) {
            Ring& ring = rings[output * kAllPassSections + s];
            for (unsigned done = 0; done < frames;) {
                const unsigned run = std::min(frames - done, ring.section.delay - ring.position);
                kernels.allPass(signal + done, ring.samples + ring.position, ring.section.gain,
                                static_cast<int>(run));
                done += run;
                ring.position += run;
                if (ring.position == ring.section.delay) ring.position = 0;
            }
        }
    }

    void Empty(unsigned output) noexcept TAV_NONBLOCKING {
        if (isEmpty[output]) return;
        isEmpty[output] = true;
        for (unsigned s = 0; s < kAllPassSections; ++s) {
            Ring& ring = rings[output * kAllPassSections + s];
            std::fill_n(ring.samples, ring.section.delay, 0.f);
        }
    }

    const FilterKernels& kernels = BestKernels<FilterKernels>();
    std::uint64_t silentAfter;  // samples
    std::vector<float> memory;
    std::vector<Ring> rings;  // kAllPassSections per output; none where there is one output
    std::vector<char> isEmpty;
};

DecorrelationBank::DecorrelationBank(std::span<const float> weights)
    : AudioProcessorWithAutoMute(1, static_cast<unsigned>(weights.size())),
      targets_(1, weights.size()),
      glideMs_(kDefaultGlideMs),
      row_(weights.size()),
      weights_(weights.begin(), weights.end()) {
    chains_.Publish(std::make_unique<Chains>(NumOutputs(), SampleRate()));
}

DecorrelationBank::~DecorrelationBank() = default;

std::string DecorrelationBank::Name() const { return "decorrelation bank"; }

void DecorrelationBank::SetSampleRate(float hz) {
    AudioProcessorWithAutoMute::SetSampleRate(hz);
    Reset();
}

void DecorrelationBank::Reset() {
    AudioProcessorWithAutoMute::Reset();
    chains_.Publish(std::make_unique<Chains>(NumOutputs(), SampleRate()));
}

void DecorrelationBank::SetWeights(std::span<const float> weights) noexcept {
    if (weights.size() == NumOutputs()) targets_.Write(0, weights);
}

void DecorrelationBank::SetInterpolationTime(float ms) noexcept {
    if (std::isfinite(ms) && ms >= 0.f) glideMs_.store(ms, std::memory_order_relaxed);
}

void DecorrelationBank::Process(float* const* outputs,
                                const float* const* inputs,
                                unsigned frames) noexcept TAV_NONBLOCKING {
    ZeroOutputs(outputs, frames);
    Perform(outputs, inputs, frames);
}

void DecorrelationBank::Perform(float* const* outputs,
                                const float* const* inputs,
                                unsigned frames) noexcept TAV_NONBLOCKING {
    chains_.TakeNext();
    TakeWeights();
    for (unsigned offset = 0; offset < frames; offset += kMaxFrames) {
        const unsigned piece = std::min(frames - offset, kMaxFrames);
        PerformPiece(outputs, offset, inputs[0] + offset, piece);
    }
}

void DecorrelationBank::TakeWeights() noexcept TAV_NONBLOCKING {
    if (targets_.Read(0, seenTargets_, row_) != GainRows::Look::Taken) return;
    const float ms = glideMs_.load(std::memory_order_relaxed);
    const std::uint32_t samples = Ramp::GlideLength(ms, SampleRate());
    for (std::size_t o = 0; o < row_.size(); ++o) weights_[o].SetOverSamples(row_[o], samples);
}

void DecorrelationBank::PerformPiece(float* const* outputs,
                                     unsigned offset,
                                     const float* input,
                                     unsigned frames) noexcept TAV_NONBLOCKING {
    Chains& chains = *chains_.Live();
    const float loudness = SumOfMagnitudes(input, frames);
    const bool isSound = loudness <= kLoudest;  // false for NaN
    const bool isQuiet = loudness < kQuiet;
    if (!isQuiet) quietSamples_ = 0;
    const bool rest = quietSamples_ >= chains.silentAfter;
    bool isAllQuiet = isQuiet;
    for (unsigned o = 0; o < NumOutputs(); ++o) {
        if (rest || !OutputConnected(o)) {
            chains.Empty(o);
            weights_[o].Skip(frames);
            continue;
        }
        if (isSound) {
            std::copy_n(input, frames, work_.data());
        } else {
            std::fill_n(work_.data(), frames, 0.f);
        }
        chains.Run(o, work_.data(), frames);
        if (isAllQuiet) isAllQuiet = SumOfMagnitudes(work_.data(), frames) < kQuiet;
        AddWeighted(o, outputs[o] + offset, frames);
    }
    quietSamples_ = isAllQuiet ? std::min(quietSamples_ + frames, chains.silentAfter) : 0;
}

void DecorrelationBank::AddWeighted(unsigned output,
                                    float* to,
                                    unsigned frames) noexcept TAV_NONBLOCKING {
    Ramp& weight = weights_[output];
    if (weight.IsConstant()) {
        const float gain = weight.Target();
        if (gain == 0.f) return;
        for (unsigned k = 0; k < frames; ++k) to[k] += gain * work_[k];
        return;
    }
    weight.Fill(std::span(gains_).first(frames));
    for (unsigned k = 0; k < frames; ++k) to[k] += gains_[k] * work_[k];
}

}  // namespace tav
