// SPDX-License-Identifier: MIT
#include "filterdesign/VelkDspBiquadCells.h"

#include "text/VelkDspException.h"
#include "text/VelkDspLog.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tav {

namespace {

constexpr std::size_t kMemoryValues = 6;
constexpr std::size_t kTableValues = 5;
constexpr std::size_t kFileValues = 4;
constexpr double kSmallestLeader = 1e-12;

void CheckValues(std::span<const double> values, bool countFits) {
    if (!countFits) throw Exception("number of filter coefficients fits no cells");
    if (!std::ranges::all_of(values, [](double v) { return std::isfinite(v); })) {
        throw Exception("filter coefficient is not finite");
    }
}

/// Divides numerator and denominator by a0.
BiquadCell MakeCell(double b0, double b1, double b2, double a0, double a1, double a2) {
    if (a0 == 0.0) throw Exception("filter cell without a leading coefficient");
    const auto part = [a0](double value) { return static_cast<float>(value / a0); };
    return {part(b0), part(b1), part(b2), part(a1), part(a2)};
}

BiquadCells ReadFile(std::span<const double> values, bool exchanged) {
    CheckValues(values, values.size() % kFileValues == 1);
    BiquadCells cells;
    for (std::size_t i = 1; i < values.size(); i += kFileValues) {
        const double* const first = values.data() + i;
        const double* const b = exchanged ? first + 2 : first;
        const double* const a = exchanged ? first : first + 2;
        const double gain = i == 1 ? values.front() : 1.0;
        cells.push_back(MakeCell(gain, gain * b[0], gain * b[1], 1.0, a[0], a[1]));
    }
    return cells;
}

std::vector<BiquadCells> ReadSet(std::span<const std::vector<double>> responses, bool exchanged) {
    std::vector<BiquadCells> set;
    for (const auto& values : responses) set.push_back(ReadFile(values, exchanged));
    return set;
}

bool IsStableSet(const std::vector<BiquadCells>& set) {
    return std::ranges::all_of(
        set, [](const BiquadCells& cells) { return std::ranges::all_of(cells, IsStable); });
}

}  // namespace

BiquadCells CellsFromMemory(std::span<const double> values) {
    CheckValues(values, values.size() % kMemoryValues == 0);
    BiquadCells cells;
    for (auto rest = values; !rest.empty(); rest = rest.subspan(kMemoryValues)) {
        cells.push_back(MakeCell(rest[0], rest[1], rest[2], rest[3], rest[4], rest[5]));
    }
    return cells;
}

BiquadCells CellsFromTable(std::span<const double> values) {
    CheckValues(values, values.size() % kTableValues == 0);
    BiquadCells cells;
    for (auto rest = values; !rest.empty(); rest = rest.subspan(kTableValues)) {
        cells.push_back(MakeCell(rest[0], rest[1], rest[2], 1.0, rest[3], rest[4]));
    }
    return cells;
}

BiquadCells CellsFromFile(std::span<const double> values) { return ReadFile(values, false); }

std::vector<double> CellsToMemory(std::span<const BiquadCell> cells) {
    std::vector<double> values;
    for (const BiquadCell& c : cells) {
        for (const float v : {c.b0, c.b1, c.b2, 1.f, c.a1, c.a2}) {
            values.push_back(static_cast<double>(v));
        }
    }
    return values;
}

std::vector<double> CellsToTable(std::span<const BiquadCell> cells) {
    std::vector<double> values;
    for (const BiquadCell& c : cells) {
        for (const float v : {c.b0, c.b1, c.b2, c.a1, c.a2}) {
            values.push_back(static_cast<double>(v));
        }
    }
    return values;
}

std::vector<double> CellsToFile(std::span<const BiquadCell> cells) {
    std::vector<double> values{1.0};
    for (const BiquadCell& c : cells) {
        const auto b0 = static_cast<double>(c.b0);
        const auto b1 = static_cast<double>(c.b1);
        const auto b2 = static_cast<double>(c.b2);
        const double largest = std::max({std::abs(b0), std::abs(b1), std::abs(b2)});
        if (b0 == 0.0 || std::abs(b0) < kSmallestLeader * largest) {
            throw Exception("filter cell cannot be written with a gain in front");
        }
        values.front() *= b0;
        values.insert(values.end(),
                      {b1 / b0, b2 / b0, static_cast<double>(c.a1), static_cast<double>(c.a2)});
    }
    return values;
}

bool IsStable(const BiquadCell& cell) noexcept {
    return std::abs(cell.a2) < 1.f && std::abs(cell.a1) < 1.f + cell.a2;
}

std::vector<BiquadCells> CellSetFromFile(std::span<const std::vector<double>> responses) {
    std::vector<BiquadCells> set = ReadSet(responses, false);
    if (IsStableSet(set)) return set;
    set = ReadSet(responses, true);
    if (!IsStableSet(set)) throw Exception("filter set is unstable");
    Log("filter set: denominators come before numerators");
    return set;
}

}  // namespace tav
