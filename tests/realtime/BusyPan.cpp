// SPDX-License-Identifier: MIT
#include "realtime/BusyPan.h"

#include "osc/VelkDspOscOutputStream.h"
#include "pan/QuiloBinauralModelPanning.h"
#include "pan/QuiloBinauralPanningNearfield.h"
#include "pan/QuiloDbapPanning.h"
#include "pan/QuiloNFCHOAPanning.h"
#include "pan/QuiloPanDefaults.h"
#include "pan/QuiloRecursivePanning.h"
#include "pan/QuiloSubwoofersPanning.h"
#include "text/VelkDspException.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <thread>
#include <utility>

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
    : BusyPan(Quilo::Pan::Create(size.numInputs, size.numOutputs, type, subtype)) {}

BusyPan::BusyPan(std::unique_ptr<Quilo::Pan> pan)
    : pan_(std::move(pan)),
      doubles_(kMostFrames),
      floats_(kMostFrames),
      doubleInputs_(pan_->NumInputs(), doubles_.data()),
      floatInputs_(pan_->NumInputs(), floats_.data()) {
    const unsigned numOutputs = pan_->NumOutputs();
    for (unsigned k = 0; k < kMostFrames; ++k) {
        floats_[k] = std::sin(0.1f * static_cast<float>(k));
        doubles_[k] = static_cast<double>(floats_[k]);
    }
    doubles_[7] = std::numeric_limits<double>::quiet_NaN();
    doubles_[8] = -std::numeric_limits<double>::infinity();
    doubles_[9] = 1e-310;
    // The outputs follow the inputs in the same memory, a row each.
    doubles_.resize(kMostFrames * (1 + std::size_t{numOutputs}));
    floats_.resize(doubles_.size());
    for (auto& input : doubleInputs_) input = doubles_.data();
    for (auto& input : floatInputs_) input = floats_.data();
    for (std::size_t o = 1; o <= numOutputs; ++o) {
        doubleOutputs_.push_back(&doubles_[o * kMostFrames]);
        floatOutputs_.push_back(&floats_[o * kMostFrames]);
    }
    pan_->SetSampleRate(48000.f);
    pan_->SetBufferSize(64);
    try {
        pan_->SetSpeakersPositions(Quilo::DefaultSpeakersFor(pan_->GetType(), numOutputs));
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
    switch (random() % 12) {
        case 0: pan_->SetSourcesPositions({SomePosition(random), {0, 1, 0}}, true); break;
        case 1: pan_->SetSourceMute(source, random() % 2 == 0); break;
        case 2: pan_->SetSourceSpread(source, Up(100.f, random)); break;
        case 3: pan_->SetSpreadByDirection(source, direction); break;
        case 4: pan_->SetNearfieldCompensation(source, random() % 2 == 0); break;
        case 5: TurnTheirOwn(source, random); break;
        case 6:
        case 7: SendOsc(source, random); break;
        default:
            pan_->SetSourcePosition(source, SomePosition(random), random() % 4 == 0,
                                    random() % 2 == 0);
    }
}

/// What few panners know; the others ignore it.
void BusyPan::TurnTheirOwn(unsigned source, std::mt19937& random) {
    const bool on = random() % 2 == 0;
    const float values[] = {Up(100.f, random), Up(100.f, random), Up(100.f, random)};
    pan_->SetNumNeighbors(source, static_cast<unsigned>(random() % 8));
    pan_->SetComputationMode(random() % 16 == 0 ? "fast" : "precise");
    if (auto* dbap = dynamic_cast<Quilo::DbapPanning*>(pan_.get())) dbap->SetMuteOutside(!on);
    if (auto* panr = dynamic_cast<Quilo::RecursivePanning*>(pan_.get())) panr->SetCorners(values);
    if (auto* bass = dynamic_cast<Quilo::SubwoofersPanning*>(pan_.get())) bass->SetCutoff(*values);
    if (auto* nfc = dynamic_cast<Quilo::NFCHOAPanning*>(pan_.get())) nfc->SetHighPass(on);
    if (auto* ears = dynamic_cast<Quilo::BinauralPanning*>(pan_.get())) {
        ears->SetListenerAngle(*values);
        ears->SetHeadRadius(on ? 0.1f : 0.001f * *values);
        ears->SetItdModel(on ? "measurement" : "basic");
    }
    if (auto* ears = dynamic_cast<Quilo::BinauralPanningNearfield*>(pan_.get())) {
        using Near = Quilo::BinauralPanningNearfield;
        ears->SetSwitch(static_cast<Near::Switch>(random() % Near::kNumSwitches), on);
        ears->SetRadius(0.02f * values[1]);
    }
    if (auto* ears = dynamic_cast<Quilo::BinauralPanningSnowmanModel*>(pan_.get())) {
        ears->SetTorsoRadius(0.003f * values[1]);
        ears->SetNeckHeight(0.01f * values[2]);
    }
}

/// Several messages at once, some to every source.
void BusyPan::SendOsc(unsigned source, std::mt19937& random) {
    const std::string address =
        random() % 4 == 0 ? "/source/*" : "/source/" + std::to_string(source);
    const tav::CartesianVector p = SomePosition(random);
    tav::OSCBundle bundle;
    bundle.Add(tav::OSCMessage(address + "/xyz", p.x, p.y, p.z));
    bundle.Add(tav::OSCMessage(address + "/spread", Up(100.f, random)));
    bundle.Add(tav::OSCMessage(address + "/mute", random() % 4 == 0));
    bundle.Add(tav::OSCMessage(random() % 8 == 0 ? "/dsp/clear" : "/adm/obj/1/azim", p.x));
    tav::OSCOutputStream stream;
    stream.WriteBundle(bundle);
    try {
        pan_->Osc().Enqueue(stream.Bytes());
        if (random() % 8 == 0) pan_->Osc().CarryOutIfStill();
    } catch (const tav::Exception&) {  // there is no source 0
    }
}

void BusyPan::Reshape(std::mt19937& random) {
    tav::CartesianArray speakers(pan_->NumOutputs());
    switch (random() % 8) {
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
        case 5: pan_->SetSpeakersRadius(Up(5.f, random)); break;
        case 6: pan_->SetNormalization(tav::SphericalHarmonic::Normalization(random() % 8)); break;
        default: {
            std::vector<std::string> lines;
            pan_->Dump(lines);
        }
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

bool BusyPan::Finite() const {
    const auto isFinite = [](auto sample) { return std::isfinite(sample); };
    return std::all_of(doubles_.begin() + kMostFrames, doubles_.end(), isFinite) &&
           std::all_of(floats_.begin() + kMostFrames, floats_.end(), isFinite);
}

void PlayAmidChanges(BusyPan& pan,
                     int changes,
                     const std::function<void(const std::function<void()>& play)>& audio) {
    std::atomic<bool> playing{false}, over{false};
    std::thread control([&] {
        std::mt19937 random(2);
        while (!playing) std::this_thread::yield();
        for (int k = 0; k < changes; ++k) pan.Disturb(random);
        over = true;
    });
    audio([&] {
        playing = true;
        do pan.Play();
        while (!over);
        pan.Play();  // whatever was changed last
    });
    control.join();
}

}  // namespace Tests
