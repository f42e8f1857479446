// SPDX-License-Identifier: MIT
// The engine without Max: one source circles clockwise over four loudspeakers in two seconds.
// Prints the level of every loudspeaker, in dB below full scale, each time the source has gone an
// eighth of its way.
#include "math/VelkDspSpherical.h"
#include "pan/QuiloPan.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

int main() {
    constexpr float kRateHz = 48000;
    constexpr unsigned kFrames = 64, kOutputs = 4, kBlocks = 1500;  // two seconds

    // What never changes: one source, four outputs, the law.
    const auto panner = Quilo::Pan::Create(1, kOutputs, "vbap2d", "direct");
    panner->SetSampleRate(kRateHz);
    panner->SetBufferSize(kFrames);
    tav::CartesianArray square(kOutputs);
    for (unsigned k = 0; k < kOutputs; ++k)
        square[k] = tav::FromNavigational(90.f * static_cast<float>(k) - 45.f, 0, 1);
    panner->SetSpeakersPositions(square);
    panner->SetInterpolationTime(10);

    std::vector<float> input(kFrames, 1.f);  // a constant, so that an output is its gain
    std::array<std::vector<float>, kOutputs> outputs;
    std::array<float*, kOutputs> pointers{};
    for (unsigned k = 0; k < kOutputs; ++k) {
        outputs[k].resize(kFrames);
        pointers[k] = outputs[k].data();
    }
    const float* const inputs[] = {input.data()};

    std::puts("azimuth   front left  front right   back right    back left");
    for (unsigned block = 0; block <= kBlocks; ++block) {
        const float azimuthDeg = 360.f * static_cast<float>(block) / kBlocks;
        // From a control thread, at any time; the gains glide.
        panner->SetSourcePosition(0, tav::FromNavigational(azimuthDeg, 0, 1), false, false);
        // In the audio thread: neither allocates nor locks nor throws.
        panner->Process(pointers.data(), inputs, kFrames);
        if (block % (kBlocks / 8) != kBlocks / 8 - 1) continue;
        std::printf("%7.1f", static_cast<double>(azimuthDeg));
        for (const auto& output : outputs) {
            const double gain = std::abs(static_cast<double>(output.back()));
            if (gain > 0)
                std::printf("%13.1f", 20 * std::log10(gain));
            else
                std::printf("%13s", "silent");
        }
        std::puts("");
    }
}
