// SPDX-License-Identifier: MIT
// What a headless host gets from the MaxAudio library: the global audio settings and a DSP chain of
// one object. Modules never see it.
//
// Pattern: (SetAudioSettings DspChain Perform*)*. A new chain is what Max makes when audio is
// switched on, a cord is changed or the settings are.
#pragma once

#include "z_dsp.h"

#include <cstddef>
#include <span>

namespace HostApi {

/// What sys_getsr, sys_getblksize and sys_getdspstate answer.
struct AudioSettings {
    double sampleRateHz = 44100;
    int vectorSize = 64;
    bool isOn = false;
};
MAXAUDIO_EXPORT void SetAudioSettings(const AudioSettings& settings);
MAXAUDIO_EXPORT AudioSettings GetAudioSettings();
/// Sends `dspstate` to the objects with a live chain that have it.  Thread: main.
MAXAUDIO_EXPORT void AnnounceDspState();

/// The chain of one signal object: sends `dsp64` when made, runs the perform routine that was
/// added.
class MAXAUDIO_EXPORT DspChain {
public:
    /// Sends dsp64 with the present settings.  Thread: main.
    /// @param counts  connections of each signal inlet, then of each signal outlet
    DspChain(t_object* object, std::span<const short> counts);
    ~DspChain();
    DspChain(const DspChain&) = delete;
    DspChain& operator=(const DspChain&) = delete;

    /// Whether the object added a perform routine and has not left since.
    bool HasPerform() const;

    /// One vector.  The object's routine runs as the audio thread; where there is none, or the
    /// object is disabled (and no Z_IGNORE_DISABLE), the outputs are silent.  Thread: audio, or
    /// main between vectors.
    void Perform(double* const* inputs,
                 std::size_t numInputs,
                 double* const* outputs,
                 std::size_t numOutputs,
                 std::size_t frames);

    struct Record;  // what the module sees as dsp64

private:
    Record* record_;
};

/// Signal inlets (z_dsp_setup) and signal outlets of an object, and its Z_ flags.
MAXAUDIO_EXPORT std::size_t SignalInlets(t_object* object);
MAXAUDIO_EXPORT std::size_t SignalOutlets(t_object* object);
MAXAUDIO_EXPORT int SignalFlags(t_object* object);

}  // namespace HostApi
