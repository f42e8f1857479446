// SPDX-License-Identifier: MIT
// The spectrum of a response, in double precision.
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

namespace Plain {

/// Bins 0 .. size / 2 of the signal, cut or continued with zeros to `size`, a power of two.
std::vector<std::complex<double>> Spectrum(const std::vector<double>& signal, std::size_t size);

}  // namespace Plain
