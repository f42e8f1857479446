// SPDX-License-Identifier: MIT
// What nearness does to the sources of a binaural panner, before their head-related filters.
#pragma once

#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspSections.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Quilo {

/// One ear of a near source: a gain and two first-order sections, y = lowpass + ratio * highpass.
/// As it stands here nothing changes.
struct NearfieldEar {
    float gain = 1.f;
    float shelf = 1.f;       ///< ratio of the shelf of the near field
    float shelfHz = 1000.f;  ///< corner, above 0
    float parallax = 1.f;    ///< ratio of what a filter of another direction has to be corrected by
    float parallaxHz = 1000.f;

    friend bool operator==(const NearfieldEar&, const NearfieldEar&) = default;
};
using NearfieldEars = std::array<NearfieldEar, 2>;  ///< left, right

/// Gains and ratios glide in straight lines, corners in straight lines of their logarithms, in
/// steps of 16 samples that blocks do not see.
class NearfieldStage {
public:
    NearfieldStage(unsigned numSources, float rateHz);

    /// @param glideMs  0: at once      Thread: control.
    void SetSource(unsigned index, const NearfieldEars& ears, float glideMs) noexcept;

    // Thread: audio.
    /// Silence behind it; a glide is over.
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    /// @param left, right  as long as the input, overwritten
    void Perform(unsigned index,
                 std::span<const float> input,
                 std::span<float> left,
                 std::span<float> right) noexcept TAV_NONBLOCKING;

private:
    /// An ear as the loop over samples has it.
    struct Coefficients {
        double gain, shelf, parallax;
        double shelfStep, parallaxStep;  // of the integrators, from 0 to 1
    };
    struct Target {
        NearfieldEars ears;
        float glideMs = 0.f;
    };
    struct Source {
        tav::SharedCell<Target> shared;
        // audio only
        Target taken;
        NearfieldEars from, present;
        std::uint32_t position = 0;  // within a glide, samples
        std::uint32_t length = 0;    // of the glide; reached: at rest
        std::array<Coefficients, 2> at{};
        std::array<std::array<double, 2>, 2> states{};  // of shelf and parallax, row per ear
    };

    void TakeTarget(Source& source) noexcept TAV_NONBLOCKING;
    /// Where the glide is, and the coefficients there.
    void Place(Source& source) const noexcept TAV_NONBLOCKING;

    double rateHz_;
    std::vector<Source> sources_;
};

}  // namespace Quilo
