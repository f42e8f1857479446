// SPDX-License-Identifier: MIT
// Plays signals through a panner as a host does, and reads its gains from what comes out.
#pragma once

#include "pan/QuiloPan.h"
#include "support/BlockPlayer.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// Runs a panner in blocks of one size. Every block is processed under the allocation trap.
class PanPlayer {
public:
    /// A sample of an input; frames count from the start of each Play.
    using Signal = std::function<double(unsigned input, std::size_t frame)>;
    using Audio = Channels<double>;  // one vector per output

    explicit PanPlayer(Quilo::Pan& pan, float rateHz = 48000.f, unsigned blockSize = 64);

    /// What came out; whole blocks, at least `frames`.
    Audio Play(std::size_t frames, const Signal& signal);

    /// Output samples of the last frame while this source alone carries ones for long enough that
    /// every glide has ended: its row of gains.
    std::vector<double> SteadyGains(unsigned source);

private:
    Quilo::Pan& pan_;
    float rateHz_;
    unsigned blockSize_;
};

inline double Impulse(unsigned, std::size_t frame) { return frame == 0 ? 1.0 : 0.0; }
inline double Silence(unsigned, std::size_t) { return 0.0; }
inline double Ones(unsigned, std::size_t) { return 1.0; }
PanPlayer::Signal Sine(double hz, double rateHz = 48000.0);
PanPlayer::Signal Cosine(double hz, double rateHz = 48000.0);  // begins at its peak

/// The largest component above a frequency over the largest of all, dB, through a window whose side
/// lobes are at -92 dB.  @param size  samples from the first one, a power of two
double LoudestAbove(double hz, const std::vector<double>& signal, double rateHz, std::size_t size);

/// The largest difference of neighbouring samples.
double LargestStep(const std::vector<double>& signal);

/// A panner on the default loudspeakers, which it may report and uses, with the built-in HRTF set.
std::unique_ptr<Quilo::Pan> OnDefaultSpeakers(unsigned numInputs,
                                              unsigned numOutputs,
                                              const char* type,
                                              const char* subtype = "direct");

/// A panner that is on air already.
struct PanCase {
    const char* type;
    unsigned numOutputs;
    const char* subtype = "direct";
    double mostGain = 1.5;  // wherever source and loudspeakers are
};

/// Every type that has a panner of its own, with the outputs it is tested with.
// clang-format off
inline constexpr PanCase kAllPanners[] = {
    {"xy", 2}, {"ms", 2}, {"ab", 2}, {"surround", 3}, {"surround", 4}, {"angular", 1},
    {"angular", 5}, {"vbap2d", 5}, {"vbip2d", 5}, {"bformat", 3}, {"bformat", 4}, {"hoa2d", 7},
    {"hoa3d", 16}, {"vbap", 6}, {"vbip", 4}, {"subwoofers", 1}, {"subwoofers", 5}, {"dbap", 5},
    {"dbap3d", 6}, {"vdbap", 6}, {"knn", 5}, {"spcap", 5}, {"panr", 4}, {"panr", 8}, {"panr", 12},
    {"no such", 3}, {"angular", 4, "diffuse"}, {"hoa2d", 7, "diffuse"}, {"hoa3d", 9, "diffuse"},
    {"nfchoa2d", 7, "direct", 11.0}, {"nfchoa3d", 16, "direct", 11.0}, {"binaural", 2, "direct", 8.0},
    {"binaural", 2, "diffuse", 4.0}, {"binaural", 2, "early", 1.5},
    {"binaural", 2, "sphericalheadmodel", 2.1}, {"binaural", 2, "snowmanmodel", 2.7},
    {"binaural", 2, "nearfield", 30.0}, {"binaural", 2, "continuous", 8.0},
};
// clang-format on

inline std::string NameOf(const PanCase& c) {
    const std::string type = std::string(c.type) == "no such" ? "null" : c.type;
    const std::string subtype = std::string(c.subtype) == "direct" ? "" : c.subtype;
    return type + subtype + std::to_string(c.numOutputs);
}

}  // namespace Tests
