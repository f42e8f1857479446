// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfSpectralBank.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <utility>

namespace Quilo {

namespace {

constexpr unsigned kShortestPartition = 64;
constexpr unsigned kLongestPartition = 512;
constexpr std::size_t kFewestTaps = 128;
constexpr std::size_t kWindowSlack = kLongestPartition;  // samples until a window is moved

}  // namespace

bool HrtfSpectralBank::Suits(const HrtfResponses& responses, unsigned blockSize) noexcept {
    return responses.MaxTaps() >= kFewestTaps && blockSize >= kShortestPartition &&
           std::has_single_bit(blockSize);
}

HrtfSpectralBank::HrtfSpectralBank(const HrtfResponses& responses,
                                   unsigned numVoices,
                                   unsigned blockSize)
    : responses_(responses),
      partition_(std::min(blockSize, kLongestPartition)),
      stride_(partition_ + 8),
      numPartitions_((responses.MaxTaps() + partition_ - 1) / partition_),
      past_(numPartitions_ * partition_),
      hasDelays_(responses.NeedDelays()),
      windowLength_(past_ + kWindowSlack),
      fft_(2 * partition_),
      filterSpectra_(2 * responses.NumPoints() * numPartitions_ * stride_),
      voices_(numVoices, Voice{{Fade(responses.Format().rateHz), Fade(responses.Format().rateHz)}}),
      heard_(hasDelays_ ? std::size_t{2} * numVoices * windowLength_ : 0),
      inputSpectra_(std::size_t{hasDelays_ ? 2u : 1u} * numVoices * numPartitions_ * stride_),
      sums_(2 * stride_),
      sumAlone_(stride_),
      frame_(2 * partition_),
      sounding_(partition_),
      incoming_(partition_) {
    TransformFilters();
}

void HrtfSpectralBank::TransformFilters() {
    std::vector<float> padded(fft_.Size());
    std::size_t place = 0;
    for (std::size_t point = 0; point < responses_.NumPoints(); ++point) {
        for (const tav::FirResponse& response : responses_.TapsOf(point)->ears) {
            filters_.push_back({&response, place});
            std::span<const float> rest = response.Taps();
            for (std::size_t i = 0; i < numPartitions_; ++i, place += stride_) {
                const auto taps = rest.first(std::min(rest.size(), partition_));
                rest = rest.subspan(taps.size());
                std::ranges::fill(std::ranges::copy(taps, padded.begin()).out, padded.end(), 0.f);
                fft_.Forward(padded, std::span(filterSpectra_.re).subspan(place, fft_.NumBins()),
                             std::span(filterSpectra_.im).subspan(place, fft_.NumBins()));
            }
        }
    }
}

const HrtfSpectralBank::Filter* HrtfSpectralBank::FilterOf(
    std::size_t point, std::size_t ear) const noexcept TAV_NONBLOCKING {
    return point < responses_.NumPoints() ? &filters_[2 * point + ear] : nullptr;
}

void HrtfSpectralBank::SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING {
    for (Voice& voice : voices_) {
        for (Fade& fade : voice.ears) fade.Set(ms, shape);
    }
}

void HrtfSpectralBank::Wake(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    for (std::size_t e = 0; e < 2; ++e) voices_[index].ears[e].Reset(FilterOf(points.ears[e], e));
    voices_[index].awake = true;
    const std::size_t numRings = hasDelays_ ? 2 : 1, length = numRings * numPartitions_ * stride_;
    const tav::ComplexParts rings = inputSpectra_.At(index * length);
    std::fill_n(rings.re, length, 0.f);
    std::fill_n(rings.im, length, 0.f);
    if (!hasDelays_) return;
    voices_[index].piece = voices_[index].end = past_;
    std::fill_n(heard_.data() + std::size_t{2} * index * windowLength_, 2 * windowLength_, 0.f);
}

void HrtfSpectralBank::Sleep(unsigned index) noexcept TAV_NONBLOCKING {
    voices_[index].awake = false;
}

void HrtfSpectralBank::Load(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    for (std::size_t e = 0; e < 2; ++e) voices_[index].ears[e].Load(FilterOf(points.ears[e], e));
}

void HrtfSpectralBank::Perform(HrtfVoices& voices,
                               std::span<float> left,
                               std::span<float> right,
                               unsigned&) noexcept TAV_NONBLOCKING {
    const bool isWhole = left.size() == partition_;
    if (isWhole) newest_ = (newest_ + numPartitions_ - 1) % numPartitions_;
    bool anySums = false;
    for (unsigned index = 0; index < voices_.size(); ++index) {
        if (!voices_[index].awake) continue;
        if (hasDelays_) Hear(index, voices, left.size());
        for (std::size_t e = 0; isWhole && e < (hasDelays_ ? 2 : 1); ++e) {
            TransformInput(e, index, HeardBy(e, index, voices));
        }
        const auto& ears = voices_[index].ears;
        const bool isSteady = std::ranges::none_of(
            ears, [](const Fade& fade) { return fade.Fading() || fade.Waiting(); });
        if (!isWhole || !isSteady) {
            PerformAlone(index, voices, left, right);
        } else if (ears[0].Current() != nullptr && ears[1].Current() != nullptr) {
            AddToSums(index);
            anySums = true;
        }
    }
    if (anySums) AddSums(left, right);
    onGrid_ = isWhole;
}

void HrtfSpectralBank::Hear(unsigned index,
                            HrtfVoices& voices,
                            std::size_t frames) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    float* const windows = heard_.data() + std::size_t{2} * index * windowLength_;
    const bool isFull = voice.end + frames > windowLength_;
    for (std::size_t e = 0; e < 2; ++e) {
        float* const window = windows + e * windowLength_;
        if (isFull) std::copy_n(window + voice.end - past_, past_, window);
        float* const piece = window + (isFull ? past_ : voice.end);
        const float* const heard = voices.Delayed(index, e, {piece, frames});
        if (heard != piece) std::copy_n(heard, frames, piece);
    }
    voice.piece = isFull ? past_ : voice.end;
    voice.end = voice.piece + frames;
}

const float* HrtfSpectralBank::HeardBy(std::size_t ear,
                                       unsigned index,
                                       const HrtfVoices& voices) const noexcept TAV_NONBLOCKING {
    if (!hasDelays_) return voices.Piece(index);
    return heard_.data() + (std::size_t{2} * index + ear) * windowLength_ + voices_[index].piece;
}

std::size_t HrtfSpectralBank::PlaceOf(std::size_t ear,
                                      unsigned index,
                                      std::size_t partition) const noexcept TAV_NONBLOCKING {
    const std::size_t ring = hasDelays_ ? std::size_t{2} * index + ear : index;
    return (ring * numPartitions_ + (newest_ + partition) % numPartitions_) * stride_;
}

void HrtfSpectralBank::TransformInput(std::size_t ear,
                                      unsigned index,
                                      const float* piece) noexcept TAV_NONBLOCKING {
    const std::size_t count = onGrid_ ? 1 : numPartitions_;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = PlaceOf(ear, index, i);
        fft_.Forward({piece - (i + 1) * partition_, fft_.Size()},
                     std::span(inputSpectra_.re).subspan(place, fft_.NumBins()),
                     std::span(inputSpectra_.im).subspan(place, fft_.NumBins()));
    }
}

void HrtfSpectralBank::AddToSums(unsigned index) noexcept TAV_NONBLOCKING {
    const Voice& voice = voices_[index];
    const std::size_t places[] = {voice.ears[0].Current()->place, voice.ears[1].Current()->place};
    const auto inputs = [&](std::size_t ear, std::size_t partition) {
        return std::as_const(inputSpectra_).At(PlaceOf(ear, index, partition));
    };
    // Up to the end of the ring, then from its start.
    const std::size_t first = numPartitions_ - newest_;
    for (const auto& [begin, count] :
         {std::pair{std::size_t{0}, first}, std::pair{first, newest_}}) {
        if (count == 0) continue;
        kernels_.multiplyAddPair({{sums_.At(0), sums_.At(stride_)},
                                  {inputs(0, begin), inputs(1, begin)},
                                  {std::as_const(filterSpectra_).At(places[0] + begin * stride_),
                                   std::as_const(filterSpectra_).At(places[1] + begin * stride_)},
                                  static_cast<int>(count),
                                  static_cast<int>(stride_)});
    }
}

void HrtfSpectralBank::AddSums(std::span<float> left,
                               std::span<float> right) noexcept TAV_NONBLOCKING {
    const std::span<float> outputs[] = {left, right};
    for (std::size_t e = 0; e < 2; ++e) {
        const std::span<const float> signal = Inverse(sums_.At(e * stride_));
        std::ranges::transform(outputs[e], signal, outputs[e].begin(), std::plus());
    }
    std::ranges::fill(sums_.re, 0.f);
    std::ranges::fill(sums_.im, 0.f);
}

std::span<const float> HrtfSpectralBank::Inverse(const tav::ComplexParts& spectrum) noexcept
    TAV_NONBLOCKING {
    fft_.Inverse({spectrum.re, fft_.NumBins()}, {spectrum.im, fft_.NumBins()}, frame_);
    return std::span(frame_).last(partition_);
}

void HrtfSpectralBank::PerformAlone(unsigned index,
                                    const HrtfVoices& voices,
                                    std::span<float> left,
                                    std::span<float> right) noexcept TAV_NONBLOCKING {
    const std::span<float> outputs[] = {left, right};
    const auto sounding = std::span(sounding_).first(left.size());
    const auto incoming = std::span(incoming_).first(left.size());
    for (std::size_t e = 0; e < 2; ++e) {
        Fade& fade = voices_[index].ears[e];
        const float* const piece = HeardBy(e, index, voices);
        Render(fade.Current(), e, index, piece, sounding);
        if (fade.Fading()) Render(fade.Incoming(), e, index, piece, incoming);
        const auto takeOver = [&](std::size_t from) {
            std::ranges::copy(incoming.subspan(from), sounding.subspan(from).begin());
        };
        for (std::size_t done = 0; done < sounding.size();) {
            if (fade.Waiting()) {
                Render(fade.Incoming(), e, index, piece, incoming);
                if (!fade.Begin()) takeOver(done);
            }
            const std::size_t count = fade.FramesWithin(sounding.size() - done);
            const bool isOver = fade.Fading() && fade.Mix(sounding.subspan(done, count),
                                                          incoming.subspan(done, count));
            done += count;
            if (isOver) takeOver(done);
        }
        std::ranges::transform(outputs[e], sounding, outputs[e].begin(), std::plus());
    }
}

void HrtfSpectralBank::Render(const Filter* filter,
                              std::size_t ear,
                              unsigned index,
                              const float* piece,
                              std::span<float> output) noexcept TAV_NONBLOCKING {
    if (filter == nullptr) {
        std::ranges::fill(output, 0.f);
        return;
    }
    if (output.size() < partition_) {
        const std::span<const float> taps = filter->response->Taps();
        kernels_.fir(output.data(), piece, taps.data(), static_cast<int>(taps.size()),
                     static_cast<int>(output.size()));
        return;
    }
    std::ranges::fill(sumAlone_.re, 0.f);
    std::ranges::fill(sumAlone_.im, 0.f);
    for (std::size_t i = 0; i < numPartitions_; ++i) {
        kernels_.multiplyAdd(sumAlone_.At(0),
                             std::as_const(inputSpectra_).At(PlaceOf(ear, index, i)),
                             std::as_const(filterSpectra_).At(filter->place + i * stride_),
                             static_cast<int>(stride_));
    }
    std::ranges::copy(Inverse(sumAlone_.At(0)), output.begin());
}

}  // namespace Quilo
