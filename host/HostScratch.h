// SPDX-License-Identifier: MIT
// A temporary object beside that of the run: what it posts is discarded, and the audio settings are
// restored afterwards.
#pragma once

#include "HostAudioBridge.h"
#include "HostObject.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

/// A temporary object without any effect on the run. Thread: main, between vectors.
class Scratch {
public:
    /// @param box  the class name and its arguments
    explicit Scratch(std::span<const Atom> box);
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// False when it could not be made.
    bool IsMade() const { return object_.Get() != nullptr; }
    const Object& Made() const { return object_; }

    /// Copies the visible settable attributes of `other`, except those named. Values for sources
    /// that this object does not have are left out.
    void CopyAttributes(const Object& other, std::span<const std::string_view> except);
    void Send(const std::vector<Atom>& message);

    /// The outputs for a constant 1 in the first inlet, when they have settled.
    std::span<const float> Gains();

private:
    HostApi::AudioSettings before_ = HostApi::GetAudioSettings();
    Object object_;
    std::unique_ptr<HostApi::DspChain> chain_;
    std::vector<double> memory_;
    std::vector<double*> inputs_, outputs_;
    std::vector<float> gains_;
};

}  // namespace Quilo::Host
