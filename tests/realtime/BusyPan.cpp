// SPDX-License-Identifier: MIT
#include "realtime/BusyPan.h"

#include "pan/QuiloPanDefaults.h"
#include "text/VelkDspException.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Tests {

namespace {

constexpr unsigned kMostFrames = 300;

/// Anywhere around the listener, now and then nowhere.
tav::CartesianVector SomePosition(std::mt19937& random) {
    std::uniform_real_distribution<float> metres(-3.f, 3.f);
    if (random() % 16 == 0) return {};
    return {metres(random), metres(random), metres(random)};
}

float Up(float most, std::mt19937& random) {
    return std::uniform_real_distribution<float>(0.f, most)(random);
}

}  // namespace

BusyPan::BusyPan(Quilo::Pan::Type type, Quilo::Pan::SubType subtype, PanSize size)
    : pan_(Quilo::Pan::Create(size.numInputs, size.numOutputs, type, subtype)),
      doubles_(kMostFrames),
      floats_(kMostFrames),
      doubleInputs_(size.numInputs, doubles_.data()),
      floatInputs_(size.numInputs, floats_.data()) {
    for (unsigned k = 0; k < kMostFrames; ++k) {
        floats_[k] = std::sin(0.1f * static_cast<float>(k));
        doubles_[k] = static_cast<double>(floats_[k]);
    }
    doubles_[7] = std::numeric_limits<double>::quiet_NaN();
    doubles_[8] = -std::numeric_limits<double>::infinity();
    doubles_[9] = 1e-310;
    // The outputs follow the inputs in the same memory, a row each.
    doubles_.resize(kMostFrames * (1 + std::size_t{size.numOutputs}));
    floats_.resize(doubles_.size());
    for (auto& input : doubleInputs_) input = doubles_.data();
    for (auto& input : floatInputs_) input = floats_.data();
    for (std::size_t o = 1; o <= size.numOutputs; ++o) {
        doubleOutputs_.push_back(&doubles_[o * kMostFrames]);
        floatOutputs_.push_back(&floats_[o * kMostFrames]);
    }
    pan_->SetSampleRate(48000.f);
    pan_->SetBufferSize(64);
    try {
        pan_->SetSpeakersPositions(Quilo::DefaultSpeakersFor(type, size.numOutputs));
    } catch (const tav::Exception&) {  // in force all the same
    }
}

void BusyPan::Disturb(std::mt19937& random) {
    Move(random);
    if (random() % 4 == 0) Reshape(random);
    if (random() % 4 == 0) Announce(random);
}

void BusyPan::Move(std::mt19937& random) {
    const auto source = static_cast<unsigned>(random() % (pan_->NumInputs() + 1));
    const std::array<float, 3> direction = {Up(1.f, random), Up(1.f, random), Up(1.f, random)};
    switch (random() % 8) {
        case 0: pan_->SetSourcesPositions({SomePosition(random), {0, 1, 0}}, true); break;
        case 1: pan_->SetSourceMute(source, random() % 2 == 0); break;
        case 2: pan_->SetSourceSpread(source, Up(100.f, random)); break;
        case 3: pan_->SetSpreadByDirection(source, direction); break;
        default:
            pan_->SetSourcePosition(source, SomePosition(random), random() % 4 == 0,
                                    random() % 2 == 0);
    }
}

void BusyPan::Reshape(std::mt19937& random) {
    tav::CartesianArray speakers(pan_->NumOutputs());
    switch (random() % 6) {
        case 0:
            for (auto& speaker : speakers) speaker = SomePosition(random);
            [[fallthrough]];
        case 1: try { pan_->SetSpeakersPositions(speakers);
            } catch (const tav::Exception&) {  // in force all the same
            }
            break;
        case 2: pan_->SetInterpolationTime(Up(50.f, random)); break;
        case 3: pan_->SetSpreadingMode(random() % 2 == 0 ? "omni" : "directional"); break;
        case 4: pan_->SetOrder(static_cast<unsigned>(random() % 5)); break;
        default: pan_->SetNumNeighbors(0, static_cast<unsigned>(random() % 5)); break;
    }
}

void BusyPan::Announce(std::mt19937& random) {
    constexpr float kRates[] = {8000.f, 44100.f, 48000.f, 192000.f};
    std::vector<short> inlets(pan_->NumInputs()), outlets(pan_->NumOutputs());
    switch (random() % 6) {
        case 0: pan_->SetSampleRate(kRates[random() % 4]); break;
        case 1: pan_->SetBufferSize(static_cast<unsigned>(random() % 200) + 64); break;
        case 2: pan_->SetAutoMuteTime(Up(2.f, random)); break;
        case 3: pan_->Reset(); break;
        case 4: pan_->SetSpread(Up(100.f, random)); break;
        default:
            for (short& count : inlets) count = static_cast<short>(random() % 4);
            for (short& count : outlets) count = static_cast<short>(random() % 4);
            pan_->SetConnections(inlets, outlets);
    }
}

void BusyPan::Play() noexcept {
    tav::AudioProcessorBase& frame = *pan_;
    for (const unsigned frames : {1u, 7u, 64u, 65u, kMostFrames}) {
        frame.ProcessHost(doubleOutputs_.data(), doubleInputs_.data(), frames, false, false);
    }
    frame.ProcessHost(doubleOutputs_.data(), doubleInputs_.data(), 64, true, false);
    frame.ProcessHost(doubleOutputs_.data(), doubleInputs_.data(), 64, false, true);
    frame.Process(doubleOutputs_.data(), doubleInputs_.data(), 64);
    frame.Process(floatOutputs_.data(), floatInputs_.data(), 64);
    pan_->Perform(floatOutputs_.data(), floatInputs_.data(), 33);
}

}  // namespace Tests
