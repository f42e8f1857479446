// SPDX-License-Identifier: MIT
// What nearness does to the sources of a binaural panner, before their head-related filters.
//
//   what      one per      written by
//   Target    source       control, at any time; audio takes it before the next piece
//   Source    source       audio: the numbers of both ears and their glide
//   Group     16 sources   audio: coefficients and states of the sections, one lane a source
#pragma once

#include "kernels/VelkDspBinauralKernels.h"
#include "kernels/VelkDspInstructionSet.h"
#include "processors/VelkDspHandOver.h"

#include <algorithm>
#include <array>
#include <cstddef>
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
};
using NearfieldEars = std::array<NearfieldEar, 2>;  ///< left, right

/// The sections of sixteen sources run side by side. Glides move on a grid of 16 samples, on which
/// they begin and end: gains and ratios in straight lines, corners in equal ratios.
class NearfieldStage {
public:
    static constexpr auto kLanes = static_cast<std::size_t>(tav::kSourceLanes);
    /// The signals of a group.
    using Signals = std::array<const float*, kLanes>;

    /// @param longestPiece  samples that Perform may be given      Throws: std::bad_alloc.
    NearfieldStage(unsigned numSources, float rateHz, std::size_t longestPiece);

    /// @param glideMs  0: at once      Thread: control.
    void SetSource(unsigned index, const NearfieldEars& ears, float glideMs) noexcept;

    // Thread: audio.
    /// Silence behind it; a glide is over.
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    /// Runs a piece of the sources from `group` times kLanes on.
    /// @param inputs  one per source, silence for those that sleep
    void Perform(std::size_t group,
                 const Signals& inputs,
                 std::size_t frames) noexcept TAV_NONBLOCKING;
    /// What Perform made of a source of its group, as long as its piece.
    const float* Ear(std::size_t ear, std::size_t lane) const noexcept TAV_NONBLOCKING {
        return ears_[ear].data() + lane * longestPiece_;
    }

private:
    static constexpr std::size_t kEars = 2;
    static constexpr std::size_t kChunk = 64;  // frames in rows
    static constexpr unsigned kStep = 16;      // frames from one point of the grid to the next
    enum Section : std::size_t { Shelf, Parallax };
    static constexpr std::size_t kSections = 2;

    struct alignas(64) Row {
        std::array<float, kLanes> values{};
    };
    using Rows = std::array<Row, kChunk>;
    struct SectionRows {
        std::array<Row, kEars> gains;
        std::array<Row, 2 * kEars> mix;  // m0 left, m0 right, m1 left, m1 right
        std::array<Row, 2 * kEars> steps;
        std::array<Row, kEars> states;
    };
    struct Group {
        std::array<SectionRows, kSections> sections{};
        unsigned untilStep = 0;  // frames to the next point of the grid
        unsigned numGliding = 0;
    };
    /// An ear as it glides; g is the tangent of pi times the corner over the rate.
    struct Numbers {
        float gain = 1.f;
        std::array<float, kSections> ratios{1.f, 1.f};
        std::array<float, kSections> g{1.f, 1.f};

        friend bool operator==(const Numbers&, const Numbers&) = default;
    };
    using Ears = std::array<Numbers, kEars>;
    struct Target {
        Ears ears;
        std::uint32_t numSteps = 0;  // of the glide
    };
    struct Source {
        tav::SharedCell<Target> shared;
        // audio only
        Target taken;
        Ears from;                                                 // where the glide began
        Ears next;                                                 // at the next point of the grid
        std::array<std::array<float, kSections>, kEars> growth{};  // of each g, from point to point
        std::uint32_t steps = 0;  // points of the glide that were taken
        bool glides = false;
    };

    void TakeTarget(Group& group, std::size_t lane, Source& source) noexcept TAV_NONBLOCKING;
    void Rest(Group& group, std::size_t lane, Source& source) noexcept TAV_NONBLOCKING;
    void Advance(Group& group, std::size_t lane, Source& source) noexcept TAV_NONBLOCKING;
    static void SetLane(Group& group,
                        std::size_t lane,
                        const Ears& from,
                        const Ears& to) noexcept TAV_NONBLOCKING;
    void RunRows(std::size_t group, std::size_t frames) noexcept TAV_NONBLOCKING;
    void RunSections(Group& group, std::size_t first, std::size_t count) noexcept TAV_NONBLOCKING;
    void Recover(Group& group, std::size_t frames) noexcept TAV_NONBLOCKING;
    std::span<Source> MembersOf(std::size_t group) noexcept TAV_NONBLOCKING {
        const std::span behind = std::span(sources_).subspan(group * kLanes);
        return behind.first(std::min(kLanes, behind.size()));
    }

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const tav::FilterKernels& rowKernels_ = tav::BestKernels<tav::FilterKernels>();
    const float rateHz_;
    const std::size_t longestPiece_;
    std::vector<Source> sources_;
    std::vector<Group> groups_;
    // of one group, in one piece
    Rows input_{};
    std::array<Rows, kEars> rows_{};
    std::array<std::vector<float>, kEars> ears_;  // longestPiece_ samples of each lane
};

}  // namespace Quilo
