// SPDX-License-Identifier: MIT
#include "processors/VelkDspAudioProcessorBase.h"

#include "containers/VelkDspAlignedVector.h"
#include "containers/VelkDspRelaxed.h"
#include "kernels/VelkDspDenormalGuard.h"
#include "text/VelkDspStringHelper.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

namespace tav {

namespace {

constexpr float kInitialSampleRate = 44100.f;
constexpr unsigned kInitialBufferSize = 64;

template <class Sample>
void ZeroConnected(const AudioProcessorBase& processor,
                   Sample* const* outputs,
                   unsigned frames) noexcept TAV_NONBLOCKING {
    for (unsigned output = 0; output < processor.NumOutputs(); ++output) {
        if (processor.OutputConnected(output)) std::fill_n(outputs[output], frames, Sample{});
    }
}

}  // namespace

/// One float buffer per port, for blocks of at most `frames` samples. Between two blocks the
/// buffers of the outputs contain only zeros.
struct AudioProcessorBase::Scratch {
    Scratch(unsigned numInputs, unsigned numOutputs, unsigned numFrames)
        : frames(numFrames),
          samples((std::size_t{numInputs} + numOutputs) * AlignedPitch(numFrames), 0.f),
          inputs(numInputs),
          outputs(numOutputs) {
        float* next = samples.data();
        for (auto* ports : {&inputs, &outputs}) {
            for (float*& port : *ports) {
                port = next;
                next += AlignedPitch(frames);
            }
        }
    }

    unsigned frames;
    AlignedVector<float> samples;
    std::vector<float*> inputs;
    std::vector<float*> outputs;
};

AudioProcessorBase::AudioProcessorBase(unsigned numInputs, unsigned numOutputs)
    : numInputs_(numInputs),
      numOutputs_(numOutputs),
      sampleRate_(kInitialSampleRate),
      bufferSize_(kInitialBufferSize) {
    scratch_.Publish(std::make_unique<Scratch>(numInputs, numOutputs, kInitialBufferSize));
}

AudioProcessorBase::~AudioProcessorBase() = default;

void AudioProcessorBase::Process(double* const* outputs,
                                 const double* const* inputs,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    const DenormalGuard guard;
    scratch_.TakeNext();
    const Scratch& scratch = *scratch_.Live();
    for (unsigned offset = 0; offset < frames;) {
        const unsigned count = std::min(scratch.frames, frames - offset);
        ProcessPiece(scratch, outputs, inputs, offset, count);
        offset += count;
    }
}

void AudioProcessorBase::ProcessPiece(const Scratch& scratch,
                                      double* const* outputs,
                                      const double* const* inputs,
                                      unsigned offset,
                                      unsigned frames) noexcept TAV_NONBLOCKING {
    for (unsigned input = 0; input < numInputs_; ++input) {
        float* const mapped = scratch.inputs[input];
        if (InputActive(input)) {
            kernels_.fromHost(inputs[input] + offset, mapped, static_cast<int>(frames));
        } else {
            std::fill_n(mapped, frames, 0.f);
        }
    }
    // Slot 1 does not write unconnected outputs, and connections may change while it runs. So that
    // no old block is heard from an output that it skips, all of them contain zeros here: the
    // previous block was drained.
    ProcessToHost({kernels_, outputs, offset}, scratch.outputs.data(), scratch.inputs.data(),
                  frames);
}

void AudioProcessorBase::ProcessZeroed(float* const* outputs,
                                       const float* const* inputs,
                                       unsigned frames) noexcept TAV_NONBLOCKING {
    Process(outputs, inputs, frames);
}

void AudioProcessorBase::ProcessToHost(const HostDrain& host,
                                       float* const* outputs,
                                       const float* const* inputs,
                                       unsigned frames) noexcept TAV_NONBLOCKING {
    ProcessZeroed(outputs, inputs, frames);
    for (unsigned output = 0; output < numOutputs_; ++output) {
        host.Drain(output, outputs[output], 0, static_cast<int>(frames));
    }
}

void AudioProcessorBase::ProcessHost(double* const* outputs,
                                     const double* const* inputs,
                                     unsigned frames,
                                     bool mute,
                                     bool bypass) noexcept TAV_NONBLOCKING {
    mute = mute || Mute();
    bypass = bypass || Bypass();
    if (!mute && !bypass) return Process(outputs, inputs, frames);
    for (unsigned output = 0; output < numOutputs_; ++output) {
        if (!mute && output < numInputs_) {
            std::transform(inputs[output], inputs[output] + frames, outputs[output],
                           [](double sample) { return std::isfinite(sample) ? sample : 0.0; });
        } else {
            std::fill_n(outputs[output], frames, 0.0);
        }
    }
}

void AudioProcessorBase::ZeroOutputs(double* const* outputs,
                                     unsigned frames) const noexcept TAV_NONBLOCKING {
    ZeroConnected(*this, outputs, frames);
}

void AudioProcessorBase::ZeroOutputs(float* const* outputs,
                                     unsigned frames) const noexcept TAV_NONBLOCKING {
    ZeroConnected(*this, outputs, frames);
}

std::string AudioProcessorBase::InputLabel(unsigned input) const {
    return input < numInputs_ ? "input #" + std::to_string(input + 1) : std::string();
}

std::string AudioProcessorBase::OutputLabel(unsigned output) const {
    return output < numOutputs_ ? "output #" + std::to_string(output + 1) : "dumpout";
}

std::string AudioProcessorBase::Name() const { return "processor"; }

void AudioProcessorBase::SetSampleRate(float hz) {
    if (!std::isfinite(hz) || hz <= 0.f) return;
    sampleRate_.store(std::clamp(hz, 1000.f, 768000.f), kRelaxed);
}

void AudioProcessorBase::SetBufferSize(unsigned frames) {
    if (frames == 0 || frames == BufferSize()) return;
    scratch_.Publish(std::make_unique<Scratch>(numInputs_, numOutputs_, frames));
    bufferSize_.store(frames, kRelaxed);
}

void AudioProcessorBase::Reset() {}

unsigned AudioProcessorBase::Latency() const { return 0; }

bool AudioProcessorBase::InputConnectedAndActive(unsigned input) const noexcept TAV_NONBLOCKING {
    return input < numInputs_;
}

bool AudioProcessorBase::OutputConnected(unsigned output) const noexcept TAV_NONBLOCKING {
    return output < numOutputs_;
}

bool AudioProcessorBase::InputActive(unsigned input) const noexcept TAV_NONBLOCKING {
    return input < numInputs_;
}

bool AudioProcessorBase::AnyOutputConnected() const noexcept TAV_NONBLOCKING {
    return numOutputs_ > 0;
}

float AudioProcessorBase::SampleRate() const noexcept TAV_NONBLOCKING {
    return sampleRate_.load(kRelaxed);
}

unsigned AudioProcessorBase::BufferSize() const noexcept TAV_NONBLOCKING {
    return bufferSize_.load(kRelaxed);
}

void AudioProcessorBase::SetMute(bool mute) noexcept { mute_.store(mute, kRelaxed); }

bool AudioProcessorBase::Mute() const noexcept TAV_NONBLOCKING { return mute_.load(kRelaxed); }

void AudioProcessorBase::SetBypass(bool bypass) noexcept { bypass_.store(bypass, kRelaxed); }

bool AudioProcessorBase::Bypass() const noexcept TAV_NONBLOCKING { return bypass_.load(kRelaxed); }

void AudioProcessorBase::ReportState(std::vector<std::string>& lines) const {
    lines.push_back("samplerate           : " +
                    NumberText(static_cast<double>(SampleRate()), 7));  // never 1e+05
    lines.push_back("buffersize           : " + std::to_string(BufferSize()));
    const unsigned latency = Latency();
    std::string line = "latency              : " + std::to_string(latency);
    if (latency > 0) {
        const double ms = 1000.0 * latency / static_cast<double>(SampleRate());
        line += " samples = " + NumberText(static_cast<float>(ms)) + " ms";
    }
    lines.push_back(std::move(line));
}

}  // namespace tav
