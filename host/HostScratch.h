// SPDX-License-Identifier: MIT
// An object for trying things out beside the one that plays: nobody hears what it posts, and the
// audio settings are afterwards what they were before.
#pragma once

#include "HostAudioBridge.h"
#include "HostObject.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

/// Makes objects that one must not notice. Thread: main, between vectors.
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

    /// Sets every attribute that `other` shows and that may be set, but for those named. Values
    /// for more sources than there are here are left out.
    void CopyAttributes(const Object& other, std::span<const std::string_view> except);
    void Send(const std::vector<Atom>& message);

    /// What the outlets give for a constant 1 in the first inlet, once it has arrived.
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
