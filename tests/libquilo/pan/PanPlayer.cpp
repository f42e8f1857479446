// SPDX-License-Identifier: MIT
#include "libquilo/pan/PanPlayer.h"

#include "pan/QuiloBinauralPanningDirect.h"
#include "pan/QuiloPanDefaults.h"
#include "reference/PlainFourier.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Tests {

PanPlayer::PanPlayer(Quilo::Pan& pan, float rateHz, unsigned blockSize)
    : pan_(pan),
      rateHz_(rateHz),
      blockSize_(blockSize) {
    pan_.SetSampleRate(rateHz);
    pan_.SetBufferSize(blockSize);
}

PanPlayer::Audio PanPlayer::Play(std::size_t frames, const Signal& signal) {
    frames = (frames + blockSize_ - 1) / blockSize_ * blockSize_;
    Audio inputs(pan_.NumInputs(), std::vector<double>(frames));
    for (unsigned i = 0; i < inputs.size(); ++i) {
        for (std::size_t k = 0; k < frames; ++k) inputs[i][k] = signal(i, k);
    }
    return PlayBlocks(
        inputs, pan_.NumOutputs(), frames, blockSize_,
        [this](auto outputs, auto ins, unsigned count) { pan_.Process(outputs, ins, count); });
}

std::vector<double> PanPlayer::SteadyGains(unsigned source) {
    // Two segments of the longest interpolation time, and what a delay line may hold.
    const auto frames = static_cast<std::size_t>(rateHz_ * 0.41f) + 64;
    const Audio audio =
        Play(frames, [source](unsigned input, std::size_t) { return input == source ? 1.0 : 0.0; });
    std::vector<double> gains;
    for (const auto& output : audio) gains.push_back(output.back());
    return gains;
}

PanPlayer::Signal Sine(double hz, double rateHz) {
    return [step = 2.0 * std::numbers::pi * hz / rateHz](unsigned, std::size_t frame) {
        return std::sin(step * static_cast<double>(frame));
    };
}

PanPlayer::Signal Cosine(double hz, double rateHz) {
    return [step = 2.0 * std::numbers::pi * hz / rateHz](unsigned, std::size_t frame) {
        return std::cos(step * static_cast<double>(frame));
    };
}

double LoudestAbove(double hz, const std::vector<double>& signal, double rateHz, std::size_t size) {
    std::vector<double> windowed(size);
    for (std::size_t k = 0; k < size; ++k) {
        const double t =
            2.0 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(size);
        windowed[k] = signal.at(k) * (0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2 * t) -
                                      0.01168 * std::cos(3 * t));
    }
    double all = 0.0, high = 0.0;
    const auto spectrum = Plain::Spectrum(windowed, size);
    for (std::size_t k = 0; k < spectrum.size(); ++k) {
        const double power = std::norm(spectrum[k]);
        all = std::max(all, power);
        if (static_cast<double>(k) * rateHz / static_cast<double>(size) > hz)
            high = std::max(high, power);
    }
    return 10.0 * std::log10(high / all);
}

double LargestStep(const std::vector<double>& signal) {
    double largest = 0.0;
    for (std::size_t k = 1; k < signal.size(); ++k) {
        largest = std::max(largest, std::fabs(signal[k] - signal[k - 1]));
    }
    return largest;
}

std::unique_ptr<Quilo::Pan> OnDefaultSpeakers(unsigned numInputs,
                                              unsigned numOutputs,
                                              const char* type,
                                              const char* subtype) {
    auto pan = Quilo::Pan::Create(numInputs, numOutputs, type, subtype);
    try {
        pan->SetSpeakersPositions(Quilo::DefaultSpeakersFor(pan->GetType(), numOutputs));
    } catch (const tav::Exception&) {  // in force all the same
    }
    if (auto* binaural = dynamic_cast<Quilo::BinauralPanningDirect*>(pan.get())) {
        binaural->LoadHrtf("kemar");
    }
    return pan;
}

}  // namespace Tests
