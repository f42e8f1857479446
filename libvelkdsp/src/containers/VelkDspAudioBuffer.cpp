// SPDX-License-Identifier: MIT
#include "containers/VelkDspAudioBuffer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tav {

AudioBuffer::AudioBuffer(unsigned numChannels, std::size_t numFrames, double sampleRateHz)
    : sampleRateHz_(sampleRateHz) {
    Resize(numChannels, numFrames);
}

AudioBuffer::AudioBuffer(const AudioBuffer& other)
    : AudioBuffer(other.NumChannels(), other.numFrames_, other.sampleRateHz_) {
    std::ranges::copy(other.samples_, samples_.begin());
}

AudioBuffer::AudioBuffer(AudioBuffer&& other) noexcept
    : samples_(std::exchange(other.samples_, {})),
      pointers_(std::exchange(other.pointers_, {})),
      numFrames_(std::exchange(other.numFrames_, 0)),
      sampleRateHz_(other.sampleRateHz_) {}

AudioBuffer& AudioBuffer::operator=(const AudioBuffer& other) { return *this = AudioBuffer(other); }

AudioBuffer& AudioBuffer::operator=(AudioBuffer&& other) noexcept {
    std::swap(samples_, other.samples_);
    std::swap(pointers_, other.pointers_);
    std::swap(numFrames_, other.numFrames_);
    std::swap(sampleRateHz_, other.sampleRateHz_);
    return *this;
}

void AudioBuffer::Resize(unsigned numChannels, std::size_t numFrames) {
    if (numChannels > 0 && numFrames > samples_.max_size() / numChannels) {
        throw std::length_error("audio buffer too long");
    }
    std::vector<float> samples(numChannels * numFrames);
    std::vector<float*> pointers(numChannels);
    for (std::size_t channel = 0; channel < numChannels; ++channel) {
        pointers[channel] = samples.data() + channel * numFrames;
    }
    samples_ = std::move(samples);
    pointers_ = std::move(pointers);
    numFrames_ = numFrames;
}

void AudioBuffer::Clear() noexcept { std::ranges::fill(samples_, 0.f); }

}  // namespace tav
