// SPDX-License-Identifier: MIT
#include "HostInputs.h"

#include "HostFault.h"
#include "HostLimits.h"
#include "HostOutputFile.h"
#include "HostScript.h"
#include "audiofiles/VelkDspAudioFile.h"

#include <algorithm>

namespace Quilo::Host {

Inputs::Inputs(std::span<const std::string> files, bool loop) : loop_(loop) {
    for (const std::string& name : files) {
        tav::AudioFileInfo info;
        files_.push_back(tav::ReadAudioFile(PathOf(name), &info));
        const tav::AudioBuffer& file = files_.back();
        if (info.missingFrames > 0)
            notes_.push_back(name + ": is cut short, " + std::to_string(info.missingFrames) +
                             " of " + std::to_string(file.NumFrames() + info.missingFrames) +
                             " frames are missing");
        if (info.damagedFrames > 0)
            notes_.push_back(name + ": is damaged, " + std::to_string(info.damagedFrames) +
                             " frames could not be decoded");
        if (!IsSamplingRate(file.SampleRate()))
            throw Fault(ExitStatus::WrongInput, name + ": its sampling rate is " +
                                                    AtomSpelling(file.SampleRate()) +
                                                    " Hz, not from 1000 to 768000");
        if (file.SampleRate() != SampleRate())
            throw Fault(ExitStatus::WrongInput, name + ": its sampling rate is " +
                                                    AtomSpelling(file.SampleRate()) +
                                                    " Hz, that of " + files.front() + " " +
                                                    AtomSpelling(SampleRate()) + " Hz");
        for (unsigned k = 0; k < file.NumChannels(); ++k)
            channels_.push_back({files_.size() - 1, k});
    }
}

std::size_t Inputs::NumFrames() const {
    std::size_t longest = 0;
    for (const tav::AudioBuffer& file : files_) longest = std::max(longest, file.NumFrames());
    return longest;
}

void Inputs::Read(std::size_t channel, std::uint64_t frame, std::span<double> samples) const {
    const tav::AudioBuffer& file = files_[channels_[channel].file];
    const std::span<const float> from = file.Channel(channels_[channel].channel);
    const std::uint64_t length = from.size();
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const std::uint64_t at = loop_ && length > 0 ? (frame + k) % length : frame + k;
        samples[k] = at < length ? static_cast<double>(from[at]) : 0.0;
    }
}

}  // namespace Quilo::Host
