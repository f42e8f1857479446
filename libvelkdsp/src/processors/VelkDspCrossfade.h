// SPDX-License-Identifier: MIT
// Crossfades from one filter to the next.
#pragma once

#include "text/VelkDspNonblocking.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <span>

namespace tav {

/// Any other code acts as SquareCosine.
enum class FadeShape : std::int32_t {
    Linear,        // t and 1 - t
    Cosine,        // equal power; the sum of two similar filters rises by up to 3 dB
    SquareCosine,  // equal gain, smooth at both ends
};

/// Weights of the old and the new response at the part t of a fade, 0 < t <= 1.
struct FadeWeights {
    float out;
    float in;
};

/// Holds a current, an incoming and a pending response. One that is loaded during a fade is pending
/// until the fade ends; a newer one replaces it. So at most two filters run, and a change begins
/// within one fade time and is complete within two.
/// @tparam Response  compared by ==; null is silence. The caller keeps a loaded response alive
/// until it has been replaced and faded out.
/// Thread: audio.
template <class Response>
class Crossfade {
public:
    static constexpr float kDefaultMs = 5.f;

    explicit Crossfade(float sampleRateHz) : sampleRateHz_(sampleRateHz) {}

    /// The values apply from the next fade on. @param ms  0 or less: no fade; not finite:
    /// ignored
    void Set(float ms, FadeShape shape) noexcept TAV_NONBLOCKING {
        if (std::isfinite(ms)) ms_ = std::max(ms, 0.f);
        shape_ = shape;
    }

    /// Makes the response pending, in place of an older pending one. One equal to the incoming
    /// response, or without a fade to the current one, replaces that at once.
    void Load(const Response* response) noexcept TAV_NONBLOCKING {
        const Response*& heading = fading_ ? incoming_ : current_;
        waits_ = !Same(response, heading);
        (waits_ ? pending_ : heading) = response;
    }

    bool Fading() const noexcept TAV_NONBLOCKING { return fading_; }
    bool Waiting() const noexcept TAV_NONBLOCKING { return waits_ && !fading_; }
    const Response* Current() const noexcept TAV_NONBLOCKING { return current_; }
    /// The response that fades in; without a fade the pending one.
    const Response* Incoming() const noexcept TAV_NONBLOCKING {
        return fading_ ? incoming_ : pending_;
    }

    /// The pending response begins to fade in with the next sample.  @pre  Waiting()
    /// @return false: the fade time is 0, and it is the current one now
    bool Begin() noexcept TAV_NONBLOCKING {
        incoming_ = pending_;
        waits_ = false;
        fading_ = true;
        position_ = 0;
        length_ = FadeLength();
        fadeShape_ = shape_;
        if (length_ == 0) current_ = incoming_;
        fading_ = length_ > 0;
        return fading_;
    }
    /// Makes the response the current one at once; a fade or a pending response is dropped.
    void Reset(const Response* response) noexcept TAV_NONBLOCKING {
        current_ = response;
        fading_ = false;
        waits_ = false;
    }

    /// The present fade, for callers that do the mixing: the next frame k is
    /// sample `position` + k of the fade, with the part t = (position + k + 1) /
    /// length.
    struct Progress {
        FadeShape shape;
        std::uint32_t position;
        std::uint32_t length;
    };
    /// @pre  Fading()
    Progress Under() const noexcept TAV_NONBLOCKING { return {fadeShape_, position_, length_}; }
    /// As Mix, for frames that the caller mixed; may exceed the fade.  @pre  Fading()
    bool Advance(std::uint32_t frames) noexcept TAV_NONBLOCKING {
        position_ += frames;
        return EndWhenOver();
    }

    /// The smaller of `frames` and the frames left of the fade; `frames` without a fade.
    std::size_t FramesWithin(std::size_t frames) const noexcept TAV_NONBLOCKING {
        return fading_ ? std::min<std::size_t>(frames, length_ - position_) : frames;
    }

    /// sounding[k] = the weighted sum of sounding[k] and incoming[k].  @pre  Fading(), at most
    /// FramesWithin() samples   @return true: the fade is over, the incoming is current
    bool Mix(std::span<float> sounding, std::span<const float> incoming) noexcept TAV_NONBLOCKING {
        const double turn = std::numbers::pi / static_cast<double>(length_);
        const double half = fadeShape_ == FadeShape::Cosine ? 0.5 * turn : turn;
        // By rotation, without a call per sample; over a block in double the error is negligible.
        const double stepCos = std::cos(half);
        const double stepSin = std::sin(half);
        double c = std::cos(half * position_);
        double s = std::sin(half * position_);
        for (std::size_t k = 0; k < sounding.size(); ++k) {
            const double turned = c * stepCos - s * stepSin;
            s = s * stepCos + c * stepSin;
            c = turned;
            const FadeWeights w = Weights(++position_, c, s);
            sounding[k] = w.out * sounding[k] + w.in * incoming[k];
        }
        return EndWhenOver();
    }

private:
    bool EndWhenOver() noexcept TAV_NONBLOCKING {
        if (position_ < length_) return false;
        current_ = incoming_;
        fading_ = false;
        return true;
    }

    static bool Same(const Response* a, const Response* b) noexcept TAV_NONBLOCKING {
        return a == b || (a != nullptr && b != nullptr && *a == *b);
    }

    std::uint32_t FadeLength() const noexcept TAV_NONBLOCKING {
        const double samples =
            std::round(static_cast<double>(ms_) * static_cast<double>(sampleRateHz_) * 0.001);
        return static_cast<std::uint32_t>(std::min(samples, 1e9));
    }

    FadeWeights Weights(std::uint32_t done, double c, double s) const noexcept TAV_NONBLOCKING {
        if (done >= length_) return {0.f, 1.f};
        const auto part = [](double v) { return static_cast<float>(v); };
        switch (fadeShape_) {
            case FadeShape::Linear: {
                const double t = static_cast<double>(done) / static_cast<double>(length_);
                return {part(1.0 - t), part(t)};
            }
            case FadeShape::Cosine: return {part(c), part(s)};
            default: return {part(0.5 + 0.5 * c), part(0.5 - 0.5 * c)};
        }
    }

    float ms_ = kDefaultMs;
    float sampleRateHz_;
    FadeShape shape_ = FadeShape::SquareCosine;
    const Response* current_ = nullptr;
    const Response* incoming_ = nullptr;
    const Response* pending_ = nullptr;
    bool fading_ = false;
    bool waits_ = false;
    // of the present fade
    FadeShape fadeShape_ = FadeShape::SquareCosine;
    std::uint32_t position_ = 0;
    std::uint32_t length_ = 0;
};

}  // namespace tav
