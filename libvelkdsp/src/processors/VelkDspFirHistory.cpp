// SPDX-License-Identifier: MIT
#include "processors/VelkDspFirHistory.h"

#include <algorithm>

namespace tav {

namespace {

constexpr std::size_t kPartition = FirResponse::kPartition;
constexpr std::size_t kStride = FirResponse::kStride;

}  // namespace

FirHistory::FirHistory(std::size_t maxTaps)
    : maxTaps_(maxTaps),
      length_(std::min(maxTaps, FirResponse::kLongestDirect) + kLargestBlock),
      samples_(2 * length_),
      numSpectra_((maxTaps + kPartition - 1) / kPartition),
      re_((numSpectra_ + 1) * kStride),
      im_(re_.size()),
      frame_(2 * kPartition) {}

void FirHistory::Clear() noexcept TAV_NONBLOCKING {
    for (auto* memory : {&samples_, &re_, &im_}) std::ranges::fill(*memory, 0.f);
}

const float* FirHistory::Write(std::span<const float> block) noexcept TAV_NONBLOCKING {
    const std::size_t first = std::min(block.size(), length_ - position_);
    for (const std::size_t copy : {std::size_t{0}, length_}) {
        std::ranges::copy(block.first(first), samples_.data() + copy + position_);
        std::ranges::copy(block.subspan(first), samples_.data() + copy);
    }
    position_ = (position_ + block.size()) % length_;
    // Samples are stored twice, so that the ring's length of samples before this one is contiguous.
    return samples_.data() + position_ + length_ - block.size();
}

bool FirHistory::Advance(std::size_t frames) noexcept TAV_NONBLOCKING {
    gridPosition_ += frames;
    if (gridPosition_ < kPartition) return false;
    gridPosition_ = 0;
    if (maxTaps_ <= kPartition) return false;
    newest_ = (newest_ + numSpectra_ - 1) % numSpectra_;
    fft_.Forward({samples_.data() + position_ + length_ - fft_.Size(), fft_.Size()},
                 {re_.data() + newest_ * kStride, fft_.NumBins()},
                 {im_.data() + newest_ * kStride, fft_.NumBins()});
    return true;
}

void FirHistory::RenderTail(const FirResponse& response,
                            std::span<float> tail) noexcept TAV_NONBLOCKING {
    const ComplexParts sum{re_.data() + numSpectra_ * kStride, im_.data() + numSpectra_ * kStride};
    std::fill_n(sum.re, kStride, 0.f);
    std::fill_n(sum.im, kStride, 0.f);
    for (std::size_t i = 0; i < response.NumPartitions(); ++i) {
        const std::size_t at = (newest_ + i) % numSpectra_ * kStride;
        kernels_.multiplyAdd(sum, {re_.data() + at, im_.data() + at}, response.Partition(i),
                             static_cast<int>(kStride));
    }
    fft_.Inverse({sum.re, fft_.NumBins()}, {sum.im, fft_.NumBins()}, frame_);
    std::copy(frame_.end() - static_cast<std::ptrdiff_t>(kPartition), frame_.end(), tail.begin());
}

}  // namespace tav
