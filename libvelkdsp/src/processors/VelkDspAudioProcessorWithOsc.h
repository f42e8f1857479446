// SPDX-License-Identifier: MIT
// A processor that carries out OSC messages at the start of a block.
#pragma once

#include "osc/VelkDspOscInterface.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"

namespace tav {

/// Changes by OSC take effect between two blocks, in the order in which they arrived.
class AudioProcessorWithOscInAudioInterrupt : public AudioProcessorWithAutoMute,
                                              public OscInterface {
public:
    using AudioProcessorWithAutoMute::AudioProcessorWithAutoMute;

    // 1 to 3
    using AudioProcessorWithAutoMute::Process;
    void Process(double* const* outputs,
                 const double* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override {
        TakeOsc(frames);
        AudioProcessorWithAutoMute::Process(outputs, inputs, frames);
    }
    /// Messages are carried out also while the processor is muted or bypassed.
    void ProcessHost(double* const* outputs,
                     const double* const* inputs,
                     unsigned frames,
                     bool mute,
                     bool bypass) noexcept TAV_NONBLOCKING override {
        // Otherwise Process, which comes next, does it.
        if (mute || bypass || Mute() || Bypass()) TakeOsc(frames);
        AudioProcessorWithAutoMute::ProcessHost(outputs, inputs, frames, mute, bypass);
    }

protected:
    // 24
    /// Carries out what waits, as far as that needs no waiting and fits into a block of this
    /// length; what does not is for the next block.  Thread: audio.
    virtual void TakeOsc(unsigned frames) noexcept TAV_NONBLOCKING = 0;
};

}  // namespace tav
