// SPDX-License-Identifier: MIT
// Second-order cells with the level of a measured response.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"

#include <complex>
#include <cstddef>
#include <span>
#include <vector>

namespace SofaTool {

struct CellFit {
    tav::BiquadCells cells;
    /// Against the smoothed level, at the points of the fit from 200 Hz to 16 kHz.
    double rmsDb = 0.0;
    double worstDb = 0.0;
};

/// Fits cells of minimum phase to responses of one rate and one length. What they follow is the
/// level, smoothed over the equivalent rectangular bandwidth of hearing. Below 200 Hz they keep the
/// level that it has there: what loudspeakers of a measurement lack in the bass is not filtered in.
/// Up to 0.45 of the rate and 20 kHz they follow it with less weight.
///
/// Steps of Levenberg and Marquardt begin at cells that do nothing, spread over the spectrum, and
/// move two unknowns of each numerator and denominator. Every pair of unknowns is a pair of roots,
/// real or complex, at most 0.985 from the centre. Of some beginnings the best end is taken.
/// @see "Derivation of auditory filter shapes from notched-noise data", Hearing Research 47, 1990,
/// for the bandwidths
class CellFitter {
public:
    /// @param numTaps  of the longest response      @param numCells  2 .. 24
    CellFitter(double rateHz, std::size_t numTaps, std::size_t numCells);

    /// Thread: any.
    CellFit Fit(std::span<const float> response) const;

private:
    using Row = std::vector<double>;
    class Descent;

    /// The bins of a spectrum that make up the level at a point of the grid, and their shares.
    struct Band {
        std::size_t first = 0;
        Row shares;
    };
    struct Point {
        double hz, weight;
        std::complex<double> turn;  // exp(j 2 pi hz / rate)
        Band band;
    };

    Row LevelsOf(std::span<const float> response) const;
    Row StartFor(double lowestHz, double highestHz, double quality) const;
    CellFit ResultOf(const Row& unknowns, const Row& levels) const;

    double rateHz_;
    std::size_t numCells_;
    std::size_t size_;  // of the transform
    std::vector<Point> points_;
};

}  // namespace SofaTool
