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
/// gives silence.  Thread: main.
class Chain {
public:
    /// All outlets count as connected, inlets as not.
    Chain(Object& object, double rateHz, unsigned vector);
    ~Chain() { Stop(); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    // Set-up; while audio runs, each makes a new chain, as a changed cord does in a patcher.
    void SetConnected(std::size_t inlet, bool connected);  // from 0
    void SetRate(double hz);
    void SetVector(unsigned frames);

    /// A new chain where audio runs: another object stands in the box.
    void Refresh() {
        if (running_) Start();
    }

    void Start();
    void Stop();
    /// Start at the beginning of a run, unless audio has been switched off before: Stop.
    void Begin();

    double Rate() const { return rateHz_; }
    unsigned Vector() const { return vector_; }
    bool IsConnected(std::size_t inlet) const { return counts_[inlet] != 0; }

    /// What the inlet gets in the next vector; written by the caller, silent where not connected.
    std::span<double> Input(std::size_t inlet) { return {inputs_[inlet], vector_}; }
    /// Runs the object for one vector, with denormals flushed to zero.
    void Run();
    /// What the object wrote; noise of the host's own where it wrote nothing.
    std::span<const double> Output(std::size_t outlet) const { return {outputs_[outlet], vector_}; }

private:
    void Announce();  // changed settings, by a new chain where audio runs
    void PlaceVectors();

    Object& object_;
    double rateHz_;
    unsigned vector_;
    std::vector<short> counts_;  // of the inlets, then of the outlets
    bool running_ = false;
    bool isSwitchedOff_ = false;  // the last of Start and Stop was Stop
    std::unique_ptr<HostApi::DspChain> chain_;
    std::vector<double> memory_;  // of the vectors; at all times as vector_ has it
    std::vector<double*> inputs_;
    std::vector<double*> outputs_;
};

}  // namespace Quilo::Host
