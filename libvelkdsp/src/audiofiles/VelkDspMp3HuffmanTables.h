// SPDX-License-Identifier: MIT
// The code tables of Layer III (ISO 11172-3, Table B.7), as the standard prints them.
#pragma once

#include <string_view>

namespace tav {

/// Codes of pairs of values. Larger values than `size` - 1 follow as extra bits of the largest one.
struct Mp3PairTable {
    std::string_view codes;  // words of 0 and 1, (x, y) at size * x + y; none: all pairs are zeros
    unsigned size;
    unsigned numExtraBits;
};

/// @param select  table_select, 0 to 31
const Mp3PairTable& Mp3PairTableOf(unsigned select) noexcept;

/// The codes of four values of 0 or 1, the first being the highest bit of the place.
/// @param select  count1table_select, 0 or 1
std::string_view Mp3QuadCodes(unsigned select) noexcept;

}  // namespace tav
