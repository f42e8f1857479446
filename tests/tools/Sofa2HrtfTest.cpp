// SPDX-License-Identifier: MIT
#include "CellFit.h"
#include "HrtfConversion.h"
#include "HrtfSetWriter.h"
#include "hrtf/QuiloHrtfFile.h"
#include "libquilo/pan/PanPlayer.h"
#include "pan/QuiloBinauralPanningDirect.h"
#include "reference/PlainFourier.h"
#include "reference/PlainSphere.h"
#include "support/HostProgram.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <mysofa.h>
#include <numbers>
#include <numeric>
#include <sstream>
#include <tuple>

namespace SofaTool {
namespace {

constexpr char kShippedSet[] = "/usr/share/libmysofa/MIT_KEMAR_normal_pinna.sofa";
constexpr unsigned kTaps = 256;

/// A rigid sphere in five directions, as libmysofa hands it over: ahead, left, up, right, and up
/// with another azimuth.
struct SphereFile {
    SphereFile() {
        hrtf.C = 3, hrtf.R = 2, hrtf.M = 5, hrtf.N = kTaps, hrtf.I = hrtf.E = 1;
        for (std::size_t m = 0; m < 5; ++m) {
            for (const double side : {1.0, -1.0}) {
                const auto taps = Answer(std::acos(side * kLeftward[m]));
                responses.insert(responses.end(), taps.begin(), taps.end());
            }
        }
        hrtf.attributes = &conventions;
        Set(hrtf.DataIR, responses, nullptr);
        Set(hrtf.DataDelay, delays, nullptr);
        Set(hrtf.DataSamplingRate, rate, nullptr);
        Set(hrtf.SourcePosition, positions, &spherical);
        Set(hrtf.ReceiverPosition, receivers, &cartesian);
    }
    static std::vector<float> Answer(double angle) {
        std::vector<float> taps(kTaps);
        for (unsigned bin = 1; bin < kTaps / 2; ++bin) {
            const double hz = 44100.0 * bin / kTaps;
            const auto value = std::conj(Plain::SphereResponse(0.0875, 1.4, angle, hz)) *
                               std::polar(1.0, -2.0 * std::numbers::pi * bin * 64.0 / kTaps);
            for (unsigned k = 0; k < kTaps; ++k) {
                taps[k] += static_cast<float>(
                    2.0 / kTaps *
                    std::real(value * std::polar(1.0, 2.0 * std::numbers::pi * bin * k / kTaps)));
            }
        }
        return taps;
    }
    static void Set(MYSOFA_ARRAY& array, std::vector<float>& values, MYSOFA_ATTRIBUTE* type) {
        array = {values.data(), static_cast<unsigned>(values.size()), type};
    }

    static constexpr double kLeftward[] = {0, 1, 0, -1, 0};
    char words[11][20] = {"Type", "spherical",       "cartesian",           "Conventions",
                          "SOFA", "SOFAConventions", "SimpleFreeFieldHRIR", "DataType",
                          "FIR",  "GeneralFIR",      "cartesian2"};
    MYSOFA_ATTRIBUTE spherical{nullptr, words[0], words[1]};
    MYSOFA_ATTRIBUTE cartesian{nullptr, words[0], words[2]};
    MYSOFA_ATTRIBUTE dataType{nullptr, words[7], words[8]};
    MYSOFA_ATTRIBUTE kind{&dataType, words[5], words[6]};
    MYSOFA_ATTRIBUTE conventions{&kind, words[3], words[4]};
    std::vector<float> responses, delays{0, 0}, rate{44100};
    std::vector<float> positions{0, 0, 1.4f, 90, 0, 1.4f, 0, 90, 1.4f, 270, 0, 1.4f, 120, 90, 1.4f};
    std::vector<float> receivers{0, 0.09f, 0, 0, -0.09f, 0};
    MYSOFA_HRTF hrtf{};
};

Quilo::HrtfData Loaded(const SofaSet& sofa, const ConversionOptions& options) {
    std::istringstream file(HrtfBytes(Convert(sofa, options), sofa.attributes));
    return Quilo::ReadHrtfStream(file, "a.hrtf");
}

TEST(Sofa2Hrtf, KeepsWhereThingsAreAndEveryTap) {
    const SphereFile file;
    const SofaSet sofa = SetOf(file.hrtf);
    EXPECT_EQ(sofa.warnings.size(), 1u) << "up is there twice";
    const Quilo::HrtfData set = Loaded(sofa, {});
    ASSERT_EQ(set.points.size(), 4u);
    const tav::CartesianVector places[] = {{0, 1.4f, 0}, {-1.4f, 0, 0}, {0, 0, 1.4f}, {1.4f, 0, 0}};
    // What is taken off in front is the same for all.
    std::size_t first = 0;
    while (first < kTaps && file.responses[kTaps * 2 + first] != set.points[1].filters(0, 0))
        ++first;
    ASSERT_LT(first, kTaps);
    for (std::size_t p = 0; p < 4; ++p) {
        const tav::CartesianVector& at = set.points[p].position;
        EXPECT_LT(std::hypot(at.x - places[p].x, at.y - places[p].y, at.z - places[p].z), 1e-6f);
        for (std::size_t ear = 0; ear < 2; ++ear) {
            for (std::size_t k = 0; k + 16 < set.filtersLength && first + k < kTaps; ++k) {
                ASSERT_EQ(set.points[p].filters(ear, k),
                          file.responses[(2 * p + ear) * kTaps + first + k]);
            }
        }
    }
    for (const ItdMethod method : {ItdMethod::Threshold, ItdMethod::CrossCorrelation}) {
        ConversionOptions cells;
        cells.numCells = 6;
        cells.itd = method;
        const Quilo::HrtfData cellSet = Loaded(sofa, cells);
        EXPECT_NEAR(cellSet.points[0].delay, 0.f, 1e-3f);
        EXPECT_NEAR(cellSet.points[3].delay, -cellSet.points[1].delay, 1e-3f);
        EXPECT_NEAR(cellSet.points[3].delay, 0.7f, 0.15f) << "the left ear is later";
    }
    for (const auto& ear : sofa.measurements[3].ears) {
        EXPECT_LT(CellFitter(44100.0, ear.size(), 6).Fit(ear).rmsDb, 1.0);
    }
}

TEST(Sofa2Hrtf, ReceiversDelaysAndRatesAreThoseOfTheFile) {
    SphereFile file;
    const Quilo::HrtfData plain = Loaded(SetOf(file.hrtf), {});
    std::swap(file.receivers[1], file.receivers[4]);
    file.delays = {16000, 16000};  // the onset is looked for wherever it is
    EXPECT_NEAR(OnsetOf(SetOf(file.hrtf).measurements[0].ears[0]),
                16000.0 + OnsetOf(std::span(file.responses).subspan(kTaps, kTaps)), 0.2);
    file.delays = {0, 10};
    const Quilo::HrtfData turned = Loaded(SetOf(file.hrtf), {});
    for (std::size_t k = 0; k < 64; ++k) {
        EXPECT_EQ(turned.points[0].filters(1, k), plain.points[0].filters(0, k));
        EXPECT_EQ(turned.points[0].filters(0, k + 10), plain.points[0].filters(1, k));
    }
    ConversionOptions options;
    options.rateHz = 96000.0;
    options.numTaps = 200;
    const Quilo::HrtfData fine = Loaded(SetOf(file.hrtf), options);
    EXPECT_EQ(fine.samplingRate, 96000.f);
    EXPECT_EQ(fine.filtersLength, 200u);
}

TEST(Sofa2Hrtf, SaysOfEveryFieldWhatIsWrongWithIt) {
    struct Row {
        const char* complaint;
        std::function<void(SphereFile&)> damage;
    };
    const auto nan = std::numeric_limits<float>::quiet_NaN();
    // clang-format off
    const Row rows[] = {
        {"SOFAConventions is \"GeneralFIR\"", [](auto& f) { f.kind.value = f.words[9]; }},
        {"DataType is \"SOFA\"", [](auto& f) { f.dataType.value = f.words[4]; }},
        {"dimension R is 3", [](auto& f) { f.hrtf.R = 3; }},
        {"dimension M is 0", [](auto& f) { f.hrtf.M = 0; }},
        {"dimension N is 4000000000", [](auto& f) { f.hrtf.N = 4000000000; }},
        {"Data.IR has 2560 numbers, expected 2570", [](auto& f) { f.hrtf.N = 257; }},
        {"Data.IR holds a number that is not finite", [=](auto& f) { f.responses[9] = nan; }},
        {"Data.IR is out of range", [](auto& f) { f.responses[9] = 2e6f; }},
        {"Data.IR of measurement 2 is silent", [](auto& f) { std::fill_n(f.responses.begin() + 512, 256, 0.f); }},
        {"Data.Delay is out of range", [](auto& f) { f.delays[1] = -1.f; }},
        {"Data.SamplingRate is out of range", [](auto& f) { f.rate[0] = 100.f; }},
        {"Data.SamplingRate has 0 numbers", [](auto& f) { f.hrtf.DataSamplingRate = {}; }},
        {"SourcePosition holds a number that is not finite", [=](auto& f) { f.positions[0] = nan; }},
        {"SourcePosition holds the centre", [](auto& f) { f.positions[2] = 0.f; }},
        {"SourcePosition has the coordinate type \"cartesian2\"", [](auto& f) { f.spherical.value = f.words[10]; }},
        {"ReceiverPosition tells no left ear", [](auto& f) { f.receivers[4] = 0.09f; }},
    };
    // clang-format on
    for (const Row& row : rows) {
        SphereFile file;
        row.damage(file);
        try {
            Convert(SetOf(file.hrtf), {});
            ADD_FAILURE() << row.complaint;
        } catch (const tav::Exception& fault) {
            EXPECT_TRUE(fault.Message().starts_with(row.complaint)) << fault.Message();
        }
    }
}

// The set that comes with libmysofa.

TEST(Sofa2Hrtf, TheShippedSetSoundsAsItWasMeasured) {
    const std::string bytes = Tests::ReadText(kShippedSet);
    if (bytes.empty()) GTEST_SKIP() << "not installed";
    const SofaSet sofa = ReadSofa(bytes);
    const Tests::TemporaryFolder folder;
    const std::string file = (folder / "kemar.hrtf").string();
    WriteWhole(file, HrtfBytes(Convert(sofa, {}), sofa.attributes));
    Quilo::BinauralPanningDirect pan(1, 2);
    ASSERT_TRUE(pan.LoadHrtf(file));
    EXPECT_EQ(pan.GetHrtf()->Data().numPoints, 710u);
    Tests::PanPlayer player(pan, 44100.f);
    for (std::size_t m = 0; m < sofa.measurements.size(); m += 71) {
        const Measurement& measured = sofa.measurements[m];
        pan.SetSourcePosition(0, measured.position, true, true);
        player.Play(4800, Tests::Silence);
        const auto heard = player.Play(1024, Tests::Impulse);
        for (std::size_t ear = 0; ear < 2; ++ear) {
            const auto spectrum = Plain::Spectrum(heard[ear], 1024);
            const auto expected =
                Plain::Spectrum({measured.ears[ear].begin(), measured.ears[ear].end()}, 1024);
            for (std::size_t bin = 5; bin < 372; ++bin) {  // 200 Hz to 16 kHz
                ASSERT_NEAR(20.0 * std::log10(std::abs(spectrum[bin] / expected[bin])), 0.0, 0.1)
                    << m;
            }
        }
    }
}

/// What cells miss the level of a response by, decibels, every tenth of a bandwidth of hearing from
/// 200 Hz to 16 kHz; the level is smoothed over one bandwidth.
std::vector<double> MissesOf(const tav::BiquadCells& cells, const std::vector<float>& taps) {
    constexpr std::size_t kSize = 8192;
    const auto erb = [](double hz) { return 21.4 * std::log10(1.0 + 0.00437 * hz); };
    const auto measured = Plain::Spectrum({taps.begin(), taps.end()}, kSize);
    std::vector<double> misses;
    for (double e = erb(200.0); e <= erb(16000.0); e += 0.1) {
        double power = 0.0, weights = 0.0;
        for (std::size_t bin = 1; bin < kSize / 2; ++bin) {
            const double hz = 44100.0 * static_cast<double>(bin) / kSize;
            const double weight =
                std::exp(-std::numbers::pi * std::pow(erb(hz) - e, 2)) / (1.0 + 0.00437 * hz);
            power += weight * std::norm(measured[bin]);
            weights += weight;
        }
        const double hz = (std::pow(10.0, e / 21.4) - 1.0) / 0.00437;
        const auto z = std::polar(1.0, -2.0 * std::numbers::pi * hz / 44100.0);
        double ratio = weights / power;
        for (const tav::BiquadCell& c : cells) {
            const auto at = [&](float a, float b, float d) {
                return std::norm(double{a} + z * (double{b} + z * double{d}));
            };
            ratio *= at(c.b0, c.b1, c.b2) / at(1.f, c.a1, c.a2);
        }
        misses.push_back(10.0 * std::log10(ratio));
    }
    return misses;
}

// As closely as those of the built-in set, although the loudspeaker and what all directions have in
// common are still in these responses.
TEST(Sofa2Hrtf, CellsFollowTheShippedSet) {
    const std::string bytes = Tests::ReadText(kShippedSet);
    if (bytes.empty()) GTEST_SKIP() << "not installed";
    const SofaSet sofa = ReadSofa(bytes);
    const auto rms = [](const std::vector<double>& values) {
        return std::sqrt(std::inner_product(values.begin(), values.end(), values.begin(), 0.0) /
                         static_cast<double>(values.size()));
    };
    std::vector<double> levels, interaural;  // errors
    for (std::size_t m = 0; m < sofa.measurements.size(); m += 31) {
        std::vector<double> between;
        for (const auto& taps : sofa.measurements[m].ears) {
            const auto misses = MissesOf(CellFitter(44100.0, taps.size(), 6).Fit(taps).cells, taps);
            for (const double miss : misses) ASSERT_LE(std::abs(miss), 4.0) << m;
            levels.push_back(rms(misses));
            between.resize(misses.size());
            std::ranges::transform(misses, between, between.begin(), std::minus());
        }
        interaural.push_back(rms(between));
    }
    for (auto& [errors, median, high, worst] :
         {std::tuple(std::ref(levels), 0.35, 0.55, 0.85), {std::ref(interaural), 0.5, 0.8, 1.1}}) {
        std::vector<double>& sorted = errors;
        std::ranges::sort(sorted);
        EXPECT_LE(sorted[sorted.size() / 2], median);
        EXPECT_LE(sorted[sorted.size() * 95 / 100], high);
        EXPECT_LE(sorted.back(), worst);
    }
}

TEST(Sofa2Hrtf, TheProgramSurvivesDamagedFiles) {
    const Tests::TemporaryFolder folder;
    const auto run = [&](const std::string& words) {
        const std::string command = "cd '" + folder.Path().string() +
                                    "' && '" QUILO_BIN_DIR "/sofa2hrtf' " + words +
                                    " > out.txt 2> error.txt";
        return WEXITSTATUS(std::system(command.c_str()));
    };
    for (const char* words :
         {"", "a.sofa", "a.sofa b.wav", "none.sofa b.hrtf", "a b.hrtf --cells 1",
          "a b.hrtf --cells 25", "a b.hrtf --rate", "a b.hrtf --itd best", "a b.hrtf --best"}) {
        EXPECT_EQ(run(words), 2) << words;
        EXPECT_EQ(Tests::Lines(Tests::ReadText(folder / "error.txt")).size(), 1u) << words;
    }
    const std::string whole = Tests::ReadText(kShippedSet);
    if (whole.empty()) GTEST_SKIP() << "not installed";
    unsigned random = 1;
    for (int k = 0; k < 8; ++k) {
        std::string bytes = whole;
        if (k % 2 == 0) bytes.resize(whole.size() * static_cast<std::size_t>(k) / 8);
        for (int i = 0; k % 2 == 1 && i < 40; ++i) {
            random = random * 1664525u + 1013904223u;
            bytes[random % 20000] = static_cast<char>(random >> 24);
        }
        Tests::WriteText(folder / "a.sofa", bytes);
        const int status = run("a.sofa b.hrtf");
        EXPECT_TRUE(status == 0 || status == 2) << status;
        if (k % 2 == 0 && k > 0) {
            const std::string error = Tests::ReadText(folder / "error.txt");
            EXPECT_NE(error.find("the file is truncated"), std::string::npos) << error;
        }
        EXPECT_EQ(std::filesystem::exists(folder / "b.hrtf"), status == 0)
            << "nothing is left of a failure";
        std::filesystem::remove(folder / "b.hrtf");
    }
}

}  // namespace
}  // namespace SofaTool
