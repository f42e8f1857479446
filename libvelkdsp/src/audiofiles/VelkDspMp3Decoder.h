// SPDX-License-Identifier: MIT
// Frames of MPEG audio to samples: Layer III and Layer II.
#pragma once

#include "audiofiles/VelkDspMp3FilterBank.h"
#include "audiofiles/VelkDspMp3Header.h"
#include "audiofiles/VelkDspMp3Spectrum.h"
#include "files/VelkDspByteOrder.h"

#include <array>
#include <cstddef>

namespace tav {

/// A frame of 1024 kbit/s at 32 kHz: more than any encoder makes in free format.
inline constexpr std::size_t kMostMp3FrameBytes = 4608;

/// Decodes the frames of one stream in their order.
class Mp3Decoder {
public:
    /// @param frame  whole, with its header  @param channels  room for header.NumFrames() each
    /// @return false where something was missing or impossible; that part of the frame is the
    /// dying away of the one before
    bool Decode(const Mp3Header& header, Bytes frame, float* const* channels) noexcept;

    /// What follows does not continue what came before: bytes between them are missing.
    void ForgetPast() noexcept { reservoirBytes_ = 0; }

private:
    /// Everything of a channel that the next granule needs.
    struct Channel {
        Mp3ScaleFactors factors;
        Mp3Hybrid hybrid;
        Mp3Synthesis synthesis;
    };
    /// Scratch of a granule of one channel.
    struct Work {
        Mp3Quantised values{};
        Mp3Spectrum spectrum;
        Mp3SubbandRows lines{};
        Mp3SubbandRows slots{};
    };

    bool DecodeLayer3(const Mp3Header& header, Bytes frame, float* const* channels) noexcept;
    bool DecodeLayer2(const Mp3Header& header, Bytes frame, float* const* channels) noexcept;
    bool KeepMainData(std::size_t begin, Bytes data) noexcept;
    bool ReadSpectrum(const Mp3Header& header,
                      const Mp3SideInfo& side,
                      std::size_t granule,
                      std::size_t channel,
                      Mp3Granule& info) noexcept;
    void Synthesise(const Mp3BandList& bands,
                    const Mp3Granule& info,
                    std::size_t channel,
                    float* samples) noexcept;

    static constexpr std::size_t kMostPast = 511;  // bytes before a frame that it may refer to
    static constexpr std::size_t kMostFrame = kMostMp3FrameBytes;

    std::array<std::uint8_t, kMostPast + kMostFrame> reservoir_{};
    std::size_t reservoirBytes_ = 0;
    std::size_t mainBits_ = 0;  // position of the next granule in the reservoir
    std::array<Channel, 2> channels_;
    std::array<Work, 2> work_;
};

}  // namespace tav
