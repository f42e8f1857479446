// SPDX-License-Identifier: MIT
// Finite responses of all sources together, as uniformly partitioned convolution without latency.
//
// The partitions are as long as a piece. A piece and the one before it make a spectrum per source;
// the products with the partitions are summed over partitions and sources, so that each ear takes
// one inverse transform, however many sources there are. A source whose response is fading takes
// inverse transforms of its own until the fade ends. Where the ears hear a source with delays of
// their own, each of them makes spectra of what it hears, and keeps that as long as responses are.
#pragma once

#include "filterdesign/VelkDspFft.h"
#include "pan/QuiloHrtfFilterBank.h"

#include <array>
#include <vector>

namespace Quilo {

class HrtfSpectralBank final : public HrtfFilterBank {
public:
    /// This bank is the cheaper one for these responses, in blocks of that size.
    static bool Suits(const HrtfResponses& responses, unsigned blockSize) noexcept;

    /// @pre  Suits()
    HrtfSpectralBank(const HrtfResponses& responses, unsigned numVoices, unsigned blockSize);

    std::size_t LongestPiece() const noexcept TAV_NONBLOCKING override { return partition_; }
    std::size_t Past() const noexcept TAV_NONBLOCKING override { return hasDelays_ ? 0 : past_; }
    void SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING override;
    void Wake(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    void Sleep(unsigned voice) noexcept TAV_NONBLOCKING override;
    void Load(unsigned voice, EarPoints points) noexcept TAV_NONBLOCKING override;
    /// A piece that is shorter than a partition is filtered tap by tap; the spectra of the past are
    /// made again at the next whole one.
    void Perform(HrtfVoices& voices,
                 std::span<float> left,
                 std::span<float> right,
                 unsigned& starts) noexcept TAV_NONBLOCKING override;

private:
    /// Memory for spectra of stride_ numbers each.
    struct Spectra {
        std::vector<float> re;
        std::vector<float> im;

        explicit Spectra(std::size_t count) : re(count), im(count) {}
        tav::ComplexParts At(std::size_t place) noexcept TAV_NONBLOCKING {
            return {re.data() + place, im.data() + place};
        }
        tav::ConstComplexParts At(std::size_t place) const noexcept TAV_NONBLOCKING {
            return {re.data() + place, im.data() + place};
        }
    };
    /// One ear of a point.
    struct Filter {
        const tav::FirResponse* response;
        std::size_t place;  // of its first partition in filterSpectra_

        bool operator==(const Filter& other) const noexcept TAV_NONBLOCKING {
            return *response == *other.response;
        }
    };
    using Fade = tav::Crossfade<Filter>;
    struct Voice {
        std::array<Fade, 2> ears;
        bool awake = false;
        // where the newest piece begins and ends in the windows of heard_
        std::size_t piece = 0;
        std::size_t end = 0;
    };

    void TransformFilters();
    const Filter* FilterOf(std::size_t point, std::size_t ear) const noexcept TAV_NONBLOCKING;
    /// The piece as the ear hears it, with the past before it.
    const float* HeardBy(std::size_t ear,
                         unsigned index,
                         const HrtfVoices& voices) const noexcept TAV_NONBLOCKING;
    void Hear(unsigned index, HrtfVoices& voices, std::size_t frames) noexcept TAV_NONBLOCKING;
    void TransformInput(std::size_t ear,
                        unsigned index,
                        const float* piece) noexcept TAV_NONBLOCKING;
    void AddToSums(unsigned index) noexcept TAV_NONBLOCKING;
    void AddSums(std::span<float> left, std::span<float> right) noexcept TAV_NONBLOCKING;
    void PerformAlone(unsigned index,
                      const HrtfVoices& voices,
                      std::span<float> left,
                      std::span<float> right) noexcept TAV_NONBLOCKING;
    /// The last samples of the signal of a spectrum.
    std::span<const float> Inverse(const tav::ComplexParts& spectrum) noexcept TAV_NONBLOCKING;
    /// What one filter makes of the piece, overwrites the output.
    void Render(const Filter* filter,
                std::size_t ear,
                unsigned index,
                const float* piece,
                std::span<float> output) noexcept TAV_NONBLOCKING;
    std::size_t PlaceOf(std::size_t ear,
                        unsigned index,
                        std::size_t partition) const noexcept TAV_NONBLOCKING;

    const tav::ConvolutionKernels& kernels_ = tav::BestKernels<tav::ConvolutionKernels>();
    const HrtfResponses& responses_;
    std::size_t partition_;  // samples
    std::size_t stride_;     // numbers of a spectrum, a multiple of eight
    std::size_t numPartitions_;
    std::size_t past_;  // samples before a piece that responses reach back to
    bool hasDelays_;    // so that the ears do not hear the same
    std::size_t windowLength_;
    tav::Fft fft_;
    std::vector<Filter> filters_;  // left and right of each point
    Spectra filterSpectra_;
    std::vector<Voice> voices_;
    std::vector<float> heard_;  // with delays, a window of each voice and ear
    Spectra inputSpectra_;      // of what each ear hears, a ring of as many as there are partitions
    std::size_t newest_ = 0;    // index in the rings
    bool onGrid_ = true;        // the rings are those of the pieces right before this one
    Spectra sums_;              // left, right
    Spectra sumAlone_;
    std::vector<float> frame_;
    std::vector<float> sounding_;
    std::vector<float> incoming_;
};

}  // namespace Quilo
