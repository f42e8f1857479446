// SPDX-License-Identifier: MIT
#include "processors/VelkDspCrossfadedFir.h"

#include <algorithm>

namespace tav {

CrossfadedFir::CrossfadedFir(std::size_t maxTaps, float sampleRateHz)
    : history_(maxTaps),
      fade_(sampleRateHz) {}

void CrossfadedFir::Load(const FirResponse* response) noexcept TAV_NONBLOCKING {
    if (response == nullptr || response->NumTaps() <= history_.MaxTaps()) fade_.Load(response);
}

void CrossfadedFir::Clear() noexcept TAV_NONBLOCKING {
    history_.Clear();
    soundingTail_.fill(0.f);
    incomingTail_.fill(0.f);
}

void CrossfadedFir::Reset(const FirResponse* response) noexcept TAV_NONBLOCKING {
    Clear();
    fade_.Reset(response);
}

void CrossfadedFir::Perform(float* output,
                            const float* input,
                            unsigned frames) noexcept TAV_NONBLOCKING {
    for (std::size_t done = 0; done < frames;) {
        const std::size_t count = std::min(frames - done, history_.FramesLeft());
        PerformPiece(output + done, {input + done, count});
        done += count;
    }
}

void CrossfadedFir::PerformPiece(float* output,
                                 std::span<const float> input) noexcept TAV_NONBLOCKING {
    const float* const past = history_.Write(input);
    float incoming[FirResponse::kPartition];
    for (std::size_t done = 0; done < input.size();) {
        if (fade_.Waiting()) Begin();
        const std::size_t count = fade_.FramesWithin(input.size() - done);
        const std::span sounding(output + done, count);
        const std::size_t gridPosition = history_.GridPosition() + done;
        Play(fade_.Current(), soundingTail_, sounding, past + done, gridPosition);
        if (fade_.Fading()) {
            const auto mixed = std::span(incoming).first(count);
            Play(fade_.Incoming(), incomingTail_, mixed, past + done, gridPosition);
            if (fade_.Mix(sounding, mixed)) soundingTail_ = incomingTail_;
        }
        done += count;
    }
    if (!history_.Advance(input.size())) return;
    RenderTail(fade_.Current(), soundingTail_);
    if (fade_.Fading()) RenderTail(fade_.Incoming(), incomingTail_);
}

void CrossfadedFir::Begin() noexcept TAV_NONBLOCKING {
    RenderTail(fade_.Incoming(), incomingTail_);
    if (!fade_.Begin()) soundingTail_ = incomingTail_;
}

void CrossfadedFir::RenderTail(const FirResponse* response, Tail& tail) noexcept TAV_NONBLOCKING {
    if (response == nullptr || response->NumPartitions() == 0) return;
    history_.RenderTail(*response, tail);
}

void CrossfadedFir::Play(const FirResponse* response,
                         const Tail& tail,
                         std::span<float> output,
                         const float* input,
                         std::size_t gridPosition) const noexcept TAV_NONBLOCKING {
    if (response == nullptr) {
        std::ranges::fill(output, 0.f);
        return;
    }
    const std::span<const float> head = response->Head();
    kernels_.fir(output.data(), input, head.data(), static_cast<int>(head.size()),
                 static_cast<int>(output.size()));
    if (response->NumPartitions() == 0) return;
    for (std::size_t k = 0; k < output.size(); ++k) output[k] += tail[gridPosition + k];
}

}  // namespace tav
