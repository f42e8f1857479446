// SPDX-License-Identifier: MIT
// The common base of all processors: ports, rate, block size, mute, bypass, labels, report.
//
// A processor computes in floats (slot 1), the host passes doubles. This class converts between
// them: every input sample has passed SampleKernels::fromHost, every output sample is finite.
// "Slot" and the numbers below are the order of the virtual functions.
#pragma once

#include "kernels/VelkDspSampleKernels.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspHostDrain.h"
#include "text/VelkDspNonblocking.h"

#include <atomic>
#include <string>
#include <vector>

namespace tav {

/// A processor with a fixed number of inputs and outputs. Either number may be 0.
/// Pattern: (SetSampleRate SetBufferSize)+ Process*. The host may announce new values at any time;
/// buffers pass to the audio thread through a HandOver.
/// A derived class that overrides slot 1 also needs `using AudioProcessorBase::Process;`, so that
/// slot 2 is not hidden.
class AudioProcessorBase {
public:
    /// 44100 Hz and blocks of 64 samples until the host says otherwise.  Throws: std::bad_alloc.
    AudioProcessorBase(unsigned numInputs, unsigned numOutputs);
    AudioProcessorBase(const AudioProcessorBase&) = delete;
    AudioProcessorBase& operator=(const AudioProcessorBase&) = delete;

    // 0: destruction
    virtual ~AudioProcessorBase();

    // 1 to 3: one block.  Thread: audio.
    /// Overwrites the connected outputs and does not write the others. The inputs are finite.
    virtual void Process(float* const* outputs,
                         const float* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING = 0;
    /// Converts the inputs, calls slot 1 and converts its outputs; unconnected outputs get zeros.
    /// More frames than SetBufferSize announced are processed in pieces of the announced size.
    /// @param outputs, inputs  one pointer per port, `frames` samples each, no buffer twice
    virtual void Process(double* const* outputs,
                         const double* const* inputs,
                         unsigned frames) noexcept TAV_NONBLOCKING;
    /// Mute (the argument or SetMute) writes zeros; otherwise bypass (likewise) copies input i to
    /// output i while both exist, with samples that are not finite as 0, and zeroes the other
    /// outputs. Neither calls slot 1. Without them it is slot 2.
    virtual void ProcessHost(double* const* outputs,
                             const double* const* inputs,
                             unsigned frames,
                             bool mute,
                             bool bypass) noexcept TAV_NONBLOCKING;

    // 4, 5: write zeros to every connected output.  Thread: audio.
    virtual void ZeroOutputs(double* const* outputs,
                             unsigned frames) const noexcept TAV_NONBLOCKING;
    virtual void ZeroOutputs(float* const* outputs, unsigned frames) const noexcept TAV_NONBLOCKING;

    // 6 to 8: names for people
    /// "input #1" for input 0; empty beyond the inputs.
    virtual std::string InputLabel(unsigned input) const;
    /// "output #1" for output 0; "dumpout" beyond the outputs.
    virtual std::string OutputLabel(unsigned output) const;
    virtual std::string Name() const;

    // 9 to 12: what the host announces.  Thread: control.
    /// Clamped to [1000, 768000] Hz; 0, negative and non-finite rates are ignored.
    virtual void SetSampleRate(float hz);
    /// The largest block to come; 0 is ignored.  Throws: std::bad_alloc, then nothing changed.
    virtual void SetBufferSize(unsigned frames);
    /// Clears all signal memory, keeps every setting.
    virtual void Reset();
    /// Samples.
    virtual unsigned Latency() const;

    // 13 to 16: which ports are connected and active; in this class all that exist.  Thread: any.
    virtual bool InputConnectedAndActive(unsigned input) const noexcept TAV_NONBLOCKING;
    virtual bool OutputConnected(unsigned output) const noexcept TAV_NONBLOCKING;
    virtual bool InputActive(unsigned input) const noexcept TAV_NONBLOCKING;
    virtual bool AnyOutputConnected() const noexcept TAV_NONBLOCKING;

    // not virtual
    unsigned NumInputs() const noexcept TAV_NONBLOCKING { return numInputs_; }
    unsigned NumOutputs() const noexcept TAV_NONBLOCKING { return numOutputs_; }
    /// Hz
    float SampleRate() const noexcept TAV_NONBLOCKING;
    unsigned BufferSize() const noexcept TAV_NONBLOCKING;

    /// The processor's own switches, besides those that the host passes per block.  Thread: any.
    void SetMute(bool mute) noexcept;
    bool Mute() const noexcept TAV_NONBLOCKING;
    void SetBypass(bool bypass) noexcept;
    bool Bypass() const noexcept TAV_NONBLOCKING;

    /// Appends rate, block size and latency, a line each.  Thread: control.
    void ReportState(std::vector<std::string>& lines) const;

protected:
    /// Does what slot 1 does, given outputs that contain only zeros. A processor that adds to its
    /// outputs overrides it, because it need not zero them first.  Thread: audio.
    virtual void ProcessZeroed(float* const* outputs,
                               const float* const* inputs,
                               unsigned frames) noexcept TAV_NONBLOCKING;
    /// The same, and drains every sample of every output to the host, which makes it zero again. A
    /// processor that finishes one output after the other overrides it and drains each output as
    /// soon as it is finished.  Thread: audio.
    virtual void ProcessToHost(const HostDrain& host,
                               float* const* outputs,
                               const float* const* inputs,
                               unsigned frames) noexcept TAV_NONBLOCKING;

private:
    struct Scratch;

    void ProcessPiece(const Scratch& scratch,
                      double* const* outputs,
                      const double* const* inputs,
                      unsigned offset,
                      unsigned frames) noexcept TAV_NONBLOCKING;

    const SampleKernels& kernels_ = BestKernels<SampleKernels>();
    const unsigned numInputs_;
    const unsigned numOutputs_;
    // shared: control writes, audio reads
    std::atomic<float> sampleRate_;
    std::atomic<unsigned> bufferSize_;
    std::atomic<bool> mute_{false};
    std::atomic<bool> bypass_{false};
    HandOver<Scratch> scratch_;
};

}  // namespace tav
