// SPDX-License-Identifier: MIT
#include "reference/PlainFourier.h"

#include <algorithm>
#include <numbers>

namespace Plain {

namespace {

std::vector<std::complex<double>> Transform(const std::vector<std::complex<double>>& x) {
    const std::size_t half = x.size() / 2;
    if (half == 0) return x;
    std::vector<std::complex<double>> even, odd, all(x.size());
    for (std::size_t k = 0; k < half; ++k) {
        even.push_back(x[2 * k]);
        odd.push_back(x[2 * k + 1]);
    }
    even = Transform(even);
    odd = Transform(odd);
    for (std::size_t k = 0; k < half; ++k) {
        const double turn = -std::numbers::pi * static_cast<double>(k) / static_cast<double>(half);
        const std::complex<double> twisted = std::polar(1.0, turn) * odd[k];
        all[k] = even[k] + twisted;
        all[k + half] = even[k] - twisted;
    }
    return all;
}

}  // namespace

std::vector<std::complex<double>> Spectrum(const std::vector<double>& signal, std::size_t size) {
    std::vector<std::complex<double>> samples(size);
    std::copy_n(signal.begin(), std::min(size, signal.size()), samples.begin());
    samples = Transform(samples);
    samples.resize(size / 2 + 1);
    return samples;
}

}  // namespace Plain
