// SPDX-License-Identifier: MIT
// Planar audio in memory: one contiguous run of samples per channel.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// Channels x frames of 32-bit samples with a sample rate; owns its memory.
class AudioBuffer {
public:
    AudioBuffer() = default;
    /// All samples 0.  Throws: std::length_error, std::bad_alloc.
    AudioBuffer(unsigned numChannels, std::size_t numFrames, double sampleRateHz = 0.0);
    AudioBuffer(const AudioBuffer& other);
    AudioBuffer(AudioBuffer&& other) noexcept;
    AudioBuffer& operator=(const AudioBuffer& other);
    AudioBuffer& operator=(AudioBuffer&& other) noexcept;
    ~AudioBuffer() = default;

    unsigned NumChannels() const noexcept { return static_cast<unsigned>(pointers_.size()); }
    std::size_t NumFrames() const noexcept { return numFrames_; }
    /// Hz; 0 if it is not known.
    double SampleRate() const noexcept { return sampleRateHz_; }
    void SetSampleRate(double sampleRateHz) noexcept { sampleRateHz_ = sampleRateHz; }

    /// @param channel  below NumChannels()
    std::span<float> Channel(unsigned channel) noexcept { return {pointers_[channel], numFrames_}; }
    std::span<const float> Channel(unsigned channel) const noexcept {
        return {pointers_[channel], numFrames_};
    }
    /// One pointer per channel, for Process; valid until the next Resize.
    float* const* Pointers() noexcept { return pointers_.data(); }
    const float* const* Pointers() const noexcept { return pointers_.data(); }

    /// All samples 0 afterwards.  Throws: std::length_error, std::bad_alloc; then nothing changed.
    void Resize(unsigned numChannels, std::size_t numFrames);
    void Clear() noexcept;

private:
    std::vector<float> samples_;
    std::vector<float*> pointers_;
    std::size_t numFrames_ = 0;
    double sampleRateHz_ = 0.0;
};

}  // namespace tav
