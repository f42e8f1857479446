// SPDX-License-Identifier: MIT
// A bank of equalisers: several channels, each with the same number of bands in series.
#pragma once

#include "filterdesign/VelkDspSectionDesign.h"
#include "kernels/VelkDspSectionKernels.h"
#include "processors/VelkDspAudioProcessorWithAutoMute.h"
#include "processors/VelkDspHandOver.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tav {

/// Has as many inputs and outputs as channels. Every change of a band, also of its kind, glides
/// over 20 ms and does not click; settings made before the first block apply from the first sample.
/// Setters belong to the control thread, one at a time, and may be called while audio runs.
class MultiEqualizer final : public AudioProcessorWithAutoMute {
public:
    /// All bands off.  Throws: std::bad_alloc.
    MultiEqualizer(unsigned numChannels,
                   unsigned numBands,
                   const SectionKernels& kernels = BestKernels<SectionKernels>());

    // 1
    using AudioProcessorWithAutoMute::Process;
    void Process(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING override;

    // 8, 9, 11
    std::string Name() const override;
    /// Another rate ends all glides and clears the states.
    void SetSampleRate(float hz) override;
    void Reset() override;

    unsigned NumBands() const noexcept { return numBands_; }
    /// Ignores an index out of range and a setting with a value that is not finite.
    void SetBand(unsigned channel, unsigned band, const FilterSetting& setting);
    /// The last setting, not clamped; a default one for an index out of range.
    FilterSetting Band(unsigned channel, unsigned band) const;

    /// Overwrites all outputs; an inactive input gives zeros and its states are cleared.
    /// @param outputs, inputs  a pointer per channel; an output may be its own input
    /// Thread: audio.
    void Perform(float* const* outputs,
                 const float* const* inputs,
                 unsigned frames) noexcept TAV_NONBLOCKING;

private:
    static constexpr unsigned kLanes = kSectionLanes;
    static constexpr unsigned kGrid = 16;    // samples between two steps of a glide
    static constexpr unsigned kPiece = 512;  // samples between two checks of the states

    /// The target of a band, for the audio thread.
    struct Target {
        SectionDesign design;
        std::uint32_t steps = 1;  // number of steps of the glide to it
        std::uint32_t jumps = 0;  // when it changes, the band jumps
    };
    /// The glide of a band. Its steps are on a grid of samples, whatever the block size.
    struct Glide {
        Target target;
        double g = 1.0;
        double k = 1.0;
        double gRatio = 1.0;  // factor per step: linear in octaves
        double kRatio = 1.0;
        std::uint32_t stepsLeft = 0;
        bool moves = false;
    };
    /// Channels that the kernels run side by side; a Lane is one of them.
    struct Group {
        unsigned firstChannel = 0;
        unsigned numLanes = 0;
        unsigned numActive = 0;
        unsigned numMoving = 0;  // running glides
        SectionBank* banks = nullptr;
    };
    struct Lane {
        Group& group;
        unsigned channel;
        unsigned lane;
    };
    /// A part of a block. connectedOnly: unconnected outputs are not written.
    struct Piece {
        float* const* outputs;
        const float* const* inputs;
        unsigned offset;
        unsigned frames;
        bool connectedOnly;
    };

    void Publish(unsigned channel, unsigned band) noexcept;
    void Run(float* const* outputs,
             const float* const* inputs,
             unsigned frames,
             bool connectedOnly) noexcept TAV_NONBLOCKING;

    Lane LaneOf(unsigned channel) noexcept TAV_NONBLOCKING;
    Glide* GlidesOf(unsigned channel) noexcept TAV_NONBLOCKING {
        return glides_.data() + std::size_t{channel} * numBands_;
    }
    void UpdateActivity() noexcept TAV_NONBLOCKING;
    void TakeTargets() noexcept TAV_NONBLOCKING;
    void StartGlide(const Lane& lane, unsigned band, bool jump) noexcept TAV_NONBLOCKING;
    void EndGlide(const Lane& lane, unsigned band) noexcept TAV_NONBLOCKING;
    void Step(const Lane& lane, unsigned band) noexcept TAV_NONBLOCKING;
    void StepAll(Group& group) noexcept TAV_NONBLOCKING;
    void Forget(const Lane& lane) noexcept TAV_NONBLOCKING;
    void RunGroup(Group& group, const Piece& piece) noexcept TAV_NONBLOCKING;
    void GuardStates(Group& group, float* const* outputs, unsigned frames) noexcept TAV_NONBLOCKING;

    const unsigned numBands_;
    const SectionKernels& kernels_;
    // control only
    std::vector<FilterSetting> settings_;  // channels x bands, as all below
    std::uint32_t numJumps_ = 0;
    // shared: control writes, audio reads
    std::vector<SharedCell<Target>> targets_;
    std::atomic<std::uint32_t> writes_{0};
    std::atomic<bool> forget_{false};
    // audio only
    std::vector<Glide> glides_;
    std::vector<char> active_;        // per channel
    std::vector<SectionBank> banks_;  // groups x bands
    std::vector<Group> groups_;
    std::optional<std::uint32_t> seenActivity_;
    std::uint32_t seenWrites_ = 0;
    bool started_ = false;
    unsigned gridPosition_ = 0;  // samples since the last step
    std::array<float, kPiece> silence_{};
    std::array<float, kPiece> unheard_{};
};

}  // namespace tav
