// SPDX-License-Identifier: MIT
#include "HostChain.h"

#include "kernels/VelkDspDenormalGuard.h"

#include <algorithm>
#include <utility>

namespace Quilo::Host {

namespace {

/// Fills output vectors before each perform: loud, so that a sample that was not written is
/// noticed.
constexpr double kOldData = 777.0;

}  // namespace

Chain::Chain(Object& object, double rateHz, unsigned vector)
    : object_(object),
      rateHz_(rateHz),
      vector_(vector),
      counts_(object.NumSignalInlets() + object.NumSignalOutlets(), 1) {
    std::fill_n(counts_.begin(), object.NumSignalInlets(), short{0});
    PlaceVectors();
}

void Chain::SetConnected(std::size_t inlet, bool connected) {
    counts_[inlet] = connected ? 1 : 0;
    Announce();
}

void Chain::SetRate(double hz) {
    rateHz_ = hz;
    Announce();
}

void Chain::SetVector(unsigned frames) {
    vector_ = frames;
    PlaceVectors();
    Announce();
}

void Chain::Announce() {
    if (running_) return Start();
    HostApi::SetAudioSettings({rateHz_, static_cast<int>(vector_), false});
}

void Chain::Begin() {
    if (!isSwitchedOff_) return Start();
    HostApi::SetAudioSettings({rateHz_, static_cast<int>(vector_), false});
}

void Chain::Start() {
    isSwitchedOff_ = false;
    const bool wasRunning = std::exchange(running_, true);
    chain_.reset();
    PlaceVectors();
    HostApi::SetAudioSettings({rateHz_, static_cast<int>(vector_), true});
    if (object_.Get()) chain_ = std::make_unique<HostApi::DspChain>(object_.Get(), counts_);
    if (!wasRunning) HostApi::AnnounceDspState();
}

void Chain::Stop() {
    isSwitchedOff_ = true;
    if (!running_) return;
    running_ = false;
    HostApi::SetAudioSettings({rateHz_, static_cast<int>(vector_), false});
    HostApi::AnnounceDspState();
    chain_.reset();
}

void Chain::PlaceVectors() {
    const std::size_t numInputs = object_.NumSignalInlets();
    const std::size_t numOutputs = object_.NumSignalOutlets();
    // As in Max, output k shares the memory of input k unless the object has the flag Z_NO_INPLACE.
    const bool inPlace = object_.Get() && (HostApi::SignalFlags(object_.Get()) & Z_NO_INPLACE) == 0;
    memory_.assign((numInputs + numOutputs) * vector_, 0.0);
    inputs_.resize(numInputs);
    outputs_.resize(numOutputs);
    for (std::size_t k = 0; k < numInputs; ++k) inputs_[k] = memory_.data() + k * vector_;
    for (std::size_t k = 0; k < numOutputs; ++k)
        outputs_[k] =
            inPlace && k < numInputs ? inputs_[k] : memory_.data() + (numInputs + k) * vector_;
}

void Chain::Run() {
    for (std::size_t k = 0; k < inputs_.size(); ++k)
        if (!IsConnected(k)) std::ranges::fill(Input(k), 0.0);
    for (std::size_t k = 0; k < outputs_.size(); ++k)
        if (k >= inputs_.size() || outputs_[k] != inputs_[k])
            std::fill_n(outputs_[k], vector_, kOldData);
    if (!chain_) {
        for (double* output : outputs_) std::fill_n(output, vector_, 0.0);
        return;
    }
    const tav::DenormalGuard guard;
    chain_->Perform(inputs_.data(), inputs_.size(), outputs_.data(), outputs_.size(), vector_);
}

}  // namespace Quilo::Host
