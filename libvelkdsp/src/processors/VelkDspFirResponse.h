// SPDX-License-Identifier: MIT
// A finite impulse response, made ready for the audio thread.
#pragma once

#include "filterdesign/VelkDspFft.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// Runs tap by tap as far as that is cheaper or no delay is allowed, and in partitions of its
/// spectrum beyond. No taps are silence.
class FirResponse {
public:
    static constexpr std::size_t kPartition = 128;
    static constexpr std::size_t kLongestDirect = 512;
    /// Numbers of a partition's spectrum, a multiple of eight.
    static constexpr std::size_t kStride = kPartition + 8;

    enum class Form { Cheapest, Partitioned };

    /// Thread: control.  Throws: std::bad_alloc.
    explicit FirResponse(std::span<const float> taps, Form form = Form::Cheapest);

    std::size_t NumTaps() const noexcept TAV_NONBLOCKING { return taps_.size(); }
    std::span<const float> Taps() const noexcept TAV_NONBLOCKING { return taps_; }
    /// The taps that run directly, from the first on.
    std::span<const float> Head() const noexcept TAV_NONBLOCKING {
        return std::span(taps_).first(headLength_);
    }
    std::size_t NumPartitions() const noexcept TAV_NONBLOCKING { return numPartitions_; }
    /// Taps (index + 1) * kPartition and the following ones, as a spectrum of 2 * kPartition.
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
