// SPDX-License-Identifier: MIT
// The filters of near-field compensated panners for all orders: what all sources share.
//
// Every pair of poles is a section in integrator form whose poles depend on the array radius alone;
// the distance of a source enters through the output mix, so it may move every sample. The
// high-pass of an order is run interleaved with its near-field filter, a pair of the one before a
// pair of the other. With either filter as a whole first, the values between the two would be so
// large or so small that from order 7 on rounding noise is louder than the signal.
#pragma once

#include "kernels/VelkDspFilterKernels.h"
#include "laws/QuiloNearFieldLaw.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace Quilo {

/// A value per source of a group.
using NFCHOARow = std::array<float, static_cast<std::size_t>(tav::kSourceLanes)>;

/// Values that change at the points of a grid (kNFCHOAGrid) and stay the same in between.
struct NFCHOASettings {
    float scale = 0.f;     // speed of sound / (2 * array radius * rate)
    float highPass = 1.f;  // 0: off, ratios are limited; 1: on; see NFCHOAHighPassFilterBank
    float rateHz = 44100.f;

    friend bool operator==(const NFCHOASettings&, const NFCHOASettings&) = default;
};

/// The near-field filters of the orders 1 to a highest one.
/// Thread: the constructor control, the rest audio.
class NFCHOAFilterBank {
public:
    explicit NFCHOAFilterBank(unsigned order);

    /// Sections of all orders up to `order`.
    std::size_t NumSections(unsigned order) const noexcept TAV_NONBLOCKING;
    /// @param order  1 or above      @param scale  that of the settings
    std::span<const tav::NearFieldSection> Sections(unsigned order,
                                                    float scale) noexcept TAV_NONBLOCKING;

private:
    struct Order {
        std::size_t first = 0;  // index of its first section
        float scale = -1.f;     // for which the g of its sections were computed
    };

    std::vector<tav::NearFieldSection> sections_;
    std::vector<float> magnitudes_;  // of the poles, one per section
    std::vector<Order> orders_;      // and one more, for the end of the last one's sections
};

/// The high-pass of one order: a Butterworth filter of that order. Its corner, called its limit, is
/// the frequency below which the near-field filter alone would amplify by more than 20 dB.
class NFCHOAHighPass {
public:
    explicit NFCHOAHighPass(const NearFieldOrder& order) : order_(&order) {}

    /// @param ratios, logRatios  array radius / distance, and its logarithm
    /// @param g  receives pi * limit in Hz / rate of each source; 0 where it needs no high-pass
    void Compute(const NFCHOARow& ratios,
                 const NFCHOARow& logRatios,
                 const NFCHOASettings& settings,
                 NFCHOARow& g) const noexcept TAV_NONBLOCKING;

    /// False: Compute gives 0 for all.  @param largestLog  of the ratios
    bool IsUsed(float largestLog) const noexcept TAV_NONBLOCKING {
        return largestLog > order_->LeastLimitedLog();
    }

    /// The largest ratio that the near-field filter may use: without the high-pass, the one that
    /// amplifies 0 Hz by 40 dB.  @param highPass  of the settings
    float LargestRatio(float highPass) const noexcept TAV_NONBLOCKING;

private:
    const NearFieldOrder* order_;
};

/// The high-passes of all orders. Their switch glides from on (1) to off (0) in two halves: from 1
/// to 0.5 the largest ratio comes down to the one allowed without a high-pass, from 0.5 to 0 the
/// limits come down, evenly in the logarithm, to 1 Hz and then vanish. So on the way the gain is
/// never larger than it is in one of the two positions.
class NFCHOAHighPassFilterBank {
public:
    explicit NFCHOAHighPassFilterBank(unsigned order);
    /// @param order  1 or above
    const NFCHOAHighPass& Of(unsigned order) const noexcept TAV_NONBLOCKING {
        return orders_[order - 1];
    }

private:
    std::vector<NFCHOAHighPass> orders_;
};

}  // namespace Quilo
