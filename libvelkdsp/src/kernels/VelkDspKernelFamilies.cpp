// SPDX-License-Identifier: MIT
// Which member of each family of kernels goes with a set of gain kernels.
#include "kernels/VelkDspConvolutionKernels.h"
#include "kernels/VelkDspFilterKernels.h"
#include "kernels/VelkDspHoaKernels.h"
#include "kernels/VelkDspKernels.h"
#include "kernels/VelkDspSectionKernels.h"
#include "kernels/VelkDspSpeakerKernels.h"
#include "kernels/VelkDspTripletKernels.h"

namespace tav {
namespace {

#if defined(TAV_X86_KERNELS)
constexpr bool kHasVectorSets = true;
#else
constexpr bool kHasVectorSets = false;  // nor are they linked
#endif

/// @tparam Avx2, Avx512  give the member for the gain kernels of that name; one may serve both
template <auto Avx2, auto Avx512, class Set>
const Set* Member([[maybe_unused]] std::string_view name, const Set* scalar) noexcept {
    if constexpr (kHasVectorSets) {
        if (name == "avx2") return &Avx2();
        if (name == "avx512") return &Avx512();
    }
    return scalar;
}

}  // namespace

const ConvolutionKernels& ConvolutionKernelsNamed(std::string_view name) noexcept {
    return *Member<Avx2ConvolutionKernels, Avx2ConvolutionKernels>(name,
                                                                   &ScalarConvolutionKernels());
}

const FilterKernels& FilterKernelsNamed(std::string_view name) noexcept {
    return *Member<Avx2FilterKernels, Avx512FilterKernels>(name, &ScalarFilterKernels());
}

const HoaKernels* HoaKernelsNamed(std::string_view name) noexcept {
    return Member<Avx2HoaKernels, Avx512HoaKernels, HoaKernels>(name, nullptr);
}

const SectionKernels& SectionKernelsNamed(std::string_view name) noexcept {
    return *Member<Avx2SectionKernels, Avx2SectionKernels>(name, &ScalarSectionKernels());
}

const SpeakerKernels& SpeakerKernelsNamed(std::string_view name) noexcept {
    return *Member<Avx2SpeakerKernels, Avx512SpeakerKernels>(name, &ScalarSpeakerKernels());
}

const TripletKernels& TripletKernelsNamed(std::string_view name) noexcept {
    return *Member<Avx2TripletKernels, Avx512TripletKernels>(name, &ScalarTripletKernels());
}

const ConvolutionKernels& BestConvolutionKernels() noexcept {
    return ConvolutionKernelsNamed(BestKernels().name);
}
const FilterKernels& BestFilterKernels() noexcept { return FilterKernelsNamed(BestKernels().name); }
const HoaKernels* BestHoaKernels() noexcept { return HoaKernelsNamed(BestKernels().name); }
const SectionKernels& BestSectionKernels() noexcept {
    return SectionKernelsNamed(BestKernels().name);
}
const SpeakerKernels& BestSpeakerKernels() noexcept {
    return SpeakerKernelsNamed(BestKernels().name);
}
const TripletKernels& BestTripletKernels() noexcept {
    return TripletKernelsNamed(BestKernels().name);
}

}  // namespace tav
