// SPDX-License-Identifier: MIT
// A finite impulse response that may be exchanged while it sounds.
#pragma once

#include "processors/VelkDspCrossfade.h"
#include "processors/VelkDspFirHistory.h"

#include <array>
#include <utility>

namespace tav {

/// Silent until a response is loaded; no latency, whatever its length. The response that comes in
/// reads the same past as the one that sounds and is right from its first sample.
/// Thread: the constructor control, the rest audio.
class CrossfadedFir {
public:
    /// @param maxTaps  of the longest response      Throws: std::bad_alloc.
    CrossfadedFir(std::size_t maxTaps, float sampleRateHz);

    void SetFade(float ms, FadeShape shape) noexcept TAV_NONBLOCKING { fade_.Set(ms, shape); }
    /// Null: silence. A response longer than announced is ignored.
    void Load(const FirResponse* response) noexcept TAV_NONBLOCKING;
    /// The input so far is forgotten; fades go on.
    void Clear() noexcept TAV_NONBLOCKING;
    /// The input so far is forgotten and the response sounds at once.
    void Reset(const FirResponse* response) noexcept TAV_NONBLOCKING;

    /// @param output, input  `frames` samples each, may be the same buffer
    void Perform(float* output, const float* input, unsigned frames) noexcept TAV_NONBLOCKING;

private:
    /// What the partitions of a response contribute between two steps of the grid.
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
