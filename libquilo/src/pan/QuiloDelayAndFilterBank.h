// SPDX-License-Identifier: MIT
// Sources on paths to two ears: delays, first-order sections and gains in place of measured
// filters.
//
//   what         one per      written by
//   Target       source       control, at any time; audio takes it at the start of a block
//   Corners      bank         likewise
//   HrtfVoices   bank         audio: gains by which sources are muted, delays, memory
//   Voice        source       audio: gains and shadows of its paths, as ramps
//   Group        16 sources   audio: coefficients and states of their sections, one lane a source
#pragma once

#include "kernels/VelkDspBinauralKernels.h"
#include "kernels/VelkDspInstructionSet.h"
#include "laws/QuiloEarPaths.h"
#include "pan/QuiloHrtfVoices.h"
#include "processors/VelkDspHandOver.h"
#include "processors/VelkDspRamp.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quilo {

/// Corners of the sections of the head and of the torso, shared by all sources.
struct ShadowCorners {
    float headHz = 1000.f;
    float torsoHz = 1000.f;

    friend bool operator==(const ShadowCorners&, const ShadowCorners&) = default;
};

/// A path: the source, delayed, through the section of the head and a gain; the direct paths
/// also through the section of the torso, where there is one. Delays, gains and shadows glide in
/// straight lines, corners in steps of 16 samples. What comes out does not depend on the sizes of
/// the blocks. A source without input costs nothing.
class DelayAndFilterBank {
public:
    /// @param hasTorso  false: reflected paths and the shadow of the torso are left out
    /// Throws: std::bad_alloc.
    DelayAndFilterBank(unsigned numSources, float rateHz, bool hasTorso);

    float RateHz() const noexcept { return rateHz_; }

    // Thread: control.
    /// @param glideMs  0: at once, as a new bank takes its first ones
    void SetCorners(const ShadowCorners& corners, float glideMs) noexcept;
    /// @param gain  glides over 5 ms      @param glideMs  0: the paths change at once
    void SetSource(unsigned index, const EarPaths& paths, float gain, float glideMs) noexcept;
    /// From the next block on.
    void SetDelayKind(tav::DelayKind kind) noexcept {
        kind_.store(kind, std::memory_order_relaxed);
    }
    /// Silence behind all sources from the next block on.
    void Reset() noexcept { resets_.fetch_add(1, std::memory_order_relaxed); }

    // Thread: audio.
    /// Adds to the ears.  @param left, right  null: not wanted
    /// @param inputs  per source; null: nothing comes, and its past is forgotten
    void Perform(float* left,
                 float* right,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

private:
    static constexpr auto kLanes = static_cast<std::size_t>(tav::kSourceLanes);
    static constexpr unsigned kPiece = 64;  // frames; at most GroupReader::kLongest
    static constexpr std::size_t kEars = 2;

    // Sections of a source, each for two ears. Those of the direct path are in series.
    enum Section : std::size_t { Head, Torso, ReflectedHead };
    static constexpr std::size_t kSections = 3;

    struct alignas(64) Row {
        std::array<float, kLanes> values{};
    };
    using Rows = std::array<Row, kPiece>;
    struct Ears {
        Rows left, right;
    };
    struct SectionRows {
        std::array<Row, 2 * kEars> mix;  // m0 left, m0 right, m1 left, m1 right
        std::array<Row, 2 * kEars> steps;
        std::array<Row, kEars> states;
    };
    struct Group {
        std::array<SectionRows, kSections> sections{};
        unsigned numAwake = 0;
        unsigned numGliding = 0;
    };
    struct Target {
        EarPaths paths;
        float gain = 1.f;
        float glideMs = 0.f;
    };
    struct Voice {
        // shared: control writes, audio reads
        tav::SharedCell<Target> jump;  // the newest that was to be taken at once
        tav::SharedCell<Target> target;
        // audio only
        Target taken;
        SourceState state = SourceState::Asleep;
        bool glides = false;
        std::array<std::array<tav::Ramp, 2 * kEars>, kSections> mix;  // as in SectionRows
    };
    struct CornersTarget {
        ShadowCorners corners;
        float glideMs = 0.f;
    };

    std::size_t NumSections() const noexcept TAV_NONBLOCKING {
        return hasTorso_ ? kSections : std::size_t{Torso};
    }

    void TakeCorners() noexcept TAV_NONBLOCKING;
    void SetGains() noexcept TAV_NONBLOCKING;
    unsigned GlideCorners(unsigned frames) noexcept TAV_NONBLOCKING;

    void TakeTarget(unsigned index, bool present) noexcept TAV_NONBLOCKING;
    void Apply(unsigned index, std::uint32_t glideSamples) noexcept TAV_NONBLOCKING;
    void Wake(unsigned index) noexcept TAV_NONBLOCKING;
    void Sleep(unsigned index, SourceState state) noexcept TAV_NONBLOCKING;

    void RunPiece(float* left, float* right, unsigned frames) noexcept TAV_NONBLOCKING;
    void FillPath(std::size_t group, std::size_t path, unsigned frames) noexcept TAV_NONBLOCKING;
    unsigned GlideMix(std::size_t group, unsigned frames) noexcept TAV_NONBLOCKING;
    unsigned FramesToBend(std::size_t group, unsigned frames) const noexcept TAV_NONBLOCKING;
    void WriteMix(unsigned index, unsigned frames) noexcept TAV_NONBLOCKING;
    void RunSections(Group& group, unsigned first, unsigned count) noexcept TAV_NONBLOCKING;
    void RunSection(Group& group,
                    Section section,
                    const tav::EarRows& in,
                    const tav::EarRows& out,
                    unsigned count) noexcept TAV_NONBLOCKING;
    void Recover() noexcept TAV_NONBLOCKING;

    const tav::BinauralKernels& kernels_ = tav::BestKernels<tav::BinauralKernels>();
    const float rateHz_;
    const bool hasTorso_;
    // shared: control writes, audio reads
    std::vector<Voice> sources_;
    tav::SharedCell<CornersTarget> corners_;
    std::atomic<std::uint32_t> resets_{0};
    std::atomic<tav::DelayKind> kind_{tav::DelayKind::Lagrange};
    // audio only
    std::uint32_t resetsDone_ = 0;
    tav::DelayKind kindInForce_ = tav::DelayKind::Lagrange;
    bool hasCorners_ = false;
    tav::Ramp headLog_, torsoLog_;  // of the corners in Hz
    unsigned untilCorners_ = 0;     // frames until they move by a step
    std::array<std::array<Row, kEars>, kSections> gains_{};
    HrtfVoices voices_;
    std::vector<Group> groups_;
    // of one group, in one piece
    GroupReader reader_;
    std::array<Ears, 2> paths_{};  // direct, reflected
    Ears sum_{};
};

}  // namespace Quilo
