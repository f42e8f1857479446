// SPDX-License-Identifier: MIT
// Lets control threads and an audio thread loose on the processors, for the thread sanitizer and
// for faults that need two threads to show. Each scenario lasts about a second, and each panner a
// tenth, times the environment variable QUILO_EFFORT.
//
// A processor leaves it to its owner that one setter runs at a time; a panner sees to that itself.
#include "libquilo/pan/PanPlayer.h"
#include "processors/VelkDspDelay.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspSignalMatrix.h"
#include "races/RaceThreads.h"
#include "realtime/BusyPan.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace {

using Tests::Fault;
using Tests::RunThreads;
using Tests::ScenarioTime;
using Tests::Setters;

/// Channels of doubles with ones at the input, as a host passes them.
class HostBlock {
public:
    HostBlock(unsigned numInputs, unsigned numOutputs)
        : input_(kMostFrames, 1.0),
          outputs_(numOutputs, std::vector<double>(kMostFrames)),
          inputPointers_(numInputs, input_.data()) {
        for (auto& output : outputs_) outputPointers_.push_back(output.data());
    }

    void Play(tav::AudioProcessorBase& processor, unsigned frames) {
        frames_ = frames;
        processor.ProcessHost(outputPointers_.data(), inputPointers_.data(), frames, false, false);
    }

    /// Every sample passes, given the same sample of the first output.
    bool AllOf(const std::function<bool(double sample, double sampleOfFirst)>& passes) const {
        for (const auto& output : outputs_) {
            for (unsigned k = 0; k < frames_; ++k) {
                if (!passes(output[k], outputs_.front()[k])) return false;
            }
        }
        return true;
    }

    /// Of any frame, summed over the outputs; not finite when a sample is not.
    double LargestEnergy() const {
        double largest = 0.0;
        for (unsigned k = 0; k < frames_; ++k) {
            double energy = 0.0;
            for (const auto& output : outputs_) energy += output[k] * output[k];
            if (!std::isfinite(energy)) return energy;
            largest = std::max(largest, energy);
        }
        return largest;
    }

    static constexpr unsigned kMostFrames = 512;

private:
    unsigned frames_ = 0;
    std::vector<double> input_;
    std::vector<std::vector<double>> outputs_;
    std::vector<const double*> inputPointers_;
    std::vector<double*> outputPointers_;
};

constexpr unsigned kInputs = 6;
constexpr unsigned kOutputs = 40;
constexpr int kSteps = 64;  // gains are 1 / kSteps apart, so that a mixed row shows

/// A row whose gains are all the same.
std::vector<float> UniformRow(std::mt19937& random) {
    const auto steps = static_cast<float>(random() % (kSteps + 1));
    return std::vector<float>(kOutputs, steps / static_cast<float>(kSteps));
}

unsigned SomeFrames() {
    static std::mt19937 random(99);
    return static_cast<unsigned>(random() % HostBlock::kMostFrames) + 1;
}

/// All outputs hold the same sum as long as no row is mixed from two.
bool Uniform(const HostBlock& block) {
    return block.AllOf([](double sample, double first) { return std::abs(sample - first) < 1e-4; });
}

Fault RowsArriveWholeWhileTheyGlide() {
    tav::SignalMatrix matrix(kInputs, kOutputs);
    HostBlock block(kInputs, kOutputs);
    std::vector<std::vector<float>> newest(kInputs, std::vector<float>(kOutputs));
    const auto moveSources = [&](std::mt19937& random) {
        const auto row = static_cast<unsigned>(random() % kInputs);
        newest[row] = UniformRow(random);
        matrix.SetRow(row, newest[row], random() % 16 == 0);
    };
    const auto changeRamps = [&](std::mt19937& random) {
        constexpr float kTimes[] = {0.f, 0.1f, 1.f, 5.f, 30.f};
        constexpr float kRates[] = {8000.f, 44100.f, 48000.f};
        if (random() % 2 == 0) matrix.SetInterpolationTime(kTimes[random() % 5]);
        if (random() % 8 == 0) matrix.SetSampleRate(kRates[random() % 3]);
        if (random() % 8 == 0) matrix.SetBufferSize(static_cast<unsigned>(random() % 600));
        std::this_thread::yield();
    };
    const auto audio = [&]() -> Fault {
        block.Play(matrix, SomeFrames());
        return Uniform(block) ? "" : "a row was mixed from two";
    };
    if (Fault fault = RunThreads(audio, {moveSources, changeRamps}); !fault.empty()) return fault;

    // Whatever happened, the newest rows are where all this ends.
    for (int blocks = 0; blocks < 10; ++blocks) block.Play(matrix, HostBlock::kMostFrames);
    double sum = 0.0;
    for (const auto& row : newest) sum += static_cast<double>(row.front());
    const auto isSum = [&](double sample, double) { return std::abs(sample - sum) < 1e-4; };
    return block.AllOf(isSum) ? "" : "a target was lost";
}

Fault ImmediateRowsAreRowsThatWereSet() {
    tav::SignalMatrix matrix(1, kOutputs);
    HostBlock block(1, kOutputs);
    const auto set = [&](std::mt19937& random) {
        matrix.SetRow(0, UniformRow(random), random() % 2 == 0);
    };
    const auto audio = [&]() -> Fault {
        block.Play(matrix, SomeFrames());
        const auto wasSet = [](double sample, double first) {
            return sample == first && sample * kSteps == std::floor(sample * kSteps);
        };
        return block.AllOf(wasSet) ? "" : "a gain was heard that nobody set";
    };
    return RunThreads(audio, {set, set});
}

/// Jumps and glides of one row in any order, while audio runs into the middle of them: whatever it
/// took first, it ends with the row that was set last. (Audio may see a target before the jump that
/// was posted before it.)
Fault TheLastRowWins() {
    enum class Turn { Control, Audio };
    tav::SignalMatrix matrix(1, kOutputs);
    matrix.SetSampleRate(8000.f);
    matrix.SetInterpolationTime(1.f);  // segments of 8 samples
    HostBlock block(1, kOutputs);
    std::vector<float> newest(kOutputs);
    std::atomic<Turn> turn = Turn::Control;
    const auto set = [&](std::mt19937& random) {
        if (turn.load(std::memory_order_acquire) != Turn::Control) {
            return std::this_thread::yield();
        }
        for (auto writes = 1 + random() % 4; writes > 0; --writes) {
            newest = UniformRow(random);
            matrix.SetRow(0, newest, random() % 2 == 0);
        }
        turn.store(Turn::Audio, std::memory_order_release);
    };
    const auto audio = [&]() -> Fault {
        const bool isComplete = turn.load(std::memory_order_acquire) == Turn::Audio;
        // A long block has many boundaries at which a row may be taken, after its jumps were.
        block.Play(matrix, isComplete ? 24 : HostBlock::kMostFrames);
        if (!isComplete) return "";
        block.Play(matrix, 1);
        const auto isNewest = [&](double sample, double) {
            return std::abs(sample - static_cast<double>(newest.front())) < 1e-6;
        };
        const bool isReached = block.AllOf(isNewest);
        turn.store(Turn::Control, std::memory_order_release);
        return isReached ? "" : "an older row is heard";
    };
    return RunThreads(audio, {set});
}

/// Values that belong together, as a source's target or a panner's switches: all of one Store, in
/// the order of the stores, and the last one arrives.
Fault LinkedValuesArriveTogether() {
    struct Linked {
        std::array<std::uint32_t, 12> values{};
    };
    tav::SharedCell<Linked> cell;
    std::uint32_t stored = 0;
    const auto store = [&](std::mt19937&) {
        ++stored;
        Linked linked;
        for (std::uint32_t& value : linked.values) value = stored;
        cell.Store(linked);
    };
    Linked taken;
    const auto take = [&]() -> Fault {
        const std::uint32_t before = taken.values.front();
        cell.Take(taken);
        const std::uint32_t first = taken.values.front();
        if (first < before) return "an older store came after a newer one";
        const auto isFirst = [first](std::uint32_t value) { return value == first; };
        return std::ranges::all_of(taken.values, isFirst) ? "" : "values of two stores were mixed";
    };
    Fault fault = RunThreads(take, {store});
    cell.Take(taken);
    if (fault.empty() && taken.values.front() != stored) fault = "the last store was lost";
    return fault;
}

/// Through a line full of ones a one comes out, at any delay, by any kernel, from any ring.
Fault DelaysKeepTheirHistoryWhileTheyGrow() {
    tav::Delay delay;
    HostBlock block(1, 1);
    for (int blocks = 0; blocks < 200; ++blocks) block.Play(delay, HostBlock::kMostFrames);
    const auto move = [&](std::mt19937& random) {
        delay.SetInterpolationTime(static_cast<float>(random() % 4));
        delay.SetDelay(static_cast<float>(random() % 1000) * 0.1f, random() % 8 == 0);
    };
    const auto rebuild = [&](std::mt19937& random) {
        delay.SetMaximumDelay(static_cast<float>(random() % 10000));
        // Not 3, the allpass: what it remembers comes from when it was last in use.
        constexpr std::uint32_t kCodes[] = {0, 1, 2, 5, 6, 7, 8};
        delay.SetInterpolationKind(kCodes[random() % std::size(kCodes)]);
        delay.SetBufferSize(static_cast<unsigned>(random() % 600));
    };
    const auto audio = [&]() -> Fault {
        block.Play(delay, SomeFrames());
        const auto isOne = [](double sample, double) { return std::abs(sample - 1.0) < 1e-4; };
        return block.AllOf(isOne) ? "" : "a gap in the line was heard";
    };
    return RunThreads(audio, {move, rebuild});
}

/// A patch, a host and the audio thread at a panner, all at once.
Fault StormOver(Tests::BusyPan& pan) {
    const auto audio = [&]() -> Fault {
        pan.Play();
        return pan.Finite() ? "" : "an output was no number";
    };
    const auto disturb = [&](std::mt19937& random) { pan.Disturb(random); };
    return RunThreads(audio, {disturb, disturb}, ScenarioTime() / 20, Setters::AllAtOnce);
}

Fault PannersOutliveAStorm() {
    for (const Tests::PanCase& c : Tests::kAllPanners) {
        Tests::BusyPan pan(Quilo::Pan::Create(4, c.numOutputs, c.type, c.subtype));
        const Fault fault = StormOver(pan);
        if (!fault.empty()) return Tests::NameOf(c) + ": " + fault;
    }
    return {};
}

/// Loudspeakers spread evenly over a sphere, turned as a whole.
tav::CartesianArray TurnedRig(unsigned count, std::mt19937& random) {
    std::uniform_real_distribution<double> angle(-3.0, 3.0);
    const double about = angle(random), over = angle(random);
    tav::CartesianArray rig(count);
    for (unsigned k = 0; k < count; ++k) {
        const double up = 1.0 - (2.0 * k + 1.0) / count, out = std::sqrt(1.0 - up * up);
        const double x = out * std::cos(2.4 * k + about), y = out * std::sin(2.4 * k + about);
        rig[k] = {static_cast<float>(x),
                  static_cast<float>(std::cos(over) * y - std::sin(over) * up),
                  static_cast<float>(std::sin(over) * y + std::cos(over) * up)};
    }
    return rig;
}

/// A new layout for every vector. Rows of gains have an energy of 1, and between two of them none
/// has more: whatever is heard on the way, nothing is louder than the source.
Fault RigsTurnInEveryVector(const char* type) {
    constexpr unsigned kLoudspeakers = 250;
    const auto pan = Quilo::Pan::Create(1, kLoudspeakers, type, "direct");
    pan->SetSampleRate(48000.f);
    pan->SetBufferSize(HostBlock::kMostFrames);
    pan->SetInterpolationTime(5.f);
    std::mt19937 first(1);
    pan->SetSpeakersPositions(TurnedRig(kLoudspeakers, first));
    HostBlock block(1, kLoudspeakers);
    std::atomic<unsigned> played = 0;
    const auto turn = [&, seen = 0U](std::mt19937& random) mutable {
        if (played == seen) return std::this_thread::yield();
        seen = played;
        pan->SetSpeakersPositions(TurnedRig(kLoudspeakers, random));
    };
    const auto audio = [&]() -> Fault {
        block.Play(*pan, 64);
        ++played;
        return block.LargestEnergy() < 1.001 ? "" : "it was too loud";
    };
    // Two layouts at once, and a source that does not wait for either.
    const auto move = [&](std::mt19937& random) {
        pan->SetSourcePosition(0, TurnedRig(1, random)[0], false, false);
        std::this_thread::yield();
    };
    Fault fault = RunThreads(audio, {turn, turn, move}, ScenarioTime() / 4, Setters::AllAtOnce);
    for (int blocks = 0; blocks < 4; ++blocks) block.Play(*pan, HostBlock::kMostFrames);
    if (fault.empty() && !(std::abs(block.LargestEnergy() - 1.0) < 1e-3)) fault = "it has faded";
    return fault;
}

Fault AudioNeverNoticesThatRigsTurn() {
    for (const char* type : {"vbap", "vbip", "vbap2d", "dbap3d", "knn", "spcap"}) {
        const Fault fault = RigsTurnInEveryVector(type);
        if (!fault.empty()) return std::string(type) + ": " + fault;
    }
    return {};
}

struct Scenario {
    const char* name;
    Fault (*run)();
};

constexpr Scenario kScenarios[] = {
    {"rows arrive whole while they glide", RowsArriveWholeWhileTheyGlide},
    {"immediate rows are rows that were set", ImmediateRowsAreRowsThatWereSet},
    {"the last row wins", TheLastRowWins},
    {"linked values arrive together", LinkedValuesArriveTogether},
    {"delays keep their history while they grow", DelaysKeepTheirHistoryWhileTheyGrow},
    {"panners outlive a storm", PannersOutliveAStorm},
    {"audio never notices that rigs turn", AudioNeverNoticesThatRigsTurn},
    {"objects outlive a host", Tests::ObjectsOutliveAHost},
};

}  // namespace

int main() {
    int failed = 0;
    for (const Scenario& scenario : kScenarios) {
        const Fault fault = scenario.run();
        if (!fault.empty()) ++failed;
        std::printf("%s: %s\n", scenario.name, fault.empty() ? "passed" : fault.c_str());
        std::fflush(stdout);
    }
    std::printf("%d passed, %d failed\n", static_cast<int>(std::size(kScenarios)) - failed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
