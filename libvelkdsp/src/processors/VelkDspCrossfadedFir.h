// SPDX-License-Identifier: MIT
// A finite impulse response that can be replaced while it sounds.
#pragma once

#include "processors/VelkDspCrossfade.h"
#include "processors/VelkDspFirHistory.h"

#include <array>
#include <utility>

namespace tav {

/// Silent until a response is loaded; no latency at any length. A new response uses the same input
/// history as the current one, so its output is complete from the first sample.
/// Thread: the constructor control, the rest audio.
class CrossfadedFir {
public:
    /// @param maxTaps  of the longest response      Throws: std::bad_alloc.
    CrossfadedFir(std::size_t maxTaps, float sampleRateHz);

    void SetFade(float ms, FadeShape shape) noexcept TAV_NONBLOCKING { fade_.Set(ms, shape); }
    /// Null: silence. A response of more than maxTaps is ignored.
    void Load(const FirResponse* response) noexcept TAV_NONBLOCKING;
    /// Clears the input history; fades continue.
    void Clear() noexcept TAV_NONBLOCKING;
    /// Clears the input history and makes the response current without a fade.
    void Reset(const FirResponse* response) noexcept TAV_NONBLOCKING;

    /// @param output, input  `frames` samples each, may be the same buffer
    void Perform(float* output, const float* input, unsigned frames) noexcept TAV_NONBLOCKING;

private:
    /// The output of a response's partitions between two steps of the grid.
    using Tail = std::array<float, FirResponse::kPartition>;

    void PerformPiece(float* output, std::span<const float> input) noexcept TAV_NONBLOCKING;
    void Begin() noexcept TAV_NONBLOCKING;
    void RenderTail(const FirResponse* response, Tail& tail) noexcept TAV_NONBLOCKING;
    void Play(const FirResponse* response,
              const Tail& tail,
              std::span<float> output,
              const float* input,
              std::size_t gridPosition) const noexcept TAV_NONBLOCKING;

    const ConvolutionKernels& kernels_ = BestKernels<ConvolutionKernels>();
    FirHistory history_;
    Crossfade<FirResponse> fade_;
    Tail soundingTail_{};
    Tail incomingTail_{};
};

}  // namespace tav
