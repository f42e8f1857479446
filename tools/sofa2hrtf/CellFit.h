// SPDX-License-Identifier: MIT
// Second-order cells with the level of a measured response.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"

#include <cstddef>
#include <span>

namespace SofaTool {

struct CellFit {
    tav::BiquadCells cells;
    double rmsDb = 0.0;  ///< against the smoothed level, over the points of the fit
    double worstDb = 0.0;
};

/// Cells of minimum phase. The level, smoothed over a sixth of an octave, is met at 128 points that
/// are spread as hearing resolves frequencies, from 200 Hz to 16 kHz or 0.45 of the rate. All-pole
/// models of shares of the level and of its inverse, on a warped axis, are where damped
/// Gauss-Newton steps begin; these move radii and angles of poles and zeros, at most 0.985 from the
/// centre. Of three shares the one that ends best is taken.
/// @param numCells  2 .. 24      Thread: any.
CellFit FitCells(std::span<const float> response, double rateHz, std::size_t numCells);

}  // namespace SofaTool
