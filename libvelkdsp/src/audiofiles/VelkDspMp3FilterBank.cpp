// SPDX-License-Identifier: MIT
#include "audiofiles/VelkDspMp3FilterBank.h"

#include "audiofiles/VelkDspMp3Window.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tav {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::size_t kBlockSamples = 36;  // windows of neighbouring granules overlap by half

struct AliasGains {
    AliasGains() {
        constexpr double kCoefficients[] = {-0.6,   -0.535, -0.33,   -0.185,
                                            -0.095, -0.041, -0.0142, -0.0037};
        for (std::size_t k = 0; k < 8; ++k) {
            const double norm = std::sqrt(1 + kCoefficients[k] * kCoefficients[k]);
            own[k] = static_cast<float>(1 / norm);
            other[k] = static_cast<float>(kCoefficients[k] / norm);
        }
    }
    std::array<float, 8> own{}, other{};
};

/// One matrix a block type; row i, column k: what line k adds to sample i.
class BlockMatrices {
public:
    BlockMatrices() {
        for (unsigned type = 0; type < 4; ++type) {
            for (std::size_t i = 0; i < kBlockSamples; ++i) {
                for (std::size_t k = 0; k < kMp3Slots; ++k) {
                    matrices_[type][i * kMp3Slots + k] =
                        static_cast<float>(type == 2 ? OfShort(i, k) : OfLong(type, i, k));
                }
            }
        }
    }

    const float* Of(unsigned blockType) const noexcept { return matrices_[blockType].data(); }

private:
    /// ISO 11172-3, 2.4.3.4.10.2 and 3
    static double OfLong(unsigned type, std::size_t sample, std::size_t line) {
        const auto i = static_cast<double>(sample), k = static_cast<double>(line);
        // The stop window is the start window backwards.
        const bool isStart = type == 1, isStop = type == 3;
        const double place = isStop ? 35 - i : i;
        double window = std::sin(kPi / 36 * (i + 0.5));
        if ((isStart || isStop) && place >= 18) {
            window = place < 24 ? 1 : place < 30 ? std::sin(kPi / 12 * (place - 18 + 0.5)) : 0;
        }
        return window * std::cos(kPi / 72 * (2 * i + 1 + 18) * (2 * k + 1));
    }

    /// Three transforms of 6 lines, each beginning 6 samples behind the one before.
    static double OfShort(std::size_t sample, std::size_t line) {
        const std::size_t window = line % 3, lineOfWindow = line / 3;
        const auto k = static_cast<double>(lineOfWindow);
        const double i = static_cast<double>(sample) - 6 - 6 * static_cast<double>(window);
        if (i < 0 || i >= 12) return 0;
        return std::sin(kPi / 12 * (i + 0.5)) * std::cos(kPi / 24 * (2 * i + 1 + 6) * (2 * k + 1));
    }

    std::array<std::array<float, kBlockSamples * kMp3Slots>, 4> matrices_{};
};

/// The synthesis works on waves V[i] = sum over subbands k of cos((16 + i)(2k + 1) pi / 64) S[k],
/// i = 0 .. 63. Those of even i see mirrored subbands with equal sign, those of odd i with opposite
/// signs, so each needs sums of 16 products only. Even waves stand before odd ones; a part of 32
/// begins with the waves below 32.
struct SynthesisTables {
    SynthesisTables() {
        for (std::size_t odd = 0; odd < 2; ++odd) {
            for (std::size_t k = 0; k < 16; ++k) {
                for (std::size_t m = 0; m < 32; ++m) {
                    const auto angle = static_cast<double>((16 + 2 * m + odd) * (2 * k + 1));
                    cosines[odd][32 * k + m] = static_cast<float>(std::cos(angle * kPi / 64));
                }
            }
            for (std::size_t tap = 0; tap < 16; ++tap) {
                for (std::size_t m = 0; m < 16; ++m) {
                    windows[odd][16 * tap + m] = Mp3WindowValue(32 * tap + 2 * m + odd);
                }
            }
        }
    }

    std::array<std::array<float, 512>, 2> cosines{};  // 16 rows of 32
    std::array<std::array<float, 256>, 2> windows{};  // 16 rows of 16
};

template <class Constants>
const Constants& ConstantsOf() {
    static const Constants constants;
    return constants;
}

}  // namespace

void ReduceMp3Aliases(Mp3SubbandRows& lines, std::size_t numBoundaries) noexcept {
    const auto& gains = ConstantsOf<AliasGains>();
    for (std::size_t k = 0; k < 8; ++k) {
        float* const below = lines.data() + (17 - k) * kMp3Subbands;
        float* const above = lines.data() + k * kMp3Subbands + 1;
        const float own = gains.own[k], other = gains.other[k];
        for (std::size_t boundary = 0; boundary < numBoundaries; ++boundary) {
            const float low = below[boundary], high = above[boundary];
            below[boundary] = low * own - high * other;
            above[boundary] = high * own + low * other;
        }
    }
}

void Mp3Hybrid::Process(const Mp3SubbandRows& lines,
                        std::size_t numSubbands,
                        unsigned blockType,
                        bool isMixed,
                        Mp3SubbandRows& slots) noexcept {
    const auto& matrices = ConstantsOf<BlockMatrices>();
    alignas(64) std::array<float, kBlockSamples * kMp3Subbands> block{};
    const auto numColumns = static_cast<int>((numSubbands + 7) / 8 * 8);
    kernels_.multiply({block.data(), kMp3Subbands, matrices.Of(blockType), kMp3Slots, lines.data(),
                       kMp3Subbands, kBlockSamples, kMp3Slots, numColumns});
    if (isMixed) {
        std::array<float, kBlockSamples * 8> lowest{};
        kernels_.multiply({lowest.data(), 8, matrices.Of(0), kMp3Slots, lines.data(), kMp3Subbands,
                           kBlockSamples, kMp3Slots, 8});
        for (std::size_t i = 0; i < kBlockSamples; ++i) {
            std::copy_n(lowest.data() + 8 * i, 2, block.data() + kMp3Subbands * i);
        }
    }
    const auto filled = static_cast<std::size_t>(numColumns);
    for (std::size_t t = 0; t < kMp3Slots; ++t) {
        const float* const first = block.data() + t * kMp3Subbands;
        const float* const second = block.data() + (kMp3Slots + t) * kMp3Subbands;
        float* const slot = slots.data() + t * kMp3Subbands;
        float* const overlap = overlap_.data() + t * kMp3Subbands;
        for (std::size_t k = 0; k < filled; ++k) {
            slot[k] = first[k] + overlap[k];
            overlap[k] = second[k];
        }
        std::copy(overlap + filled, overlap + kMp3Subbands, slot + filled);
        std::fill(overlap + filled, overlap + kMp3Subbands, 0.f);
        // Every second subband is upside down in frequency.
        if (t % 2 == 0) continue;
        for (std::size_t k = 1; k < kMp3Subbands; k += 2) slot[k] = -slot[k];
    }
}

void Mp3Synthesis::Process(const Mp3SubbandRows& slots, float* samples) noexcept {
    const auto& tables = ConstantsOf<SynthesisTables>();
    std::array<std::array<float, kMp3Slots * 16>, 2> folded{};  // sums, differences
    for (std::size_t t = 0; t < kMp3Slots; ++t) {
        const float* const slot = slots.data() + t * kMp3Subbands;
        for (std::size_t k = 0; k < 16; ++k) {
            folded[0][16 * t + k] = slot[k] + slot[31 - k];
            folded[1][16 * t + k] = slot[k] - slot[31 - k];
        }
    }
    for (std::size_t odd = 0; odd < 2; ++odd) {
        kernels_.multiply({waves_.data() + kPast * kWaves + 32 * odd, kWaves, folded[odd].data(),
                           16, tables.cosines[odd].data(), 32, kMp3Slots, 16, 32});
    }
    for (std::size_t t = 0; t < kMp3Slots; ++t) {
        std::array<std::array<float, 16>, 2> parts{};
        for (std::size_t odd = 0; odd < 2; ++odd) {
            // Taps of even number take the lower waves of their slot, the others the upper ones.
            std::array<const float*, kWindowTaps> rows{};
            for (std::size_t tap = 0; tap < rows.size(); ++tap) {
                rows[tap] = waves_.data() + (kPast + t - tap) * kWaves + 32 * odd + tap % 2 * 16;
            }
            kernels_.window(parts[odd].data(), rows.data(), tables.windows[odd].data());
        }
        float* const to = samples + 32 * t;
        for (std::size_t m = 0; m < 16; ++m) {
            to[2 * m] = parts[0][m];
            to[2 * m + 1] = parts[1][m];
        }
    }
    std::copy_n(waves_.begin() + static_cast<std::ptrdiff_t>(kMp3Slots * kWaves), kPast * kWaves,
                waves_.begin());
}

}  // namespace tav
