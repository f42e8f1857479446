// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3Spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace tav {
namespace {

constexpr int kLargestValue = 15 + 8191;
constexpr int kLeastQuarters =
    -416;  // gains as powers of 2^(1/4): more than any stream can ask for
constexpr int kMostQuarters = 64;

/// Preemphasis of the long bands (ISO 11172-3, Table B.6).
constexpr int kPreemphasis[22] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 3, 3, 3, 2, 0};

struct RequantisationTables {
    RequantisationTables() {
        for (int value = 0; value <= kLargestValue; ++value) {
            powers[static_cast<std::size_t>(value)] = static_cast<float>(std::pow(value, 4.0 / 3));
        }
        for (int quarters = kLeastQuarters; quarters <= kMostQuarters; ++quarters) {
            gains[static_cast<std::size_t>(quarters - kLeastQuarters)] =
                static_cast<float>(std::exp2(0.25 * quarters));
        }
    }

    std::array<float, kLargestValue + 1> powers{};
    std::array<float, kMostQuarters - kLeastQuarters + 1> gains{};
};

const RequantisationTables& Tables() {
    static const RequantisationTables tables;
    return tables;
}

int QuartersOf(const Mp3Granule& granule,
               const Mp3Band& band,
               std::size_t index,
               const Mp3ScaleFactors& factors) noexcept {
    int factor = factors.values[index];
    int quarters = static_cast<int>(granule.globalGain) - 210;
    if (band.window >= 0) {
        quarters -=
            8 * static_cast<int>(granule.windowGains[static_cast<std::size_t>(band.window)]);
    } else if (granule.hasPreemphasis) {
        factor += kPreemphasis[index];
    }
    return quarters - factor * (granule.factorShift == 0 ? 2 : 4);
}

/// Gains of a band in intensity (ISO 11172-3, 2.4.3.4.9.3; ISO 13818-3, 2.4.3.2).
struct IntensityGains {
    float left = 0, right = 0;
};

struct IntensityTables {
    IntensityTables() {
        for (std::size_t position = 0; position < 7; ++position) {
            const double ratio = std::tan(static_cast<double>(position) * std::numbers::pi / 12);
            mpeg1[position] = position == 6
                                  ? IntensityGains{1, 0}
                                  : IntensityGains{static_cast<float>(ratio / (1 + ratio)),
                                                   static_cast<float>(1 / (1 + ratio))};
        }
        for (std::size_t coarse = 0; coarse < 2; ++coarse) {
            for (std::size_t position = 0; position < 32; ++position) {
                const double step = coarse == 0 ? 0.25 : 0.5;
                const std::size_t halves = (position + 1) / 2;
                const auto quiet =
                    static_cast<float>(std::exp2(-step * static_cast<double>(halves)));
                mpeg2[coarse][position] =
                    position % 2 == 1 ? IntensityGains{quiet, 1} : IntensityGains{1, quiet};
            }
        }
    }

    std::array<IntensityGains, 7> mpeg1{};
    std::array<std::array<IntensityGains, 32>, 2> mpeg2{};
};

IntensityGains GainsOf(const Mp3Header& header,
                       const Mp3Granule& granule,
                       std::size_t position) noexcept {
    static const IntensityTables tables;
    if (header.IsMpeg1()) return tables.mpeg1[std::min<std::size_t>(position, 6)];
    return tables.mpeg2[granule.factorsCompress & 1][std::min<std::size_t>(position, 31)];
}

/// Bands above the last line of the right channel; the windows of short blocks count each by
/// itself.
class IntensityBands {
public:
    IntensityBands(const Mp3BandList& bands, const Mp3Spectrum& right) noexcept {
        std::array<bool, 3> isAudible{};
        for (std::size_t index = bands.numBands; index-- > 0;) {
            const Mp3Band& band = bands.bands[index];
            const auto lines = std::span(right.lines).subspan(band.start, band.width);
            const bool hasLines = band.start < right.numLines &&
                                  std::ranges::any_of(lines, [](float line) { return line != 0; });
            if (band.window >= 0) {
                bool& window = isAudible[static_cast<std::size_t>(band.window)];
                window |= hasLines;
                isIntensity_[index] = !window;
            } else {
                if (hasLines) isAudible.fill(true);
                isIntensity_[index] = std::ranges::none_of(isAudible, [](bool is) { return is; });
            }
        }
    }

    bool operator[](std::size_t index) const noexcept { return isIntensity_[index]; }

private:
    std::array<bool, 39> isIntensity_{};
};

/// The highest bands have no factor of their own.
std::size_t BandOfPosition(const Mp3BandList& bands, std::size_t index) noexcept {
    const bool isLong = bands.bands[index].window < 0;
    if (isLong) return index == 21 ? 20 : index;
    return index + 3 >= bands.numBands ? index - 3 : index;
}

void DecodeMiddleSide(float* left, float* right, std::size_t n) noexcept {
    constexpr auto kHalf = static_cast<float>(1 / std::numbers::sqrt2);
    for (std::size_t k = 0; k < n; ++k) {
        const float middle = left[k] * kHalf, side = right[k] * kHalf;
        left[k] = middle + side;
        right[k] = middle - side;
    }
}

}  // namespace

void RequantiseMp3(const Mp3Quantised& values,
                   std::size_t numLines,
                   const Mp3Granule& granule,
                   const Mp3BandList& bands,
                   const Mp3ScaleFactors& factors,
                   Mp3Spectrum& spectrum) noexcept {
    const RequantisationTables& tables = Tables();
    for (std::size_t index = 0; index < bands.numBands; ++index) {
        const Mp3Band& band = bands.bands[index];
        if (band.start >= numLines) break;
        const int quarters = QuartersOf(granule, band, index, factors);
        const float gain = tables.gains[static_cast<std::size_t>(quarters - kLeastQuarters)];
        const std::size_t end =
            std::min<std::size_t>(numLines, band.start + std::size_t{band.width});
        for (std::size_t line = band.start; line < end; ++line) {
            const int value = values[line];
            const float power = gain * tables.powers[static_cast<std::size_t>(std::abs(value))];
            spectrum.lines[line] = value < 0 ? -power : power;
        }
    }
    std::fill(spectrum.lines.begin() + static_cast<std::ptrdiff_t>(numLines), spectrum.lines.end(),
              0.f);
    spectrum.numLines = numLines;
}

void DecodeMp3Stereo(const Mp3Header& header,
                     const Mp3Granule& granule,
                     const Mp3BandList& bands,
                     const Mp3ScaleFactors& factors,
                     Mp3Spectrum& left,
                     Mp3Spectrum& right) noexcept {
    const bool hasMiddleSide = (header.modeExtension & 2) != 0;
    const std::size_t numLines = std::max(left.numLines, right.numLines);
    if ((header.modeExtension & 1) == 0) {
        if (hasMiddleSide) DecodeMiddleSide(left.lines.data(), right.lines.data(), numLines);
    } else {
        const IntensityBands isIntensity(bands, right);
        for (std::size_t index = 0; index < bands.numBands; ++index) {
            const Mp3Band& band = bands.bands[index];
            float* const l = left.lines.data() + band.start;
            float* const r = right.lines.data() + band.start;
            const std::size_t place = BandOfPosition(bands, index);
            const std::uint8_t position = factors.values[place];
            if (isIntensity[index] && position != factors.noPosition[place]) {
                const IntensityGains gains = GainsOf(header, granule, position);
                for (std::size_t k = 0; k < band.width; ++k) {
                    r[k] = l[k] * gains.right;
                    l[k] *= gains.left;
                }
            } else if (hasMiddleSide) {
                DecodeMiddleSide(l, r, band.width);
            }
        }
    }
    left.numLines = right.numLines = numLines;
}

}  // namespace tav
