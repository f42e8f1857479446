// SPDX-License-Identifier: MIT
// The signal side of a run: the DSP chain with the object in it, and the vectors that pass through.
#pragma once

#include "HostAudioBridge.h"
#include "HostObject.h"

#include <memory>
#include <span>
#include <vector>

namespace Quilo::Host {

/// Pattern: set-up calls, Begin, (Run | set-up calls | Start | Stop)*, Stop.  While stopped, Run
/// writes silence.
/// Thread: main.
class Chain {
public:
    /// All outlets count as connected, inlets as not.
    Chain(Object& object, double rateHz, unsigned vector);
    ~Chain() { Stop(); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    // Set-up. While audio runs, each call makes a new DSP chain, as a changed cord does in a
    // patcher.
    void SetConnected(std::size_t inlet, bool connected);  // from 0
    void SetRate(double hz);
    void SetVector(unsigned frames);

    /// Makes a new DSP chain if audio runs, after the object was made anew.
    void Refresh() {
        if (running_) Start();
    }

    void Start();
    void Stop();
    /// Starts audio at the beginning of a run, unless the script has switched it off before.
    void Begin();

    double Rate() const { return rateHz_; }
    unsigned Vector() const { return vector_; }
    bool IsConnected(std::size_t inlet) const { return counts_[inlet] != 0; }

    /// Input samples of the next vector, to be written by the caller; silent if not connected.
    std::span<double> Input(std::size_t inlet) { return {inputs_[inlet], vector_}; }
    /// Runs the object for one vector, with denormals flushed to zero.
    void Run();
    /// Output samples of the last vector; a loud constant where the object wrote nothing.
    std::span<const double> Output(std::size_t outlet) const { return {outputs_[outlet], vector_}; }

private:
    void Announce();  // makes a new DSP chain with changed settings if audio runs
    void PlaceVectors();

    Object& object_;
    double rateHz_;
    unsigned vector_;
    std::vector<short> counts_;  // of the inlets, then of the outlets
    bool running_ = false;
    bool isSwitchedOff_ = false;  // whether Stop was called after the last Start
    std::unique_ptr<HostApi::DspChain> chain_;
    std::vector<double> memory_;  // the samples of all vectors, vector_ frames each
    std::vector<double*> inputs_;
    std::vector<double*> outputs_;
};

}  // namespace Quilo::Host
