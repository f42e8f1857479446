// SPDX-License-Identifier: MIT
// The audio files of a run as one row of channels.
#pragma once

#include "containers/VelkDspAudioBuffer.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Quilo::Host {

class Inputs {
public:
    /// Reads every file; their channels append.
    /// @param loop  a file that ends begins again, else it is silent from there on
    /// Throws: tav::Exception for an unreadable file, Fault (WrongInput) for rates that differ or
    /// that --rate would refuse.
    Inputs(std::span<const std::string> files, bool loop);

    std::size_t NumChannels() const { return channels_.size(); }
    /// Hertz; 0 without files.
    double SampleRate() const { return files_.empty() ? 0 : files_.front().SampleRate(); }
    /// Of the longest file; 0 without files.
    std::size_t NumFrames() const;

    /// What a channel holds from a frame on.
    void Read(std::size_t channel, std::uint64_t frame, std::span<double> samples) const;

private:
    struct Channel {
        std::size_t file;
        unsigned channel;
    };

    std::vector<tav::AudioBuffer> files_;
    std::vector<Channel> channels_;
    bool loop_;
};

}  // namespace Quilo::Host
