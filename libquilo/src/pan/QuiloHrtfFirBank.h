// SPDX-License-Identifier: MIT
// Finite responses of sources that are filtered one by one, tap by tap or on a grid of their own.
#pragma once

#include "pan/QuiloHrtfFilterBank.h"
#include "processors/VelkDspCrossfadedFir.h"

#include <array>
#include <vector>

namespace Quilo {

class HrtfFirBank final : public HrtfFilterBank {
public:
    /// @param earsDiffer  delays apply even where the responses do not need them
    HrtfFirBank(const HrtfResponses& responses, unsigned numVoices, bool earsDiffer);

    std::size_t LongestPiece() const noexcept TAV_NONBLOCKING override { return kPiece; }
    std::size_t Past() const noexcept TAV_NONBLOCKING override { return 0; }
    void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING override;
    void Wake(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    void Sleep(unsigned voice) noexcept TAV_NONBLOCKING override;
    void Load(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    void Perform(HrtfVoices& voices,
                 std::span<float> left,
                 std::span<float> right,
                 unsigned& starts) noexcept TAV_NONBLOCKING override;

private:
    static constexpr std::size_t kPiece = 512;

    struct Voice {
        std::array<tav::CrossfadedFir, 2> ears;
        bool awake = false;

        Voice(const tav::CrossfadedFir& left, const tav::CrossfadedFir& right)
            : ears{left, right} {}
    };

    const HrtfResponses& responses_;
    const bool delays_;
    std::vector<Voice> voices_;
    std::array<float, kPiece> delayed_{};
    std::array<float, kPiece> filtered_{};
};

}  // namespace Quilo
