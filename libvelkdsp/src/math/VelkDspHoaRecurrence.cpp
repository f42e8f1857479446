// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaRecurrence.h"

#include <cmath>

namespace tav {

namespace {

using Normalization = SphericalHarmonic::Normalization;

double Factor(unsigned n, unsigned m, Normalization normalization) {
    return SphericalHarmonic::ExactConversionFactor(n, static_cast<int>(m), Normalization::N3D,
                                                    normalization);
}

/// The step in a normalisation; for n <= m a step that leaves the value of a lane unchanged.
HoaStep NormalisedStep(unsigned n, unsigned m, Normalization normalization) {
    if (n <= m) return {0.0, -1.0};
    const double to = Factor(n, m, normalization);
    if (to == 0.0) return {};  // later orders of this degree are 0 as well
    HoaStep step = StepToOrder(n, m);
    step.last *= to / Factor(n - 1, m, normalization);
    if (n > m + 1) step.before *= to / Factor(n - 2, m, normalization);
    return step;
}

}  // namespace

HoaStep StepToOrder(unsigned n, unsigned m) {
    const double n2 = static_cast<double>(n) * n;
    const double m2 = static_cast<double>(m) * m;
    const double before2 = (n - 1.0) * (n - 1.0);
    const double last = std::sqrt((4.0 * n2 - 1.0) / (n2 - m2));
    if (n == m + 1) return {last, 0.0};
    return {last, last * std::sqrt((before2 - m2) / (4.0 * before2 - 1.0))};
}

double SectoralStep(unsigned m) {
    if (m == 1) return std::sqrt(3.0);  // with the factor sqrt(2) of all harmonics with m > 0
    return std::sqrt((2.0 * m + 1.0) / (2.0 * m));
}

HoaRecurrence::HoaRecurrence(unsigned numOrders,
                             unsigned numDimensions,
                             Normalization normalization)
    : order(numOrders),
      dimension(numDimensions),
      sectoral((numOrders / kLanes + 1) * kLanes) {
    double value = 1.0;
    for (unsigned m = 0; m <= order; ++m) {
        if (m > 0) value *= SectoralStep(m);
        sectoral[m] = value * Factor(m, m, normalization);
    }
    if (dimension == 3) AddSteps(normalization);
}

void HoaRecurrence::AddSteps(Normalization normalization) {
    std::size_t numRows = 0;
    for (std::size_t first = 0; first <= order; first += kLanes) numRows += order - first;
    last.Resize(numRows * kLanes);
    before.Resize(numRows * kLanes);
    std::size_t index = 0;
    for (unsigned first = 0; first <= order; first += kLanes) {
        for (unsigned n = first + 1; n <= order; ++n) {
            for (unsigned lane = 0; lane < kLanes; ++lane, ++index) {
                const HoaStep step = NormalisedStep(n, first + lane, normalization);
                last[index] = step.last;
                before[index] = step.before;
            }
        }
    }
}

}  // namespace tav
