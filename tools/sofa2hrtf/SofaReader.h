// SPDX-License-Identifier: MIT
// Reads a SOFA file as far as head-related filters go.
#pragma once

#include "math/VelkDspCartesian.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

struct MYSOFA_HRTF;

namespace SofaTool {

/// One direction.
struct Measurement {
    tav::CartesianVector position;           ///< metres: x right, y front, z up
    std::array<std::vector<float>, 2> ears;  ///< left, right; delays of the file are in them
};

struct SofaSet {
    double rateHz = 0.0;
    std::vector<Measurement> measurements;  ///< all responses have one length
    std::map<std::string, std::string> attributes;
    std::vector<std::string> warnings;
};

/// Throws: tav::Exception for a file that is too large to be read.
void CheckFileSize(std::uintmax_t numBytes);
/// The signature of HDF5, addresses of 8 bytes, and an announced end that is there: what has to be
/// right before libmysofa looks at the bytes of a file.
/// Throws: tav::Exception.
void CheckContainer(std::span<const char> bytes);
/// Reads the bytes of a file that follows the convention SimpleFreeFieldHRIR. What libmysofa is
/// given has been checked for signature and size; what it returns is checked field by field.
/// Throws: tav::Exception that names the field and what is wrong with it; std::bad_alloc.
SofaSet ReadSofa(std::span<const char> bytes);
/// The second half of it: what libmysofa has read, checked field by field.
SofaSet SetOf(const MYSOFA_HRTF& hrtf);

}  // namespace SofaTool
