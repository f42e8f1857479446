// SPDX-License-Identifier: MIT
#include "processors/VelkDspAudioProcessorWithAutoMute.h"

#include <algorithm>

namespace tav {

AudioProcessorWithAutoMute::AudioProcessorWithAutoMute(unsigned numInputs, unsigned numOutputs)
    : AudioProcessorBase(numInputs, numOutputs) {
    own_.SetNumInlets(numInputs);
    own_.SetNumOutlets(numOutputs);
    own_.SetSampleRate(SampleRate());
}

void AudioProcessorWithAutoMute::Process(double* const* outputs,
                                         const double* const* inputs,
                                         unsigned frames) noexcept TAV_NONBLOCKING {
    AnalyzeActivity(inputs, frames);
    AudioProcessorBase::Process(outputs, inputs, frames);
}

void AudioProcessorWithAutoMute::SetSampleRate(float hz) {
    AudioProcessorBase::SetSampleRate(hz);
    own_.SetSampleRate(SampleRate());
}

void AudioProcessorWithAutoMute::Reset() {
    AudioProcessorBase::Reset();
    own_.Reset();
}

bool AudioProcessorWithAutoMute::InputConnectedAndActive(unsigned input) const noexcept
    TAV_NONBLOCKING {
    return InForce().InletConnected(input) && InForce().InletActive(input);
}

bool AudioProcessorWithAutoMute::OutputConnected(unsigned output) const noexcept TAV_NONBLOCKING {
    return Outlets().OutletConnected(output);
}

bool AudioProcessorWithAutoMute::InputActive(unsigned input) const noexcept TAV_NONBLOCKING {
    return InForce().InletActive(input);
}

bool AudioProcessorWithAutoMute::AnyOutputConnected() const noexcept TAV_NONBLOCKING {
    return Outlets().AnyOutletConnected();
}

void AudioProcessorWithAutoMute::SetAnalyzerInputs(unsigned count) {
    own_.SetNumInlets(std::min(count, NumInputs()));
}

void AudioProcessorWithAutoMute::SetAnalyzerOutputs(unsigned count) {
    own_.SetNumOutlets(std::min(count, NumOutputs()));
}

void AudioProcessorWithAutoMute::AnalyzeActivity(const double* const* inputs,
                                                 unsigned frames) noexcept TAV_NONBLOCKING {
    if (owner_ == nullptr) own_.Analyze(inputs, frames);
}

void AudioProcessorWithAutoMute::SetConnections(std::span<const short> inletCounts,
                                                std::span<const short> outletCounts) {
    own_.SetConnections(inletCounts, outletCounts);
}

void AudioProcessorWithAutoMute::SetAutoMute(bool on) { own_.SetAutoMute(on); }

void AudioProcessorWithAutoMute::SetAutoMuteTime(float seconds) { own_.SetAutoMuteTime(seconds); }

void AudioProcessorWithAutoMute::ShareActivityOf(const AudioProcessorWithAutoMute& owner) noexcept {
    owner_ = &owner;
    ownOutputs_ = false;
}

void AudioProcessorWithAutoMute::ShareInputActivityOf(
    const AudioProcessorWithAutoMute& owner) noexcept {
    owner_ = &owner;
    ownOutputs_ = true;
}

}  // namespace tav
