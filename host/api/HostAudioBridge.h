// SPDX-License-Identifier: MIT
// The interface of the MaxAudio library to a host without a screen: the global audio settings and a
// DSP chain of one object. Modules do not use it.
//
// Pattern: (SetAudioSettings DspChain Perform*)*. Max makes a new chain when audio is switched on,
// or a cord or the settings change.
#pragma once

#include "z_dsp.h"

#include <cstddef>
#include <span>

namespace HostApi {

/// The values that sys_getsr, sys_getblksize and sys_getdspstate return.
struct AudioSettings {
    double sampleRateHz = 44100;
    int vectorSize = 64;
    bool isOn = false;
};
MAXAUDIO_EXPORT void SetAudioSettings(const AudioSettings& settings);
MAXAUDIO_EXPORT AudioSettings GetAudioSettings();
/// Sends `dspstate` to the objects that have a chain and this method.  Thread: main.
MAXAUDIO_EXPORT void AnnounceDspState();

/// The chain of one signal object: sends `dsp64` when constructed, and runs the perform routine
/// that the object adds.
class MAXAUDIO_EXPORT DspChain {
public:
    /// Sends `dsp64` with the present settings.  Thread: main.
    /// @param counts  connections of each signal inlet, then of each signal outlet
    DspChain(t_object* object, std::span<const short> counts);
    ~DspChain();
    DspChain(const DspChain&) = delete;
    DspChain& operator=(const DspChain&) = delete;

    /// Whether the object added a perform routine and still is in the chain.
    bool HasPerform() const;

    /// Computes one vector. The object's routine runs as the audio thread. Without one, or if the
    /// object is disabled and does not have Z_IGNORE_DISABLE, the outputs are silent.
    /// Thread: audio, or main between vectors.
    void Perform(double* const* inputs,
                 std::size_t numInputs,
                 double* const* outputs,
                 std::size_t numOutputs,
                 std::size_t frames);

    struct Record;  // the module knows it as dsp64

private:
    Record* record_;
};

/// Signal inlets (z_dsp_setup) and signal outlets of an object, and its Z_ flags.
MAXAUDIO_EXPORT std::size_t SignalInlets(t_object* object);
MAXAUDIO_EXPORT std::size_t SignalOutlets(t_object* object);
MAXAUDIO_EXPORT int SignalFlags(t_object* object);

}  // namespace HostApi
