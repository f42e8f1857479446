// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfVoices.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quilo {

namespace {

constexpr std::size_t kGuard = 8;    // samples that kernels read beyond
constexpr std::size_t kSlack = 512;  // samples until a window is moved

/// A delay as a place between two samples: `whole` samples back, then `fraction` forward.
struct Place {
    std::ptrdiff_t whole;
    float fraction;
};

Place PlaceOf(float delay) noexcept TAV_NONBLOCKING {
    auto whole = static_cast<std::ptrdiff_t>(delay);
    if (static_cast<float>(whole) < delay) ++whole;
    return {whole, static_cast<float>(whole) - delay};
}

/// Four-point kernels need a sample after the next one: with less than a sample of delay there is
/// none yet. Without any delay every kind copies.
tav::DelayKind KindFor(tav::DelayKind kind, float delay) noexcept TAV_NONBLOCKING {
    const bool fourPoints = kind != tav::DelayKind::Nearest && kind != tav::DelayKind::Allpass;
    return delay < 1.f && fourPoints ? tav::DelayKind::Linear : kind;
}

/// Calls `action` with a kernel that remembers nothing; all-pass delays act as Lagrange ones.
template <class Action>
auto WithKernel(tav::DelayKind kind, Action action) noexcept TAV_NONBLOCKING {
    switch (kind) {
        case tav::DelayKind::Linear: return action(tav::kLinearKernel);
        case tav::DelayKind::Allpass:
        case tav::DelayKind::Lagrange: return action(tav::kLagrangeKernel);
        case tav::DelayKind::Hermite: return action(tav::kHermiteKernel);
        case tav::DelayKind::Quadratic: return action(tav::kQuadraticKernel);
        case tav::DelayKind::BSpline: return action(tav::kBSplineKernel);
        case tav::DelayKind::Cardinal: return action(tav::kCardinalKernel);
        default: return action(tav::kNearestKernel);
    }
}

/// What the four samples x[2], x[1], x[0], x[-1] weigh in a delay.
std::array<float, 4> TapsFor(tav::DelayKind kind, float delay) noexcept TAV_NONBLOCKING {
    // All kernels are sums: what a sample weighs is what comes of it alone.
    std::array<float, 4> taps{};
    WithKernel(KindFor(kind, delay), [&](const auto& kernel) {
        for (std::size_t i = 0; i < taps.size(); ++i) {
            std::array<float, 4> alone{};
            alone[3 - i] = 1.f;
            taps[i] = kernel(alone.data() + 1, PlaceOf(delay).fraction);
        }
    });
    return taps;
}

}  // namespace

void GroupReader::Set(std::size_t lane, const PathReading& reading) noexcept TAV_NONBLOCKING {
    lanes_.signals[lane] = reading.signal;
    lanes_.places[lane] = reading.place;
    lanes_.steps[lane] = reading.step;
    if (reading.step != 0.f) {
        glides_ = true;
        return;
    }
    for (std::size_t t = 0; t < reading.taps.size(); ++t) lanes_.taps[t][lane] = reading.taps[t];
}

void GroupReader::Read(std::size_t count,
                       float* rows,
                       std::size_t frames) noexcept TAV_NONBLOCKING {
    lanes_.lanes = static_cast<int>(count);
    for (; count < static_cast<std::size_t>(tav::kSourceLanes); ++count) SetSilent(count);
    const auto read = std::exchange(glides_, false) ? kernels_.readGliding : kernels_.read;
    read(lanes_, rows, static_cast<int>(frames));
}

HrtfVoices::HrtfVoices(unsigned numVoices,
                       float rateHz,
                       std::size_t longestPiece,
                       std::size_t past,
                       std::size_t numWindows,
                       std::size_t numPaths)
    : samplesPerMs_(rateHz * 0.001f),
      longestDelay_(std::ceil(kLongestDelayMs * samplesPerMs_)),
      usualDelay_(std::ceil(kUsualDelayMs * samplesPerMs_)),
      saved_(static_cast<std::size_t>(longestDelay_ - usualDelay_)),
      longestKept_(static_cast<std::size_t>(longestDelay_) + past + kGuard),
      length_(longestKept_ + longestPiece + kSlack + kGuard),
      numWindows_(numWindows),
      numPaths_(numPaths),
      movedLength_(longestPiece + 2 * kGuard),
      samples_(numVoices * numWindows * length_),
      moved_(numVoices * numPaths * movedLength_),
      voices_(numVoices),
      glide_(longestPiece) {}

void HrtfVoices::SetKind(tav::DelayKind kind) noexcept TAV_NONBLOCKING {
    kind_ = kind;
    for (Voice& voice : voices_) {
        for (Path& path : voice.paths) path.tapsFor = -1.f;
    }
}

void HrtfVoices::Wake(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    voice = Voice();
    // Windows of different sources are moved at different times.
    voice.end = Kept(voice) + std::size_t{index} * 64 % kSlack;
    voice.known = longestKept_;  // silence
    for (std::size_t w = 0; w < numWindows_; ++w) {
        std::fill_n(samples_.data() + (index * numWindows_ + w) * length_, length_ - saved_, 0.f);
    }
}

void HrtfVoices::Lengthen(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    for (std::size_t w = 0; w < numWindows_; ++w) {
        float* const window = samples_.data() + (index * numWindows_ + w) * length_;
        std::copy_backward(window, window + length_ - saved_, window + length_);
        std::fill_n(window, saved_, 0.f);
    }
    const bool hasBegun = voice.piece > 0;  // all was silence before
    if (hasBegun) voice.known = static_cast<std::size_t>(usualDelay_);
    voice.piece += saved_;
    voice.end += saved_;
    voice.isLong = true;
}

void HrtfVoices::SetGain(unsigned voice,
                         float gain,
                         std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    if (gain != voices_[voice].gain.Target()) {
        voices_[voice].gain.SetOverSamples(gain, glideSamples);
    }
}

void HrtfVoices::SetDelay(unsigned voice,
                          std::size_t path,
                          float ms,
                          std::uint32_t glideSamples) noexcept TAV_NONBLOCKING {
    const float samples = std::clamp(ms, 0.f, kLongestDelayMs) * samplesPerMs_;
    if (samples > usualDelay_ && !voices_[voice].isLong) Lengthen(voice);
    Path& p = voices_[voice].paths[path];
    if (samples == p.delay.Target() && glideSamples > 0) return;
    const float unknown = samples - static_cast<float>(voices_[voice].known);
    const auto shortest = static_cast<std::uint32_t>(std::max(std::ceil(unknown), 0.f));
    p.delay.SetOverSamples(samples, std::max(glideSamples, shortest));
    p.after = p.delay.Value();
}

bool HrtfVoices::IsSilenced(unsigned voice, std::size_t tail) const noexcept TAV_NONBLOCKING {
    return voices_[voice].silence > longestKept_ + tail;
}

void HrtfVoices::Take(unsigned index,
                      std::span<const float> left,
                      std::span<const float> right) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    const std::size_t count = left.size();
    for (Path& path : std::span(voice.paths).first(numPaths_)) {
        path.before = path.after;
        path.isMoved = path.isRead = false;
        path.glide = std::min(path.delay.SamplesLeft(), static_cast<std::uint32_t>(count));
        if (path.glide == 0) continue;
        path.delay.Skip(path.glide);
        path.after = path.delay.Value();
    }
    const std::size_t kept = Kept(voice);
    const bool isFull = voice.end + count + kGuard > length_ - (longestKept_ - kept);
    const bool rests = voice.gain.IsConstant();
    const float gain = voice.gain.Target();
    const auto gains = std::span(glide_).first(count);
    if (!rests) voice.gain.Fill(gains);
    for (std::size_t w = 0; w < numWindows_; ++w) {
        float* const window = samples_.data() + (index * numWindows_ + w) * length_;
        if (isFull) std::copy_n(window + voice.end - kept, kept, window);
        const auto input = w == 0 ? left : right;
        float* const piece = window + (isFull ? kept : voice.end);
        if (!rests) {
            for (std::size_t k = 0; k < count; ++k) piece[k] = gains[k] * input[k];
        } else if (gain == 1.f) {
            std::ranges::copy(input, piece);
        } else {
            std::ranges::transform(input, piece, [gain](float x) { return gain * x; });
        }
    }
    voice.piece = isFull ? kept : voice.end;
    voice.end = voice.piece + count;
    voice.known += count;
    voice.silence = rests && gain == 0.f ? voice.silence + count : 0;
}

float* HrtfVoices::MovedPiece(unsigned voice, std::size_t path) noexcept TAV_NONBLOCKING {
    return moved_.data() + (voice * numPaths_ + path) * movedLength_ + kGuard;
}

PathReading HrtfVoices::Read(Path& path,
                             float delay,
                             const float* piece) const noexcept TAV_NONBLOCKING {
    if (path.tapsFor != delay) {
        path.tapsFor = delay;
        path.taps = TapsFor(kind_, delay);
    }
    const Place place = PlaceOf(delay);
    return {piece - place.whole + 2, path.taps, place.fraction};
}

PathReading HrtfVoices::FindReading(unsigned index,
                                    std::size_t pathIndex) noexcept TAV_NONBLOCKING {
    const Voice& voice = voices_[index];
    Path& path = voices_[index].paths[pathIndex];
    const float* const piece = Piece(index, pathIndex);
    // The kernel for places that move may pass one sample, and needs one after the next.
    if (path.glide > 0 && path.glide == voice.end - voice.piece &&
        kind_ == tav::DelayKind::Lagrange) {
        const float way = path.after - path.before;
        const float step = way / static_cast<float>(path.glide);
        if (step != 0.f && std::abs(way) <= 1.f && std::min(path.before, path.after) >= 1.f) {
            const Place first = PlaceOf(path.before + step);
            // A delay that grows may go back beyond the sample after which it begins.
            const std::ptrdiff_t back = step > 0.f ? 1 : 0;
            return {.signal = piece - first.whole - back + 2,
                    .taps = {},
                    .place = first.fraction + static_cast<float>(back),
                    .step = -step};
        }
    }
    // Beside sources that glide, all have to be read by third-order Lagrange interpolation.
    const bool isBetween = path.before > 0.f && path.before < 1.f;
    if (Moves(path) || isBetween) return {Moved(index, pathIndex) + 2, {0.f, 0.f, 1.f}};
    return Read(path, path.before, piece);
}

const float* HrtfVoices::Moved(unsigned index, std::size_t pathIndex) noexcept TAV_NONBLOCKING {
    const Voice& voice = voices_[index];
    Path& path = voices_[index].paths[pathIndex];
    float* const moved = MovedPiece(index, pathIndex);
    if (!path.isMoved) Move(path, Piece(index, pathIndex), {moved, voice.end - voice.piece});
    path.isMoved = true;
    return moved;
}

PathReading HrtfVoices::PastOf(unsigned index,
                               std::size_t path,
                               std::size_t before) noexcept TAV_NONBLOCKING {
    Path& p = voices_[index].paths[path];
    return Read(p, p.before, Piece(index, path) - before);
}

const float* HrtfVoices::Delayed(unsigned index,
                                 std::size_t path,
                                 std::span<float> room) noexcept TAV_NONBLOCKING {
    Path& p = voices_[index].paths[path];
    if (Moves(p)) return Moved(index, path);
    const PathReading from = Read(p, p.before, Piece(index, path));
    fir_.fir(room.data(), from.signal, from.taps.data(), tav::kReadingTaps,
             static_cast<int>(room.size()));
    return room.data();
}

void HrtfVoices::Move(Path& path,
                      const float* piece,
                      std::span<float> output) noexcept TAV_NONBLOCKING {
    const float after = path.after;
    const bool isShort = std::min(path.before, after) < 1.f;
    if (kind_ != tav::DelayKind::Lagrange || isShort) return MoveOneByOne(path, piece, output);
    const float step = (after - path.before) / static_cast<float>(path.glide);
    const Place first = PlaceOf(path.before + step);
    kernels_.glide(output.data(), piece - first.whole, first.fraction, -step,
                   static_cast<int>(path.glide));
    if (path.glide == output.size()) return;
    const PathReading rest = Read(path, after, piece + path.glide);
    fir_.fir(output.data() + path.glide, rest.signal, rest.taps.data(), tav::kReadingTaps,
             static_cast<int>(output.size() - path.glide));
}

void HrtfVoices::MoveOneByOne(Path& path,
                              const float* piece,
                              std::span<float> output) noexcept TAV_NONBLOCKING {
    const float after = path.after;
    const float step = (after - path.before) / static_cast<float>(std::max(path.glide, 1u));
    for (std::size_t k = 0; k < output.size(); ++k) {
        const auto done = static_cast<float>(k + 1);
        const float delay = k + 1 < path.glide ? path.before + done * step : after;
        const Place place = PlaceOf(delay);
        const float* const x = piece + k - place.whole;
        if (kind_ == tav::DelayKind::Allpass) {
            tav::AllpassKernel kernel{path.allpass};
            output[k] = kernel(x, place.fraction);
            path.allpass = std::abs(kernel.previous) < 1e12f ? kernel.previous : 0.f;
            continue;
        }
        output[k] = WithKernel(KindFor(kind_, delay),
                               [&](const auto& kernel) { return kernel(x, place.fraction); });
    }
}

}  // namespace Quilo
