// SPDX-License-Identifier: MIT
#include "math/VelkDspHoaRecurrence.h"

#include <cmath>

namespace tav {

HoaStep StepToOrder(unsigned n, unsigned m) {
    const double n2 = static_cast<double>(n) * n;
    const double m2 = static_cast<double>(m) * m;
    const double before2 = (n - 1.0) * (n - 1.0);
    const double last = std::sqrt((4.0 * n2 - 1.0) / (n2 - m2));
    if (n == m + 1) return {last, 0.0};
    return {last, last * std::sqrt((before2 - m2) / (4.0 * before2 - 1.0))};
}

double SectoralStep(unsigned m) {
    if (m == 1) return std::sqrt(3.0);  // with the factor of all harmonics that have m > 0
    return std::sqrt((2.0 * m + 1.0) / (2.0 * m));
}

HoaRecurrence::HoaRecurrence(unsigned numOrders,
                             unsigned numDimensions,
                             SphericalHarmonic::Normalization normalization)
    : order(numOrders),
      dimension(numDimensions),
      sectoral(std::size_t{numOrders} + 1) {
    using Normalization = SphericalHarmonic::Normalization;
    const auto factor = [normalization](unsigned n, unsigned m) {
        return SphericalHarmonic::ExactConversionFactor(n, static_cast<int>(m), Normalization::N3D,
                                                        normalization);
    };
    double value = 1.0;
    for (unsigned m = 0; m <= order; ++m) {
        if (m > 0) value *= SectoralStep(m);
        sectoral[m] = value * factor(m, m);
    }
    if (dimension != 3) return;
    steps.Resize(std::size_t{order} * (order + 1) / 2);
    std::size_t index = 0;
    for (unsigned n = 1; n <= order; ++n) {
        for (unsigned m = 0; m < n; ++m, ++index) {
            const double to = factor(n, m);
            if (to == 0.0) continue;  // then all later orders of this degree are left out as well
            const HoaStep step = StepToOrder(n, m);
            steps[index].last = step.last * to / factor(n - 1, m);
            if (n > m + 1) steps[index].before = step.before * to / factor(n - 2, m);
        }
    }
}

}  // namespace tav
