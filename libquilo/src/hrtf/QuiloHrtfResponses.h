// SPDX-License-Identifier: MIT
// The filters of an HRTF set, made ready to run at the rate of a host.
#pragma once

#include "filterdesign/VelkDspBiquadCells.h"
#include "hrtf/QuiloHrtf.h"
#include "processors/VelkDspFirResponse.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace Quilo {

/// How the biquad cells of a set run. At another rate than theirs they always run as finite
/// responses: mapped to that rate, their poles would miss by decibels.
enum class HrtfRealisation : std::int32_t { Auto, Cells, Fir };

struct HrtfFormat {
    float rateHz = 44100.f;
    HrtfRealisation realisation = HrtfRealisation::Auto;
    std::uint32_t maxTaps = 0;  ///< longer responses are cut; 0: whole

    friend bool operator==(const HrtfFormat&, const HrtfFormat&) = default;
};

/// One direction: left, right.
template <class Filter>
struct HrtfEars {
    std::array<Filter, 2> ears;

    friend bool operator==(const HrtfEars&, const HrtfEars&) = default;
};

/// Null of null.
template <class Filter>
const Filter* EarOf(const HrtfEars<Filter>* direction, std::size_t ear) noexcept TAV_NONBLOCKING {
    return direction != nullptr ? &direction->ears[ear] : nullptr;
}

/// Constant, so that any number of panners and both threads share one.
class HrtfResponses {
public:
    using Cells = HrtfEars<tav::BiquadCells>;
    using Taps = HrtfEars<tav::FirResponse>;

    /// Takes up to some tenths of a second, unless somebody has responses of that set and format
    /// already.
    /// @param set  two channels, cells or finite responses
    /// Thread: control.  Throws: std::bad_alloc.
    static std::shared_ptr<const HrtfResponses> Of(const std::shared_ptr<const Hrtf>& set,
                                                   const HrtfFormat& format);

    HrtfResponses(std::shared_ptr<const Hrtf> set, const HrtfFormat& format);

    const std::shared_ptr<const Hrtf>& Set() const noexcept { return set_; }
    const HrtfFormat& Format() const noexcept { return format_; }
    std::size_t NumPoints() const noexcept { return cells_.empty() ? taps_.size() : cells_.size(); }
    /// Stands for a point whose responses let everything pass unchanged.
    static constexpr std::uint32_t kWire = ~std::uint32_t{0} - 1;

    /// Cells, or finite responses otherwise.
    bool AreCells() const noexcept { return !cells_.empty(); }
    /// The responses do not hold the delays of the ears.
    bool NeedDelays() const noexcept { return needDelays_; }
    std::size_t MaxCells() const noexcept { return maxLength_; }
    std::size_t MaxTaps() const noexcept { return maxLength_; }

    /// Null beyond the points, but for kWire.  Thread: any.
    const Cells* CellsOf(std::size_t point) const noexcept TAV_NONBLOCKING {
        return point < cells_.size() ? &cells_[point] : point == kWire ? &wireCells_ : nullptr;
    }
    const Taps* TapsOf(std::size_t point) const noexcept TAV_NONBLOCKING {
        return point < taps_.size() ? &taps_[point] : point == kWire ? &wireTaps_ : nullptr;
    }

private:
    std::shared_ptr<const Hrtf> set_;
    HrtfFormat format_;
    bool needDelays_;
    std::size_t maxLength_ = 0;  // cells or taps of the longest filter
    std::vector<Cells> cells_;
    std::vector<Taps> taps_;
    const Cells wireCells_{{{tav::BiquadCells{{}}, tav::BiquadCells{{}}}}};
    const Taps wireTaps_{
        {{tav::FirResponse(std::vector<float>{1.f}), tav::FirResponse(std::vector<float>{1.f})}}};
};

}  // namespace Quilo
