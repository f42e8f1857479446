// SPDX-License-Identifier: MIT
// A finite impulse response, prepared for the audio thread.
#pragma once

#include "filterdesign/VelkDspFft.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// The first taps are convolved directly, because that has no latency or is cheaper; the others
/// with partitions of the spectrum. No taps are silence.
class FirResponse {
public:
    static constexpr std::size_t kPartition = 128;
    static constexpr std::size_t kLongestDirect = 512;
    /// Length of a partition's spectrum in numbers, a multiple of eight.
    static constexpr std::size_t kStride = kPartition + 8;

    enum class Form { Cheapest, Partitioned };

    /// Thread: control.  Throws: std::bad_alloc.
    explicit FirResponse(std::span<const float> taps, Form form = Form::Cheapest);

    std::size_t NumTaps() const noexcept TAV_NONBLOCKING { return taps_.size(); }
    std::span<const float> Taps() const noexcept TAV_NONBLOCKING { return taps_; }
    /// The taps that are convolved directly.
    std::span<const float> Head() const noexcept TAV_NONBLOCKING {
        return std::span(taps_).first(headLength_);
    }
    std::size_t NumPartitions() const noexcept TAV_NONBLOCKING { return numPartitions_; }
    /// Spectrum of size 2 * kPartition of the taps from (index + 1) * kPartition on.
    ConstComplexParts Partition(std::size_t index) const noexcept TAV_NONBLOCKING {
        return {re_.data() + index * kStride, im_.data() + index * kStride};
    }

    bool operator==(const FirResponse& other) const noexcept TAV_NONBLOCKING {
        return taps_ == other.taps_ && headLength_ == other.headLength_;
    }

private:
    std::vector<float> taps_;
    std::size_t headLength_;
    std::size_t numPartitions_ = 0;
    std::vector<float> re_;
    std::vector<float> im_;
};

}  // namespace tav
