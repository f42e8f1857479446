// SPDX-License-Identifier: MIT
#include "hrtf/QuiloHrtfFile.h"

#include "hrtf/QuiloHrtf.h"
#include "hrtf/QuiloNearfieldCompensationFilters.h"
#include "libquilo/hrtf/HrtfFiles.h"
#include "support/HostProgram.h"
#include "text/VelkDspException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace Quilo {
namespace {

using Sdif::ElementType;
using Change = std::function<void(HrtfFileContent&)>;
const double kNan = std::numeric_limits<double>::quiet_NaN();

HrtfData Read(const std::string& bytes) {
    std::istringstream stream(bytes);
    return ReadHrtfStream(stream, "PATH");
}

std::string FaultOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const tav::Exception& fault) {
        return fault.Message();
    }
    return "no fault";
}

TEST(HrtfFile, CellsCarryTheGainInTheirFirstNumerator) {
    const HrtfData set = Read(SmallCellSet().Bytes());
    EXPECT_EQ(set.architecture, Hrtfs::Architecture::Binaural);
    EXPECT_EQ(set.filterType, Hrtfs::FilterType::BiquadCells);
    EXPECT_EQ(set.filtersLength, 12u);
    EXPECT_EQ(set.numChannels, 2u);
    EXPECT_EQ(set.samplingRate, 44100.f);
    EXPECT_EQ(set.infos.at("URL"), "PATH");
    EXPECT_EQ(set.infos.at("FiltersLength"), "9");
    ASSERT_EQ(set.points.size(), 2u);
    const float expected[2][12] = {{2, 1, 0.5, 1, -0.5, 0.125, 1, 0, 0.5, 1, 0.25, -0.125},
                                   {-2, -3, 0, 1, 0, 0.5, 1, 0.25, 0, 1, -1, 0.5}};
    for (std::size_t channel : {0u, 1u}) {
        EXPECT_TRUE(std::ranges::equal(set.points[1].filters.Row(channel), expected[channel]));
    }
    EXPECT_EQ(set.points[1].delay, 0.5f);
    const tav::CartesianVector& p = set.points[1].position;
    EXPECT_NEAR(p.x, 1.f, 1e-6f);
    EXPECT_NEAR(p.y, 0.f, 1e-6f);
    EXPECT_NEAR(p.z, std::sqrt(3.f), 1e-6f);
}

/// As a set may have them: the first two of the five numbers of a cell are its denominator.
void PutDenominatorsFirst(HrtfFileContent& f) {
    for (HrtfFrame& frame : f.frames) {
        for (const std::size_t at : {1u, 5u, 10u, 14u}) {
            const double cell[] = {0.25, 0.5, -3.0, 2.0};
            std::ranges::copy(cell, &frame.matrices[2].values[at]);
        }
    }
}

void AddWhatIsForeign(HrtfFileContent& f) {
    std::swap(f.frames[0], f.frames[1]);
    auto& matrices = f.frames[1].matrices;
    matrices.insert(matrices.begin(), {"XXXX", ElementType::Int8, 1, 5, {1, 2, 3, 4, 5}});
    f.frames.insert(f.frames.begin(), {9, {{"1ABC", ElementType::Int8, 1, 1, {1}}}, "1FQ0"});
}

void AddSurplusNumbers(HrtfFileContent& f) {
    f.infos["FiltersLength"] = "7";
    const std::vector<double> numbers{1, 0, 0, 0.5, 0, 8, 9, 1, 0, 0, 0.5, 0, 8, 9};
    for (auto& frame : f.frames) frame.matrices[2] = {"XIIR", ElementType::Float32, 2, 7, numbers};
}

// clang-format off
TEST(HrtfFile, WhatSoundFilesMayHold) {
    const struct { const char* name; Change change; std::function<bool(const HrtfData&)> holds; } cases[] = {
        {"any order, other frames, other matrices", AddWhatIsForeign, [](auto& s) { return s.points[0].position.y == 1.f && s.points[1].delay == 0.5f; }},
        {"surplus numbers behind the last whole cell", AddSurplusNumbers, [](auto& s) { return s.filtersLength == 6 && s.points[0].filters(1, 4) == 0.5f; }},
        {"denominators first", PutDenominatorsFirst, [](auto& s) { return s.points[0].filters(0, 1) == -3.f && s.points[0].filters(0, 5) == 0.5f; }},
        {"finite responses of whole numbers", [](auto& f) { f = SmallFirSet(); }, [](auto& s) { return s.filterType == Hrtfs::FilterType::Fir && s.filtersLength == 3 && s.points[1].filters(1, 2) == 6.f; }},
        {"another word for cells", [](auto& f) { f.infos["FiltersType"] = "BIQUAD"; }, [](auto& s) { return s.filterType == Hrtfs::FilterType::BiquadCells; }},
        {"for loudspeakers", [](auto& f) { f.infos["DataType"] = "BinauralToTransauralLeastSquares"; }, [](auto& s) { return static_cast<int>(s.architecture) == 8; }},
        {"for nobody known", [](auto& f) { f.infos["DataType"] = "unspecified"; }, [](auto& s) { return static_cast<int>(s.architecture) == 0; }},
        {"harmonics without filters", [](auto& f) { f.infos["FiltersType"] = "SH_COEFF"; for (auto& frame : f.frames) frame.matrices.resize(1); }, [](auto& s) { return s.filterType == Hrtfs::FilterType::ShCoeff; }},
    };
    // clang-format on
    for (const auto& c : cases) {
        HrtfFileContent file = SmallCellSet();
        c.change(file);
        EXPECT_EQ(FaultOf([&] { EXPECT_TRUE(c.holds(Read(file.Bytes()))); }), "no fault") << c.name;
    }
}

// clang-format off
TEST(HrtfFile, DamageIsNamed) {
    const struct { const char* text; Change change; } cases[] = {
        {"invalid header ", [](auto& f) { f.infos.erase("FiltersType"); }},
        {"invalid header ", [](auto& f) { f.infos.erase("NumChannels"); }},
        {"invalid header ", [](auto& f) { f.infos.erase("FiltersLength"); }},
        {"invalid header ", [](auto& f) { f.infos.erase("NumPoints"); }},
        {"invalid header ", [](auto& f) { f.infos.erase("SamplingRate"); }},
        {"invalid header ", [](auto& f) { f.infos["FiltersType"] = "unknown"; }},
        {"invalid header ", [](auto& f) { f.infos["NumPoints"] = "two"; }},
        {"invalid header ", [](auto& f) { f.infos["NumPoints"] = "1.5"; }},
        {"invalid header ", [](auto& f) { f.infos["FiltersLength"] = "4"; }},
        {"invalid header ", [](auto& f) { f.infos["FiltersLength"] = "4294967295"; }},
        {"invalid header ", [](auto& f) { f.infos["SamplingRate"] = "nan"; }},
        {"too many HRTF frames ? ", [](auto& f) { f.frames[1].stream = 3; }},
        {"too many HRTF frames ? ", [](auto& f) { f.frames[1].stream = 0; }},
        {"too many HRTF frames ? ", [](auto& f) { f.frames[1].stream = -2147483648; }},
        {"exception reading XCAR matrix ", [](auto& f) { f.frames[0].matrices[0] = {"XCAR", ElementType::Float32, 1, 2, {0, 1}}; }},
        {"exception reading XCAR matrix ", [](auto& f) { f.frames[0].matrices[0].values[1] = kNan; }},
        {"exception reading XAED matrix ", [](auto& f) { f.frames[1].matrices[0].values[1] = 1e300; }},
        {"exception reading XAED matrix ", [](auto& f) { f.frames[1].matrices[0] = {"XAED", ElementType::Float32, 2, 3, {0, 0, 1, 0, 0, 1}}; }},
        {"exception reading XITD matrix ", [](auto& f) { f.frames[1].matrices[1].values[0] = kNan; }},
        {"exception reading XIIR matrix ", [](auto& f) { f.infos["FiltersLength"] = "13"; }},
        {"exception reading XIIR matrix ", [](auto& f) { f.infos["NumChannels"] = "1"; }},
        {"exception reading XIIR matrix ", [](auto& f) { f.frames[0].matrices[2].values[1] = f.frames[0].matrices[2].values[0] = 1e38; }},
        {"exception reading XIIR matrix ", [](auto& f) { f.infos["FiltersType"] = "SH_COEFF"; }},
        {"exception reading XFIR matrix ", [](auto& f) { f = SmallFirSet(); f.infos["FiltersLength"] = "1000000"; }},
        {"XITD matrix with FIR filters ? ", [](auto& f) { const auto itd = f.frames[0].matrices[1]; f = SmallFirSet(); f.frames[0].matrices.push_back(itd); }},
        {"XIIR matrix with FIR filters ? ", [](auto& f) { const auto iir = f.frames[0].matrices[2]; f = SmallFirSet(); f.frames[0].matrices.push_back(iir); }},
        {"unexpected XFIR matrix ? ", [](auto& f) { f.frames[0].matrices[2].signature = "XFIR"; }},
        {"invalid number of HRTF frames ? ", [](auto& f) { f.frames.pop_back(); }},
        {"invalid number of HRTF frames ? ", [](auto& f) { f.frames.push_back(f.frames[0]); }},
        {"invalid number of HRTF frames ? ", [](auto& f) { f.infos["NumPoints"] = "16000000"; }},
        {"incomplete HRTF frames ? ", [](auto& f) { f.frames[1].stream = 1; }},
        {"incomplete HRTF frames ? ", [](auto& f) { f.frames[1].matrices.erase(f.frames[1].matrices.begin()); }},
        {"incomplete HRTF frames ? ", [](auto& f) { f.frames[1].matrices.pop_back(); }},
        {"filter set is unstable : ", [](auto& f) { for (const std::size_t k : {2u, 4u}) f.frames[0].matrices[2].values[k] = 1.5; }},
    };
    for (std::size_t k = 0; k < std::size(cases); ++k) {
        HrtfFileContent file = SmallCellSet();
        cases[k].change(file);
        EXPECT_EQ(FaultOf([&] { Read(file.Bytes()); }), cases[k].text + std::string("PATH")) << "case " << k;
    }
}
// clang-format on

TEST(HrtfFile, NoPrefixOfAFileIsTakenForAWholeOne) {
    for (const std::string& whole : {SmallCellSet().Bytes(), SmallFirSet().Bytes()}) {
        const std::size_t frames = whole.find("HRTF");
        for (std::size_t size = 0; size < whole.size(); ++size) {
            const std::string fault = FaultOf([&] { Read(whole.substr(0, size)); });
            const bool betweenFrames = size == frames || size == whole.rfind("HRTF");
            const auto isIn = [&](const char* matrix, std::size_t numBytes) {
                const std::size_t begin = whole.find(matrix) + 16;
                return size >= begin && size < begin + numBytes;
            };
            EXPECT_EQ(fault, size < 16          ? "invalid file PATH"
                             : size < frames    ? "invalid header PATH"
                             : betweenFrames    ? "invalid number of HRTF frames ? PATH"
                             : isIn("XCAR", 12) ? "exception reading XCAR matrix PATH"
                             : isIn("XAED", 24) ? "exception reading XAED matrix PATH"
                                                : "error reading file PATH")
                << size << " bytes";
        }
    }
}

TEST(HrtfFile, TheNameChoosesTheLoader) {
    const Tests::TemporaryFolder folder;
    std::filesystem::create_directories(folder / "folder.hrtf");
    const auto name = [&](const char* file) { return (folder / file).generic_string(); };
    for (const char* file : {"set.hrtf", "set.near"})
        Tests::WriteText(folder / file, SmallCellSet().Bytes());
    Tests::WriteText(folder / "text.hrtf", "A text that is no set of filters.");

    Hrtf set(name("set.hrtf"));
    const auto fault = [&](const std::string& path) { return FaultOf([&] { set.Load(path); }); };
    EXPECT_EQ(fault(name("none.hrtf")), "couldnt find file " + name("none.hrtf"));
    EXPECT_EQ(fault(name("text.hrtf")), "invalid file " + name("text.hrtf"));
    EXPECT_EQ(fault(name("folder.hrtf")), "invalid file " + name("folder.hrtf"));
    EXPECT_EQ(fault("set.sofa"), "SOFA is not yet implemented on this platform");
    EXPECT_EQ(fault(name("set.near")), "invalid hrtf file : " + name("set.near"));
    EXPECT_EQ(set.Data().numPoints, 2u) << "failures leave the set as it was";
    for (const char* word : {"kemar", "none", "", "a.folder/name"}) {
        EXPECT_EQ(FaultOf([&] { EXPECT_EQ(Hrtf(word).Data().numPoints, 710u); }), "no fault");
    }

    NearfieldCompensationFilters filters;
    filters.Load(name("set.near"));
    EXPECT_EQ(filters.Set().Data().points.size(), 2u);
    EXPECT_EQ(FaultOf([&] { filters.Load("set.hrtf"); }), "invalid file extension set.hrtf");
}

TEST(Hrtfs, CodesWithoutATextAreRefused) {
    EXPECT_EQ(FaultOf([] { Hrtfs::Text(static_cast<Hrtfs::Architecture>(9)); }),
              "unknown hrtf type 9");
    EXPECT_EQ(FaultOf([] { Hrtfs::Text(static_cast<Hrtfs::FilterType>(-1)); }),
              "unknown hrtf filter type -1");
}

}  // namespace
}  // namespace Quilo
