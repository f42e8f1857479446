// SPDX-License-Identifier: MIT
// From measured responses to the filters of a set file.
#pragma once

#include "SofaReader.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace SofaTool {

enum class ItdMethod { Threshold, CrossCorrelation };

struct ConversionOptions {
    std::size_t numCells = 0;  ///< of each ear; 0: finite responses
    std::optional<double> rateHz;
    std::optional<std::size_t> numTaps;  ///< of finite responses
    ItdMethod itd = ItdMethod::Threshold;
    bool truncateOnset = false;  ///< begin with the earliest onset, not a millisecond before it
};

struct ConvertedPoint {
    tav::CartesianVector position;
    std::array<std::vector<double>, 2> filters;  ///< taps, or gain and b1 b2 a1 a2 of each cell
    double delayMs = 0.0;                        ///< of cells: left arrival minus right arrival
};

struct ConvertedSet {
    double rateHz = 0.0;
    std::size_t numCells = 0;
    std::vector<ConvertedPoint> points;
    double worstDb = 0.0;  ///< of the cells, at any point of a fit
    double meanRmsDb = 0.0;
    double worstRmsDb = 0.0;  ///< of any ear
    std::vector<std::string> warnings;
};

/// When an ear first reaches a tenth of its peak, in samples with fractions.
double OnsetOf(std::span<const float> response);

/// Throws: tav::Exception for a response of zeros.
ConvertedSet Convert(SofaSet set, const ConversionOptions& options);

}  // namespace SofaTool
