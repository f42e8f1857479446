// SPDX-License-Identifier: MIT
#include "pan/QuiloNFCHOASourceGroup.h"

#include <algorithm>
#include <cmath>

namespace Quilo {

namespace {

// Sums of the magnitudes of the states that a source has in one order.
constexpr float kLoudest = 1e12f;   // above, it is no sound but a fault: cleared
constexpr float kSilence = 1e-15f;  // below, it has died away

constexpr std::array<float, kNFCHOAFrames> kNothing{};

}  // namespace

NFCHOASourceGroup::NFCHOASourceGroup(std::span<NFCHOAPanningOneSource> sources,
                                     NFCHOAFilterBank& bank,
                                     const NFCHOAHighPassFilterBank& highPasses,
                                     unsigned order)
    : sources_(sources),
      bank_(bank),
      highPasses_(highPasses),
      orders_(order),
      states_(bank.NumSections(order) * tav::kNearFieldStates * kLanes) {
    reached_.fill(1.f);  // lanes without a source pass what they get
}

void NFCHOASourceGroup::Clear() noexcept TAV_NONBLOCKING {
    for (unsigned n = 1; n <= orders_.size(); ++n) ClearOrder(n);
    activity_ = Activity::Asleep;
}

void NFCHOASourceGroup::SetSampleRate(float hz) noexcept TAV_NONBLOCKING {
    for (NFCHOAPanningOneSource& source : sources_) {
        source.Ratio().SetSampleRate(hz);
        source.Ratio().Set(source.Ratio().Target(), 0.f);
    }
}

std::span<float> NFCHOASourceGroup::States(unsigned order) noexcept TAV_NONBLOCKING {
    constexpr std::size_t kPerSection = tav::kNearFieldStates * kLanes;
    const std::size_t first = bank_.NumSections(order - 1) * kPerSection;
    return std::span(states_).subspan(first, bank_.NumSections(order) * kPerSection - first);
}

bool NFCHOASourceGroup::Prepare(const NFCHOAPiece& piece,
                                std::span<const float* const> inputs) noexcept TAV_NONBLOCKING {
    const bool isFed = std::ranges::any_of(inputs, [](const float* p) { return p != nullptr; });
    if (!isFed && activity_ == Activity::Asleep) {
        for (NFCHOAPanningOneSource& source : sources_) {
            source.Ratio().Skip(static_cast<std::uint32_t>(piece.frames));
        }
        return false;
    }
    const bool wakes = activity_ == Activity::Asleep;
    activity_ = isFed ? Activity::Fed : Activity::Ringing;
    std::array<const float*, kLanes> lanes{};
    lanes.fill(kNothing.data());
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (inputs[i] != nullptr) lanes[i] = inputs[i];
    }
    kernels_.toRows(lanes.data(), inputs_.data(), piece.frames);
    loudest_.fill(0.f);
    FillRatios(piece, wakes);
    FindRefreshes(piece, wakes);
    isPlain_ = !ratiosMove_ &&
               std::all_of(ratios_.begin(), ratios_.begin() + kLanes,
                           [](float ratio) { return ratio == 1.f; }) &&
               std::ranges::none_of(orders_, [](const OrderState& o) {
                   return o.motion != Motion::Clear && (o.leaks || o.hasHighPass);
               });
    return true;
}

/// Fills the ratios of the piece. They follow their sources, but above 1 they grow by no more than
/// kFastestGrowth: bass that the filters took in before the high-pass kept it out would otherwise
/// be amplified by up to 80 dB, while at this rate it has died away in time. When the group wakes,
/// its filters hold nothing, and a ratio may begin anywhere.
void NFCHOASourceGroup::FillRatios(const NFCHOAPiece& piece, bool wakes) noexcept TAV_NONBLOCKING {
    constexpr float kFastestGrowth = 0.75f;  // logarithm, per radius / speed of sound
    const auto frames = static_cast<std::size_t>(piece.frames);
    const float growth = std::exp(kFastestGrowth * 2.f * piece.steps[0].settings.scale);
    ratiosMove_ = false;
    for (std::size_t i = 0; i < sources_.size(); ++i) {
        const tav::Ramp& ratio = sources_[i].Ratio();
        if (wakes) reached_[i] = ratio.Value();
        ratiosMove_ = ratiosMove_ || !ratio.IsConstant() || reached_[i] != ratio.Target();
    }
    askedRatios_.fill(reached_);
    if (!ratiosMove_) {
        std::ranges::copy(reached_, ratios_.begin());
        return;
    }
    std::array<const float*, kLanes> lanes{};
    for (std::size_t i = 0; i < kLanes; ++i) {
        const auto values = std::span(capped_).subspan(i * kNFCHOAFrames, frames);
        lanes[i] = values.data();
        if (i < sources_.size()) {
            sources_[i].Ratio().Fill(values);
        } else {
            std::ranges::fill(values, 1.f);
        }
    }
    kernels_.toRows(lanes.data(), ratios_.data(), piece.frames);
    for (std::size_t s = 0; s < piece.numSteps; ++s) {
        const std::ptrdiff_t first = piece.steps[s].first * tav::kSourceLanes;
        std::copy_n(ratios_.begin() + first, kLanes, askedRatios_[s].begin());
    }
    kernels_.limitGrowth(ratios_.data(), reached_.data(), growth, piece.frames);
}

/// Finds the steps at which the targets of the high-passes have to be computed again: on the grid,
/// or at the start of a group that wakes, where settings or ratios have changed.
void NFCHOASourceGroup::FindRefreshes(const NFCHOAPiece& piece,
                                      bool wakes) noexcept TAV_NONBLOCKING {
    refreshes_ = false;
    largestLog_ = 0.f;
    for (std::size_t s = 0; s < piece.numSteps; ++s) {
        const NFCHOAStep& step = piece.steps[s];
        const NFCHOARow& row = askedRatios_[s];
        const bool isNew = row != input_.ratios || step.settings != input_.settings;
        steps_[s].refreshes = isNew && (step.isOnGrid || (wakes && s == 0));
        if (steps_[s].refreshes) {
            refreshes_ = true;
            input_.settings = step.settings;
            input_.ratios = row;
            // A ratio up to 1 needs no high-pass, and 0 says as much as a negative logarithm.
            std::ranges::transform(row, input_.logs.begin(),
                                   [](float u) { return u > 1.f ? std::log(u) : 0.f; });
            input_.largestLog = *std::ranges::max_element(input_.logs);
            largestLog_ = std::max(largestLog_, input_.largestLog);
        }
        steps_[s].input = input_;
    }
    scaleMoves_ = std::any_of(
        piece.steps.begin(), piece.steps.begin() + static_cast<std::ptrdiff_t>(piece.numSteps),
        [&](const NFCHOAStep& s) { return s.settings.scale != piece.steps[0].settings.scale; });
}

void NFCHOASourceGroup::Run(unsigned order,
                            const NFCHOAPiece& piece,
                            float* const* signals) noexcept TAV_NONBLOCKING {
    if (isPlain_) {
        ClearOrder(order);
        return kernels_.fromRows(inputs_.data(), signals, piece.frames);
    }
    OrderState& state = orders_[order - 1];
    if (state.motion == Motion::Clear) {
        ComputeTarget(order, steps_[0].input);
        JumpToTarget(order);
    }
    CapRatios(order, piece);
    // The piece is cut at the points of the grid only where something moves there.
    if (scaleMoves_ || state.motion == Motion::Gliding || AnyNewTarget(order, piece)) {
        for (std::size_t s = 0; s < piece.numSteps; ++s) {
            if (steps_[s].refreshes) ComputeTarget(order, steps_[s].input);
            if (piece.steps[s].isOnGrid) GlideToTarget(order, piece);
            RunStep(order, piece.steps[s], piece.keep);
        }
    } else {
        RunStep(order, {0, piece.frames, false, piece.steps[0].settings}, piece.keep);
    }
    CheckStates(order, piece.frames);
    kernels_.fromRows(outputs_.data(), signals, piece.frames);
}

void NFCHOASourceGroup::TargetFor(unsigned order,
                                  const HighPassInput& input,
                                  NFCHOARow& target) const noexcept TAV_NONBLOCKING {
    const NFCHOAHighPass& highPass = highPasses_.Of(order);
    if (highPass.IsUsed(input.largestLog)) {
        highPass.Compute(input.ratios, input.logs, input.settings, target);
    } else {
        target.fill(0.f);
    }
}

/// Whether a limit that rests has to start towards another target in this piece.
bool NFCHOASourceGroup::AnyNewTarget(unsigned order,
                                     const NFCHOAPiece& piece) const noexcept TAV_NONBLOCKING {
    const OrderState& state = orders_[order - 1];
    const bool isUsed = state.isTargetUsed || highPasses_.Of(order).IsUsed(largestLog_);
    if (!refreshes_ || !isUsed) return false;
    for (std::size_t s = 0; s < piece.numSteps; ++s) {
        if (!steps_[s].refreshes) continue;
        NFCHOARow target;
        TargetFor(order, steps_[s].input, target);
        if (target != state.highPassTarget) return true;
    }
    return false;
}

void NFCHOASourceGroup::ComputeTarget(unsigned order,
                                      const HighPassInput& input) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    TargetFor(order, input, state.highPassTarget);
    state.isTargetUsed = highPasses_.Of(order).IsUsed(input.largestLog);
}

void NFCHOASourceGroup::JumpToTarget(unsigned order) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    state.highPassG = state.highPassNext = state.highPassSlow = state.highPassTarget;
    state.highPassStep.fill(0.f);
    state.motion = Motion::Resting;
    UpdateUse(order);
}

/// Plans the way of each limit up to the next point of the grid. A limit rises at once, so that the
/// gain stays below what is allowed. It comes down through two poles of 10 ms: following its source
/// it would end like a square root, whose steep last part modulates what passes.
void NFCHOASourceGroup::GlideToTarget(unsigned order,
                                      const NFCHOAPiece& piece) noexcept TAV_NONBLOCKING {
    constexpr float kReached = 1.00001f;
    OrderState& state = orders_[order - 1];
    state.motion = state.highPassNext == state.highPassTarget ? Motion::Resting : Motion::Gliding;
    for (std::size_t i = 0; i < kLanes; ++i) {
        const float target = state.highPassTarget[i];
        const float from = state.highPassNext[i];
        const float slow =
            std::max(target, target + (state.highPassSlow[i] - target) * piece.release);
        const float next = std::max(slow, slow + (from - slow) * piece.release);
        const bool isThere = next <= std::max(target * kReached, piece.leastG);
        state.highPassG[i] = from;
        state.highPassSlow[i] = isThere ? target : slow;
        state.highPassNext[i] = isThere ? target : next;
        state.highPassStep[i] = (state.highPassNext[i] - from) / static_cast<float>(kNFCHOAGrid);
    }
    UpdateUse(order);
}

void NFCHOASourceGroup::UpdateUse(unsigned order) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    std::ptrdiff_t zeros = 0;
    for (std::size_t i = 0; i < kLanes; ++i) {
        if (state.highPassG[i] == 0.f && state.highPassNext[i] == 0.f) ++zeros;
    }
    // A source that has just lost its high-pass still has states in it.
    state.leaks = state.leaks || (state.hasHighPass && zeros > 0);
    state.hasHighPass = zeros < static_cast<std::ptrdiff_t>(kLanes);
}

/// Chooses the ratios that this order may use: without its high-pass, none above a largest one.
void NFCHOASourceGroup::CapRatios(unsigned order,
                                  const NFCHOAPiece& piece) noexcept TAV_NONBLOCKING {
    const NFCHOAHighPass& highPass = highPasses_.Of(order);
    const auto frames = static_cast<std::size_t>(piece.frames);
    ratiosInUse_ = ratios_.data();
    ratioStride_ = ratiosMove_ ? tav::kSourceLanes : 0;
    if (!piece.highPassMoves && piece.highPass[0] == 1.f) return;
    const bool capMoves = piece.highPassMoves;
    const std::size_t numRows = ratiosMove_ || capMoves ? frames : 1;
    float largest = highPass.LargestRatio(piece.highPass[0]);
    for (std::size_t k = 0; k < numRows; ++k) {
        if (capMoves) largest = highPass.LargestRatio(piece.highPass[k]);
        const float* const row = ratios_.data() + (ratiosMove_ ? k * kLanes : 0);
        for (std::size_t i = 0; i < kLanes; ++i)
            capped_[k * kLanes + i] = std::min(row[i], largest);
    }
    ratiosInUse_ = capped_.data();
    ratioStride_ = numRows > 1 ? tav::kSourceLanes : 0;
}

void NFCHOASourceGroup::RunStep(unsigned order,
                                const NFCHOAStep& step,
                                float keep) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    const std::ptrdiff_t first = step.first * tav::kSourceLanes;
    NFCHOARow keeps{};
    tav::NearFieldLanes lanes;
    lanes.ratios = ratiosInUse_ + step.first * ratioStride_;
    lanes.ratioStride = ratioStride_;
    if (state.hasHighPass || state.leaks) lanes.highPassG = state.highPassG.data();
    if (state.motion == Motion::Gliding) lanes.highPassStep = state.highPassStep.data();
    if (state.leaks) {
        std::ranges::transform(
            state.highPassG, state.highPassNext, keeps.begin(),
            [keep](float g, float next) { return g > 0.f || next > 0.f ? 1.f : keep; });
        lanes.highPassKeep = keeps.data();
    }
    const auto sections = bank_.Sections(order, step.settings.scale);
    kernels_.nearField(sections.data(), static_cast<int>(sections.size()), lanes,
                       States(order).data(), inputs_.data() + first, outputs_.data() + first,
                       step.count);
    if (state.motion != Motion::Gliding) return;
    for (std::size_t i = 0; i < kLanes; ++i) {
        state.highPassG[i] += state.highPassStep[i] * static_cast<float>(step.count);
    }
}

/// Clears lanes whose states are too large to be sound, or no numbers, and high-passes that have
/// died away after their use; finds the loudest lanes and those that still leak.
void NFCHOASourceGroup::CheckStates(unsigned order, int frames) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    NFCHOARow high{};
    NFCHOARow radial{};
    const std::span<const float> states = States(order);
    for (std::size_t s = 0; s < states.size(); s += 4 * kLanes) {
        for (std::size_t i = s; i < s + kLanes; ++i) {
            high[i - s] += std::fabs(states[i]) + std::fabs(states[i + kLanes]);
            radial[i - s] += std::fabs(states[i + 2 * kLanes]) + std::fabs(states[i + 3 * kLanes]);
        }
    }
    state.leaks = false;
    for (std::size_t i = 0; i < kLanes; ++i) {
        const float sum = high[i] + radial[i];
        if (!(sum <= kLoudest)) {
            ClearLane(order, i, 4);
            for (int k = 0; k < frames; ++k)
                outputs_[static_cast<std::size_t>(k) * kLanes + i] = 0.f;
            continue;
        }
        loudest_[i] = std::max(loudest_[i], sum);
        if (state.highPassG[i] > 0.f || high[i] == 0.f) continue;
        if (high[i] < kSilence) {
            ClearLane(order, i, 2);
        } else {
            state.leaks = true;
        }
    }
}

void NFCHOASourceGroup::Skip(unsigned order) noexcept TAV_NONBLOCKING { ClearOrder(order); }

void NFCHOASourceGroup::Finish() noexcept TAV_NONBLOCKING {
    if (activity_ == Activity::Fed) return;
    const auto isHeard = [](float sum) { return sum >= kSilence; };
    if (std::ranges::none_of(loudest_, isHeard)) Clear();
}

void NFCHOASourceGroup::ClearOrder(unsigned order) noexcept TAV_NONBLOCKING {
    OrderState& state = orders_[order - 1];
    if (state.motion == Motion::Clear) return;
    std::ranges::fill(States(order), 0.f);
    state.motion = Motion::Clear;
    state.leaks = false;
}

/// @param numRows  of each section's states: 2 for the high-pass alone, or all 4
void NFCHOASourceGroup::ClearLane(unsigned order,
                                  std::size_t lane,
                                  std::size_t numRows) noexcept TAV_NONBLOCKING {
    const std::span<float> states = States(order);
    for (std::size_t s = 0; s < states.size(); s += 4 * kLanes) {
        for (std::size_t row = 0; row < numRows; ++row) states[s + row * kLanes + lane] = 0.f;
    }
}

}  // namespace Quilo
