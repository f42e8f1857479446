// SPDX-License-Identifier: MIT
// The input history of a convolution, for any number of responses.
#pragma once

#include "filterdesign/VelkDspFft.h"
#include "processors/VelkDspFirResponse.h"

#include <cstddef>
#include <span>
#include <vector>

namespace tav {

/// The newest samples, and the spectra of older ones on a grid of FirResponse::kPartition samples,
/// independent of the sizes of blocks.
/// Pattern: (Write Advance)*.  Thread: the constructor control, the rest audio.
class FirHistory {
public:
    static constexpr std::size_t kLargestBlock = 512;

    /// Silence.  @param maxTaps  of the longest response       Throws: std::bad_alloc.
    explicit FirHistory(std::size_t maxTaps);

    std::size_t MaxTaps() const noexcept TAV_NONBLOCKING { return maxTaps_; }
    void Clear() noexcept TAV_NONBLOCKING;

    /// Samples until the spectra change; no block may be longer.
    std::size_t FramesLeft() const noexcept TAV_NONBLOCKING {
        return FirResponse::kPartition - gridPosition_;
    }
    /// Samples since the spectra changed.
    std::size_t GridPosition() const noexcept TAV_NONBLOCKING { return gridPosition_; }

    /// @return the block in the history, directly after the samples before it
    const float* Write(std::span<const float> block) noexcept TAV_NONBLOCKING;
    /// Ends the block that was written last. @return true: the spectra have changed
    bool Advance(std::size_t frames) noexcept TAV_NONBLOCKING;

    /// Computes the output of a response's partitions for the samples from the last change of the
    /// spectra to the next one.
    /// @param tail  kPartition samples, overwritten
    void RenderTail(const FirResponse& response, std::span<float> tail) noexcept TAV_NONBLOCKING;

private:
    std::size_t maxTaps_;
    std::size_t length_;          // samples of the ring
    std::vector<float> samples_;  // the ring twice, so that any window of it is contiguous
    std::size_t position_ = 0;    // of the next sample, below length_
    std::size_t gridPosition_ = 0;

    const ConvolutionKernels& kernels_ = BestKernels<ConvolutionKernels>();
    Fft fft_{2 * FirResponse::kPartition};
    std::size_t numSpectra_;
    std::vector<float> re_;  // a ring of spectra, then room for their sum
    std::vector<float> im_;
    std::size_t newest_ = 0;  // index of the newest spectrum
    std::vector<float> frame_;
};

}  // namespace tav
