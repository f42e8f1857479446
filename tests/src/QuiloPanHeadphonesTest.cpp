// SPDX-License-Identifier: MIT
// Sets of filters from files, as a user loads them: by the program, while audio runs.
#include "audiofiles/VelkDspAudioFile.h"
#include "audiofiles/VelkDspWavFile.h"
#include "libquilo/hrtf/HrtfFiles.h"
#include "support/HostProgram.h"

#include <gtest/gtest.h>

using namespace Tests;
using Console = std::vector<std::string>;

namespace {

/// A good set, whose responses ahead are 1 2 3 and 4 5 6, a damaged one, and one that is none for
/// headphones.
class HeadphonesFiles : public testing::Test {
protected:
    HeadphonesFiles() {
        Quilo::HrtfFileContent set = Quilo::SmallFirSet();
        const std::string good = set.Bytes();
        WriteText(folder_ / "ears.hrtf", good);
        WriteText(folder_ / "cut.hrtf", good.substr(0, good.size() - 8));
        set.infos["DataType"] = "BinauralToTransauralLeastSquares";
        WriteText(folder_ / "field.hrtf", set.Bytes());
    }

    std::string Path(const char* name) const { return (folder_ / name).string(); }

    TemporaryFolder folder_;
};

}  // namespace

TEST_F(HeadphonesFiles, LoadDuringPlayAndSoundAndSurviveWhatFails) {
    constexpr std::size_t kImpulses[] = {4410, 15435, 28665, 39690};  // frames
    tav::AudioBuffer input(1, 44100, 44100);
    for (const std::size_t frame : kImpulses) input.Channel(0)[frame] = 1.f;
    tav::WriteWavFile(folder_ / "in.wav", input);
    WriteText(folder_ / "s.txt",
              "object quilo.pan~ 1 2 binaural\n"
              "source 1 xyz 0 1 0\n"
              "at 0.2 load /elsewhere/ears.hrtf\n"
              "at 0.3 gethrtffile\n"
              "at 0.4 read cut.hrtf\n"
              "at 0.5 host from scheduler hrtffile field.hrtf\n"
              "at 0.6 gethrtffile\n"
              "at 0.7 host from scheduler hrtffile kemar\n"
              "at 0.8 gethrtffile\n");
    const HostRun run = RunHost(folder_, {"--quiet", "--in", "in.wav", "--out", "o.wav", "s.txt"});
    ASSERT_EQ(run.status, 0) << run.errors.at(0);
    const std::string path = Path("ears.hrtf");
    EXPECT_EQ(run.console,
              (Console{"post: Loaded hrtf from ears.hrtf", "outlet: hrtffile " + path,
                       "error: exception : error reading file " + Path("cut.hrtf"),
                       "error: Error loading file : cut.hrtf",
                       "error: Error loading file : field.hrtf", "outlet: hrtffile " + path,
                       "post: Loaded hrtf from kemar", "outlet: hrtffile kemar"}));

    const tav::AudioBuffer output = tav::ReadAudioFile(folder_ / "o.wav");
    ASSERT_EQ(output.NumChannels(), 2u);
    for (const std::size_t impulse : {kImpulses[1], kImpulses[2]}) {
        for (const unsigned ear : {0u, 1u}) {
            for (std::size_t tap = 0; tap < 4; ++tap) {
                const float expected = tap < 3 ? static_cast<float>(3 * ear + tap + 1) : 0.f;
                EXPECT_NEAR(output.Channel(ear)[impulse + tap], expected, 1e-5f) << ear << tap;
            }
        }
    }
    double energy = 0.0;
    for (const unsigned ear : {0u, 1u}) {
        for (std::size_t k = 0; k < 1000; ++k) {
            const float before = output.Channel(ear)[kImpulses[0] + k];
            EXPECT_NEAR(output.Channel(ear)[kImpulses[3] + k], before, 1e-5f) << ear << " " << k;
            energy += static_cast<double>(before * before);
        }
    }
    EXPECT_GT(energy, 0.1) << "the built-in set sounds, before and after";
}

TEST_F(HeadphonesFiles, AreCarriedByStandalonePrograms) {
    Quilo::HrtfFileContent near = Quilo::SmallCellSet();
    near.infos["DataType"] = "NearfieldCompensationFilter";
    near.infos["FiltersLength"] = "5";
    for (Quilo::HrtfFrame& frame : near.frames) {
        Sdif::Matrix& cells = frame.matrices[2];
        cells.rows = 2;
        cells.columns = 5;
        cells.values = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0};
    }
    WriteText(folder_ / "shelves.near", near.Bytes());
    WriteText(folder_ / "s.txt",
              "object quilo.pan~ 1 2 binaural nearfield\n"
              "host fileusage\n"
              "load ears.hrtf\nloadnf shelves.near\nhost fileusage\n"
              "load kemar\nhost fileusage\n"
              "at 0.01 loadnf none\nat 0.01 host fileusage\n"
              "at 0.02 host free\nat 0.02 host fileusage\n");
    const HostRun run = RunHost(folder_, {"--quiet", "s.txt"});
    EXPECT_EQ(run.console, (Console{"post: Loaded hrtf from ears.hrtf",
                                    "post: Loaded nearfield compensation filters from shelves.near",
                                    "support file: ears.hrtf", "support file: shelves.near",
                                    "post: Loaded hrtf from kemar", "support file: shelves.near",
                                    "post: Loaded nearfield compensation filters from none"}));
}
