// SPDX-License-Identifier: MIT
// The channels of all input files of a run, numbered consecutively.
#pragma once

#include "containers/VelkDspAudioBuffer.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Inputs {
public:
    /// Reads every file, of any kind that tav::ReadAudioFile knows; their channels append.
    /// @param loop  files repeat; otherwise they are silent after their end
    /// Throws: tav::Exception for an unreadable file, Fault (WrongInput) for rates that differ or
    /// that are not allowed for --rate.
    Inputs(std::span<const std::string> files, bool loop);

    std::size_t NumChannels() const { return channels_.size(); }
    /// Hertz; 0 without files.
    double SampleRate() const { return files_.empty() ? 0 : files_.front().SampleRate(); }
    /// One line for each file that is damaged or shorter than its header promises.
    const std::vector<std::string>& Notes() const { return notes_; }
    /// Of the longest file; 0 without files.
    std::size_t NumFrames() const;

    /// Copies samples of a channel, from `frame` on.
    void Read(std::size_t channel, std::uint64_t frame, std::span<double> samples) const;

private:
    struct Channel {
        std::size_t file;
        unsigned channel;
    };

    std::vector<tav::AudioBuffer> files_;
    std::vector<Channel> channels_;
    std::vector<std::string> notes_;
    bool loop_;
};

}  // namespace Quilo::Host
