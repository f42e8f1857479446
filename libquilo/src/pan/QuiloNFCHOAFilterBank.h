// SPDX-License-Identifier: MIT
// The filters of near-field compensated panners for all orders: what all sources share.
//
// Every pair of poles is a section in integrator form whose poles depend on the array radius alone;
// the distance of a source enters through the output mix, so it may move every sample. The
// high-pass of an order is run interleaved with its near-field filter, a pair of the one before a
// pair of the other: either filter as a whole first would drown the signal in rounding noise from
// order 7 on.
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

/// Values that move on a grid of samples and hold in between.
struct NFCHOASettings {
    float scale = 0.f;     // c / (2 R rate)
    float highPass = 1.f;  // 0: off and sources capped, 1: on; see NFCHOAHighPassFilterBank
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
        std::size_t first = 0;  // section
        float scale = -1.f;
    };

    std::vector<tav::NearFieldSection> sections_;
    std::vector<float> magnitudes_;  // of the poles, one per section
    std::vector<Order> orders_;      // then one beyond the last
};

/// The high-pass of one order: Butterworth, of that order, from where its gain passes 20 dB.
class NFCHOAHighPass {
public:
    explicit NFCHOAHighPass(const NearFieldOrder& order) : order_(&order) {}

    /// @param ratios, logRatios  R / r and its logarithm      @param g  0 where there is no
    /// high-pass
    void Compute(const NFCHOARow& ratios,
                 const NFCHOARow& logRatios,
                 const NFCHOASettings& settings,
                 NFCHOARow& g) const noexcept TAV_NONBLOCKING;

    /// The largest ratio that the near-field filter may use. Without its high-pass the gain at
    /// 0 Hz would pass 40 dB.  @param highPass  of the settings
    float LargestRatio(float highPass) const noexcept TAV_NONBLOCKING;

private:
    const NearFieldOrder* order_;
};

/// The high-passes of all orders. While the switch glides from on to off, the ratios are first
/// taken below their cap, then the limits go down in log frequency to 1 Hz and vanish; so the gain
/// is never larger than off, nor than on.
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
