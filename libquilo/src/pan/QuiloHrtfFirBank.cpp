// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfFirBank.h"

namespace Quilo {

HrtfFirBank::HrtfFirBank(const HrtfResponses& responses, unsigned numVoices, bool earsDiffer)
    : responses_(responses),
      delays_(responses.NeedDelays() || earsDiffer),
      voices_(numVoices,
              Voice{tav::CrossfadedFir(responses.MaxTaps(), responses.Format().rateHz),
                    tav::CrossfadedFir(responses.MaxTaps(), responses.Format().rateHz)}) {}

void HrtfFirBank::SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING {
    for (Voice& voice : voices_) {
        for (tav::CrossfadedFir& ear : voice.ears) ear.SetFade(ms, shape);
    }
}

void HrtfFirBank::Wake(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    for (std::size_t e = 0; e < 2; ++e) {
        voices_[index].ears[e].Reset(EarOf(responses_.TapsOf(points.ears[e]), e));
    }
    voices_[index].awake = true;
}

void HrtfFirBank::Sleep(unsigned index) noexcept TAV_NONBLOCKING { voices_[index].awake = false; }

void HrtfFirBank::Load(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    for (std::size_t e = 0; e < 2; ++e) {
        voices_[index].ears[e].Load(EarOf(responses_.TapsOf(points.ears[e]), e));
    }
}

void HrtfFirBank::Perform(HrtfVoices& voices,
                          std::span<float> left,
                          std::span<float> right,
                          unsigned&) noexcept TAV_NONBLOCKING {
    const std::span<float> outputs[] = {left, right};
    const auto frames = static_cast<unsigned>(left.size());
    for (unsigned index = 0; index < voices_.size(); ++index) {
        if (!voices_[index].awake) continue;
        for (std::size_t e = 0; e < 2; ++e) {
            const auto room = std::span(delayed_).first(frames);
            const float* const signal =
                delays_ ? voices.Delayed(index, e, room) : voices.Piece(index);
            voices_[index].ears[e].Perform(filtered_.data(), signal, frames);
            for (std::size_t k = 0; k < frames; ++k) outputs[e][k] += filtered_[k];
        }
    }
}

}  // namespace Quilo
