// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfResponses.h"

#include "hrtf/QuiloHrtfResampling.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <utility>

namespace Quilo {

namespace {

constexpr float kRateTolerance = 0.001f;  // of the rate: no ear tells cells that far off
constexpr std::size_t kMemoryValues = 6;
constexpr std::size_t kShortestCut = 16;
constexpr std::size_t kLongestCut = 8192;

bool RatesAgree(float a, float b) { return std::abs(a / b - 1.f) <= kRateTolerance; }

tav::BiquadCells ReadCells(std::span<const float> values) {
    tav::BiquadCells cells;
    for (; values.size() >= kMemoryValues; values = values.subspan(kMemoryValues)) {
        cells.push_back({values[0], values[1], values[2], values[4], values[5]});  // a0 is 1
    }
    return cells;
}

/// Makes the finite responses of a set.
class TapsMaker {
public:
    TapsMaker(const HrtfData& set, const HrtfFormat& format) : set_(set), format_(format) {
        if (set.filterType == Hrtfs::FilterType::BiquadCells) return;
        if (RatesAgree(set.samplingRate, format.rateHz)) return;
        resampler_.emplace(set.filtersLength, set.samplingRate, format.rateHz);
    }

    /// @param stored  the filter of one ear, as in the set
    std::vector<float> Make(std::span<const float> stored) const {
        std::vector<float> taps = Whole(stored);
        const auto longest = std::clamp<std::size_t>(format_.maxTaps, kShortestCut, kLongestCut);
        if (format_.maxTaps != 0 && taps.size() > longest) {
            taps.resize(longest);
            TaperEnd(taps);
        }
        return taps;
    }

private:
    std::vector<float> Whole(std::span<const float> stored) const {
        if (set_.filterType == Hrtfs::FilterType::BiquadCells) {
            return MinimumPhaseResponse(ReadCells(stored), set_.samplingRate, format_.rateHz);
        }
        if (resampler_) return resampler_->Apply(stored);
        return {stored.begin(), stored.end()};
    }

    const HrtfData& set_;
    const HrtfFormat& format_;
    std::optional<ResponseResampler> resampler_;
};

}  // namespace

HrtfResponses::HrtfResponses(std::shared_ptr<const Hrtf> set, const HrtfFormat& format)
    : set_(std::move(set)),
      format_(format),
      needDelays_(set_->Data().filterType == Hrtfs::FilterType::BiquadCells) {
    const HrtfData& data = set_->Data();
    if (needDelays_ && format.realisation != HrtfRealisation::Fir &&
        RatesAgree(data.samplingRate, format.rateHz)) {
        for (const HrtfPoint& point : data.points) {
            cells_.push_back({{ReadCells(point.filters.Row(0)), ReadCells(point.filters.Row(1))}});
            for (const auto& ear : cells_.back().ears)
                maxLength_ = std::max(maxLength_, ear.size());
        }
        return;
    }
    // A symmetric set has every filter twice.
    const TapsMaker maker(data, format);
    std::map<std::vector<float>, tav::FirResponse> made;
    const auto responseOf = [&](std::span<const float> stored) -> const tav::FirResponse& {
        std::vector<float> key(stored.begin(), stored.end());
        const auto found = made.find(key);
        if (found != made.end()) return found->second;
        tav::FirResponse response(maker.Make(stored));
        maxLength_ = std::max(maxLength_, response.NumTaps());
        return made.emplace(std::move(key), std::move(response)).first->second;
    };
    for (const HrtfPoint& point : data.points) {
        taps_.push_back({{responseOf(point.filters.Row(0)), responseOf(point.filters.Row(1))}});
    }
}

std::shared_ptr<const HrtfResponses> HrtfResponses::Of(const std::shared_ptr<const Hrtf>& set,
                                                       const HrtfFormat& format) {
    static std::mutex mutex;
    static std::vector<std::weak_ptr<const HrtfResponses>> known;
    const auto find = [&]() -> std::shared_ptr<const HrtfResponses> {
        for (const auto& weak : known) {
            auto responses = weak.lock();
            if (responses && responses->Set() == set && responses->Format() == format) {
                return responses;
            }
        }
        return nullptr;
    };
    {
        const std::lock_guard lock(mutex);
        if (auto responses = find()) return responses;
    }
    // Without the lock: those who only look something up do not wait for the computation.
    auto made = std::make_shared<const HrtfResponses>(set, format);
    const std::lock_guard lock(mutex);
    if (auto responses = find()) return responses;
    std::erase_if(known, [](const auto& responses) { return responses.expired(); });
    known.push_back(made);
    return made;
}

}  // namespace Quilo
