// SPDX-License-Identifier: MIT
#include "hrtf/QuiloNearfieldShelf.h"

#include "hrtf/QuiloNearfieldCompensationFilters.h"
#include "libquilo/hrtf/HrtfFiles.h"
#include "reference/PlainSphere.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <filesystem>
#include <fstream>
#include <numbers>

namespace Quilo {
namespace {

constexpr double kHead = 0.0875;

double LevelOf(const NearfieldShelf& shelf, double hz) {
    const std::complex<double> s(0.0, hz / static_cast<double>(shelf.cornerHz));
    const double low = std::pow(10.0, static_cast<double>(shelf.lowDb) / 20.0);
    const double high = std::pow(10.0, static_cast<double>(shelf.highDb) / 20.0);
    return 20.0 * std::log10(std::abs((low + high * s) / (1.0 + s)));
}

TEST(NearfieldShelf, IsThatOfARigidSphereWithinADecibel) {
    struct Row {
        double distance, worst, rms;
    };
    for (const Row& row :
         {Row{0.16, 0.9, 0.4}, {0.2, 0.7, 0.3}, {0.33, 0.4, 0.2}, {0.8, 0.1, 0.05}}) {
        double worst = 0.0, squares = 0.0;
        int count = 0;
        for (double deg = 0.0; deg <= 180.0; deg += 7.5) {
            const double angle = deg * std::numbers::pi / 180.0;
            const NearfieldShelf shelf = SphereShelves::Get().At(row.distance, angle);
            for (double hz = 50.0; hz <= 16000.0; hz *= 1.26) {
                const auto pressure = [&](double distance) {
                    return std::abs(Plain::SphereResponse(kHead, distance, angle, hz));
                };
                const double level = 20.0 * std::log10(pressure(row.distance) / pressure(1.4));
                const double error = std::abs(LevelOf(shelf, hz) - level);
                worst = std::max(worst, error);
                squares += error * error;
                ++count;
            }
        }
        EXPECT_LE(worst, row.worst) << row.distance;
        EXPECT_LE(std::sqrt(squares / count), row.rms) << row.distance;
    }
}

/// A cell at 44.1 kHz that is the shelf, by the bilinear transform: gain, b1 b2 a1 a2.
std::vector<double> CellOf(const NearfieldShelf& shelf) {
    const double t = std::tan(std::numbers::pi * static_cast<double>(shelf.cornerHz) / 44100.0);
    const double low = t * std::pow(10.0, static_cast<double>(shelf.lowDb) / 20.0);
    const double high = std::pow(10.0, static_cast<double>(shelf.highDb) / 20.0);
    return {(low + high) / (t + 1.0), (low - high) / (low + high), 0.0, (t - 1.0) / (t + 1.0), 0.0};
}

TEST(NearfieldCompensationFilters, ComeFromAFileForOneEarOrTwo) {
    const NearfieldShelf shelves[] = {
        {6.f, -3.f, 900.f}, {-2.f, 4.f, 1800.f}, {1.f, 1.5f, 400.f}, {0.f, -9.f, 3000.f}};
    const Tests::TemporaryFolder folder;
    const std::string file = (folder / "shelves.near").generic_string();
    const auto load = [&](unsigned numChannels, const char* dataType) {
        HrtfFileContent set = SmallCellSet();
        set.infos["DataType"] = dataType;
        set.infos["NumChannels"] = std::to_string(numChannels);
        set.infos["FiltersLength"] = "5";
        for (std::size_t point = 0; point < 2; ++point) {  // on the right; above the left
            Sdif::Matrix& position = set.frames[point].matrices[0];
            position = {"XCAR", Sdif::ElementType::Float32, 1, 3, {0.3, 0, 0}};
            if (point == 1) position.values = {-0.1, 0, 0.2};
            Sdif::Matrix& cells = set.frames[point].matrices[2];
            cells.rows = numChannels;
            cells.columns = 5;
            cells.values.clear();
            for (unsigned channel = 0; channel < numChannels; ++channel) {
                const auto cell = CellOf(shelves[numChannels * point + channel]);
                cells.values.insert(cells.values.end(), cell.begin(), cell.end());
            }
        }
        std::ofstream(file, std::ios::binary) << set.Bytes();
        return NearfieldCompensationFilters(file);
    };
    const auto expect = [](const NearfieldShelf& read, const NearfieldShelf& written) {
        for (const double hz : {50.0, 1000.0, 4000.0}) {
            EXPECT_NEAR(LevelOf(read, hz), LevelOf(written, hz), 0.3) << hz;
        }
    };
    const tav::CartesianVector right{0.28f, 0.02f, 0.f}, aboveLeft{-0.1f, 0.f, 0.21f};
    const tav::CartesianVector left{-0.3f, 0.f, 0.01f}, behindLeft{-0.1f, -0.2f, 0.f};
    const auto two = load(2, "NearfieldCompensationFilter");
    expect(two.Shelf(right, 0), shelves[0]);
    expect(two.Shelf(right, 1), shelves[1]);
    expect(two.Shelf(aboveLeft, 0), shelves[2]);
    expect(two.Shelf(aboveLeft, 1), shelves[3]);
    EXPECT_EQ(two.Delay(right), 0.f);
    EXPECT_EQ(two.Delay(aboveLeft), 0.5f);
    // One ear for both: what is on the right for the right ear is on the left for the left one, and
    // only the angle to the axis of the ears counts.
    const auto one = load(1, "NearfieldCompensationFilter");
    expect(one.Shelf(right, 1), shelves[0]);
    expect(one.Shelf(left, 0), shelves[0]);
    expect(one.Shelf(behindLeft, 1), shelves[1]);
    expect(one.Shelf({1.4f, 0.f, 0.f}, 1), {});
    EXPECT_TRUE(two.IsUsable() && one.IsUsable());
    EXPECT_FALSE(load(2, "Binaural").IsUsable());
    EXPECT_FALSE(NearfieldCompensationFilters().Delay(right).has_value());
    std::filesystem::remove(file);
}

}  // namespace
}  // namespace Quilo
