// SPDX-License-Identifier: MIT
// The spectra of a granule of Layer III, from quantised values to left and right, in the order of
// the stream.
#pragma once

#include "audiofiles/VelkDspMp3SideInfo.h"

#include <array>
#include <cstddef>
#include <span>

namespace tav {

struct Mp3Spectrum {
    std::array<float, kMp3Lines> lines{};
    std::size_t numLines = 0;  // all behind them are 0
};

/// value^(4/3) times the gains of granule and band (ISO 11172-3, 2.4.3.4.7.1).
/// @param numLines  that have values
void RequantiseMp3(const Mp3Quantised& values,
                   std::size_t numLines,
                   const Mp3Granule& granule,
                   const Mp3BandList& bands,
                   const Mp3ScaleFactors& factors,
                   Mp3Spectrum& spectrum) noexcept;

/// Joint stereo of a frame whose mode extension is not 0: bands above the last line of the right
/// channel are in intensity, others are middle and side, as far as the extension says so.
/// @param granule  of the right channel  @param factors  likewise; positions where it is silent
void DecodeMp3Stereo(const Mp3Header& header,
                     const Mp3Granule& granule,
                     const Mp3BandList& bands,
                     const Mp3ScaleFactors& factors,
                     Mp3Spectrum& left,
                     Mp3Spectrum& right) noexcept;

}  // namespace tav
