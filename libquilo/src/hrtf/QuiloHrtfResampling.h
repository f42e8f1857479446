// SPDX-License-Identifier: MIT
// Measured filters at another sampling rate.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Quilo {

/// The minimum-phase response with the magnitude of the cells, held above 21 kHz and above half of
/// their rate. It is 5.3 ms long, the last quarter tapered.  Thread: control.
std::vector<float> MinimumPhaseResponse(std::span<const tav::BiquadCell> cells,
                                        float cellsRateHz,
                                        float rateHz);

/// The minimum-phase response with the magnitude of a finite one and as many taps, down to 100 dB
/// below its peak. The last quarter is tapered. Beyond 524288 taps the end is 0.  Thread: control.
std::vector<float> MinimumPhaseResponse(std::span<const float> taps);

/// Brings responses of one length to another rate by band-limited interpolation: a windowed sinc of
/// 64 zero crossings on either side, cut at 0.46 of the lower rate. What rings before the first
/// sample of a response is left out.
/// Thread: control.
class ResponseResampler {
public:
    ResponseResampler(std::size_t numTaps, float fromHz, float toHz);

    /// @param taps  as many as announced
    std::vector<float> Apply(std::span<const float> taps) const;

private:
    /// What one output sample takes of the taps from the first one on.
    struct Weights {
        std::size_t firstTap;
        std::vector<float> weights;
    };
    std::vector<Weights> rows_;
};

/// Takes the last quarter to 0 along a quarter of a cosine.
void TaperEnd(std::span<float> taps);

}  // namespace Quilo
