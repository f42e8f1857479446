// SPDX-License-Identifier: MIT
// Second-order cells, and the three layouts in which measured filters store them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// y = b0 x + b1 x[-1] + b2 x[-2] - a1 y[-1] - a2 y[-2], for the sample rate it was made for.
struct BiquadCell {
    float b0 = 1.f;
    float b1 = 0.f;
    float b2 = 0.f;
    float a1 = 0.f;
    float a2 = 0.f;

    bool operator==(const BiquadCell&) const = default;
};

using BiquadCells = std::vector<BiquadCell>;

/// Layouts:
/// memory, 6 values per cell  b0 b1 b2 a0 a1 a2
/// table, 5 values per cell   b0 b1 b2 a1 a2, a0 is 1
/// file, 1 + 4 per cell       the product of all b0, then b1 b2 a1 a2 of the cells with b0 = a0 = 1
/// Readers compute in double and store floats.
/// Throws: tav::Exception for a count that does not fit the layout, an a0 of 0, a value that is not
/// finite.  Thread: control.
BiquadCells CellsFromMemory(std::span<const double> values);
BiquadCells CellsFromTable(std::span<const double> values);
/// The product of all b0 goes into the numerator of the first cell.
BiquadCells CellsFromFile(std::span<const double> values);

std::vector<double> CellsToMemory(std::span<const BiquadCell> cells);
std::vector<double> CellsToTable(std::span<const BiquadCell> cells);
/// Throws: tav::Exception for a b0 below 1e-12 of the cell's largest b.
std::vector<double> CellsToFile(std::span<const BiquadCell> cells);

bool IsStable(const BiquadCell& cell) noexcept;

/// Reads a whole set of responses in the file layout. Some files store a1 a2 before b1 b2 without
/// saying so. If a set is unstable as it stands, but stable with these pairs exchanged, it is read
/// with the pairs exchanged, and a line in the log tells it.
/// @param responses  as CellsFromFile takes them
/// Throws: tav::Exception as CellsFromFile, and for a set that is unstable both ways.
std::vector<BiquadCells> CellSetFromFile(std::span<const std::vector<double>> responses);

}  // namespace tav
