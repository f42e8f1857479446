// SPDX-License-Identifier: MIT
#include "processors/VelkDspFirResponse.h"

#include <algorithm>

namespace tav {

FirResponse::FirResponse(std::span<const float> taps, Form form)
    : taps_(taps.begin(), taps.end()),
      headLength_(taps.size()) {
    const bool direct = form == Form::Cheapest && taps.size() <= kLongestDirect;
    if (direct || taps.size() <= kPartition) return;
    headLength_ = kPartition;
    numPartitions_ = (taps.size() - 1) / kPartition;
    re_.resize(numPartitions_ * kStride);
    im_.resize(re_.size());
    Fft fft(2 * kPartition);
    std::vector<float> padded(fft.Size());
    for (std::size_t i = 0; i < numPartitions_; ++i) {
        const auto rest = taps.subspan((i + 1) * kPartition);
        std::ranges::fill(padded, 0.f);
        std::ranges::copy(rest.first(std::min(rest.size(), kPartition)), padded.begin());
        fft.Forward(padded, std::span(re_).subspan(i * kStride, fft.NumBins()),
                    std::span(im_).subspan(i * kStride, fft.NumBins()));
    }
}

}  // namespace tav
