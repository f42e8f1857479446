// SPDX-License-Identifier: MIT
// Encoding gains of one source, beside other ways to the same harmonics.
#include "math/VelkDspHoaEncodingVector.h"

#include "BenchmarkInputs.h"
#include "kernels/VelkDspHoaBatch.h"
#include "math/VelkDspSpherical.h"

#include <benchmark/benchmark.h>

#if defined(QUILO_WITH_GSL)
#include <gsl/gsl_sf_legendre.h>
#endif
#if defined(QUILO_WITH_SPATIALAUDIO)
#include <spatialaudio/Ambisonics.h>
#endif

#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

namespace {

using tav::SphericalHarmonic;

void RunEncoding(benchmark::State& state,
                 unsigned dimension,
                 SphericalHarmonic::Normalization normalization,
                 tav::HoaEncodingVector::Mode mode) {
    const auto order = static_cast<unsigned>(state.range(0));
    tav::HoaEncodingVector encoding(order, dimension, normalization, mode);
    tav::Vector<float> gains(encoding.NumChannels());
    MeasureSources(state, [&](const tav::CartesianVector& source) {
        encoding.Compute(source, std::span<float>(gains));
        benchmark::DoNotOptimize(gains.Data());
    });
}

void HoaGains3D(benchmark::State& state) {
    RunEncoding(state, 3, SphericalHarmonic::Normalization::SN3D,
                tav::HoaEncodingVector::Mode::Precise);
}

void HoaGainsFast3D(benchmark::State& state) {
    RunEncoding(state, 3, SphericalHarmonic::Normalization::SN3D,
                tav::HoaEncodingVector::Mode::Fast);
}

void HoaGains2D(benchmark::State& state) {
    RunEncoding(state, 2, SphericalHarmonic::Normalization::SN2D,
                tav::HoaEncodingVector::Mode::Precise);
}

/// Each channel by its formula: cos(m phi) or sin(m phi) times cos(elevation)^m.
void HoaGains2DPlain(benchmark::State& state) {
    const auto order = static_cast<unsigned>(state.range(0));
    std::vector<float> gains(2 * order + 1);
    MeasureSources(state, [&](const tav::CartesianVector& source) {
        const double phi = std::atan2(static_cast<double>(source.y), static_cast<double>(source.x));
        const double cosine = std::cos(static_cast<double>(tav::ElevationRad(source)));
        for (std::size_t c = 0; c < gains.size(); ++c) {
            const auto degree = SphericalHarmonic::FromChannelIndex(
                static_cast<unsigned>(c), 2, SphericalHarmonic::Sorting::ACN);
            const double angle = phi * degree.n;
            const double sectoral = std::pow(cosine, degree.n);
            gains[c] =
                static_cast<float>(sectoral * (degree.m < 0 ? std::sin(angle) : std::cos(angle)));
        }
        benchmark::DoNotOptimize(gains.data());
    });
}

/// Items are sources: the time of one is that of an iteration over their number.
void HoaGainsAll(benchmark::State& state) {
    tav::HoaEncodingVector encoding(static_cast<unsigned>(state.range(0)), 3,
                                    SphericalHarmonic::Normalization::SN3D);
    const tav::CartesianArray all = Sources();
    const auto sources = std::span(all).first(static_cast<std::size_t>(state.range(1)));
    tav::Matrix<float> gains(sources.size(), encoding.NumChannels());
    for (auto _ : state) {
        tav::ComputeHoaGains(encoding, sources, gains);
        benchmark::DoNotOptimize(gains.Data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(1));
}

void HoaLookupTable(benchmark::State& state) {
    for (auto _ : state) {
        const tav::HoaLookupTable table(static_cast<unsigned>(state.range(0)), 3,
                                        SphericalHarmonic::Normalization::SN3D);
        benchmark::DoNotOptimize(table.Gains(0));
    }
}

BENCHMARK(HoaGainsAll)
    ->ArgNames({"order", "sources"})
    ->Args({3, 250})
    ->Args({7, 250})
    ->Args({14, 250});
BENCHMARK(HoaLookupTable)->ArgName("order")->Arg(3)->Arg(14)->Unit(benchmark::kMillisecond);
BENCHMARK(HoaGains3D)->ArgName("order")->Arg(3)->Arg(5)->Arg(7)->Arg(10)->Arg(14);
BENCHMARK(HoaGainsFast3D)->ArgName("order")->Arg(3)->Arg(7)->Arg(14);
BENCHMARK(HoaGains2D)->ArgName("order")->Arg(50)->Arg(124);
BENCHMARK(HoaGains2DPlain)->ArgName("order")->Arg(50)->Arg(124);

#if defined(QUILO_WITH_GSL)
/// All associated Legendre functions, and the sines and cosines of the multiples of the azimuth;
/// their products are left out.
void GslHarmonics(benchmark::State& state) {
    const auto order = static_cast<std::size_t>(state.range(0));
    std::vector<double> legendre(gsl_sf_legendre_array_n(order));
    std::vector<double> sines(order + 1);
    std::vector<double> cosines(order + 1);
    MeasureSources(state, [&](const tav::CartesianVector& source) {
        const double phi = std::atan2(static_cast<double>(source.y), static_cast<double>(source.x));
        const double height = std::sin(static_cast<double>(tav::ElevationRad(source)));
        gsl_sf_legendre_array(GSL_SF_LEGENDRE_SCHMIDT, order, height, legendre.data());
        for (std::size_t m = 0; m <= order; ++m) {
            sines[m] = std::sin(static_cast<double>(m) * phi);
            cosines[m] = std::cos(static_cast<double>(m) * phi);
        }
        benchmark::DoNotOptimize(legendre.data());
        benchmark::DoNotOptimize(sines.data());
        benchmark::DoNotOptimize(cosines.data());
    });
}
BENCHMARK(GslHarmonics)->ArgName("order")->Arg(5)->Arg(10)->Arg(14);
#endif

#if defined(QUILO_WITH_SPATIALAUDIO)
void SpatialAudioEncoder(benchmark::State& state) {
    CAmbisonicEncoder encoder;
    if (!encoder.Configure(static_cast<unsigned>(state.range(0)), true, 0)) {
        return state.SkipWithError("the encoder refuses the order");
    }
    MeasureSources(state, [&](const tav::CartesianVector& source) {
        encoder.SetPosition(
            {std::atan2(source.y, source.x), tav::ElevationRad(source), tav::Distance(source)});
        encoder.Refresh();
        benchmark::DoNotOptimize(encoder.GetCoefficient(1));
    });
}
BENCHMARK(SpatialAudioEncoder)->ArgName("order")->Arg(3);
#endif

}  // namespace
