// SPDX-License-Identifier: MIT
#include "pan/QuiloNFCHOAPanning.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

using tav::SphericalHarmonic;

namespace {

constexpr std::size_t kLanes = static_cast<std::size_t>(tav::kSourceLanes);
// Switching the high-pass takes at least this long, and longer on a larger array: on the way the
// largest ratio must not grow faster than that of a moving source may.
constexpr float kShortestSwitchMs = 100.f;
constexpr float kSwitchMsPerMetre = 40.f;
constexpr float kLeakSeconds = 0.005f;    // time constant at which an unused high-pass is emptied
constexpr float kReleaseSeconds = 0.01f;  // time constant of a limit that comes down
constexpr float kLeastLimitHz = 1.f;      // below, such a limit becomes 0 at once
/// An order that is switched off is computed this long: after two segments of the longest
/// interpolation time, and a little more, its gains have surely come to rest.
constexpr float kFadeSeconds = 2.1f * kMaxInterpolationTimeMs * 0.001f;

}  // namespace

NFCHOAPanning::NFCHOAPanning(unsigned numInputs, unsigned numOutputs, unsigned dimension)
    : HoaEncoding(numInputs, numOutputs, dimension),
      bank_(Encoding().Order()),
      highPasses_(Encoding().Order()),
      sources_(numInputs),
      row_(Encoding().NumChannels()),
      ordersRun_(Encoding().Order()),
      inputs_(numInputs),
      feeds_(numInputs),
      outputs_(numOutputs) {
    const unsigned numOrders = Encoding().Order() + 1;
    for (unsigned n = 0; n <= numOrders; ++n) {
        const unsigned before = n == 0 ? 0 : SphericalHarmonic::NumChannels(n - 1, dimension);
        firstChannels_.push_back(std::min(before, numOutputs));
    }
    for (unsigned n = 0; n < numOrders; ++n) {
        const unsigned channels = firstChannels_[n + 1] - firstChannels_[n];
        mixers_.push_back(std::make_unique<tav::SignalMatrix>(numInputs, channels));
        mixers_.back()->ShareInputActivityOf(*this);
        mixers_.back()->SetInterpolationTime(kDefaultInterpolationTimeMs);
    }
    const std::size_t numGroups = (numInputs + kLanes - 1) / kLanes;
    for (std::size_t first = 0; first < numInputs; first += kLanes) {
        const std::size_t count = std::min<std::size_t>(kLanes, numInputs - first);
        groups_.emplace_back(std::span(sources_).subspan(first, count), bank_, highPasses_,
                             Encoding().Order());
    }
    signals_.resize(numGroups * kLanes * kNFCHOAFrames);
    for (std::size_t i = 0; i < numGroups * kLanes; ++i) {
        signalPointers_.push_back(signals_.data() + i * kNFCHOAFrames);
    }
    awake_.resize(numGroups);
    newest_.order = Encoding().Order();
    taken_ = newest_;
}

void NFCHOAPanning::ApplyOutletConnections(std::span<const short> counts) {
    for (std::size_t n = 0; n < mixers_.size(); ++n) {
        if (counts.size() <= firstChannels_[n]) break;
        const auto own = counts.subspan(firstChannels_[n]);
        mixers_[n]->SetConnections(
            {}, own.first(std::min<std::size_t>(own.size(), mixers_[n]->NumOutputs())));
    }
}

void NFCHOAPanning::ComputeSource(unsigned index, bool immediate, bool) {
    const tav::CartesianVector& place = StoredPosition(index);
    std::ranges::fill(row_, 0.f);
    if (!IsMuted(index)) Encode(place, row_);
    for (std::size_t n = 0; n < mixers_.size(); ++n) {
        mixers_[n]->SetRow(
            index, std::span(row_).subspan(firstChannels_[n], mixers_[n]->NumOutputs()), immediate);
    }
    sources_[index].SetPlace(place, newest_.radius, newest_.glideMs, immediate);
}

void NFCHOAPanning::ApplyNearfieldCompensation(unsigned index, bool on) {
    if (sources_[index].Compensation() == on) return;
    sources_[index].SetCompensation(on);
    RecomputeSource(index);
}

void NFCHOAPanning::ApplySpeakersRadius(float metres) {
    const float clamped = std::clamp(metres, kNearestSpeakers, kFarthestSpeakers);
    if (clamped == newest_.radius) return;
    newest_.radius = clamped;
    PublishControls();
    RecomputeSources();
}

float NFCHOAPanning::SpeakersRadius() const {
    const tav::ControlGuard guard(controlLock_);
    return newest_.radius;
}

void NFCHOAPanning::SetHighPass(bool on) {
    const tav::ControlGuard guard(controlLock_);
    newest_.highPass = on ? 1.f : 0.f;
    PublishControls();
}

bool NFCHOAPanning::HighPass() const {
    const tav::ControlGuard guard(controlLock_);
    return newest_.highPass == 1.f;
}

HoaState NFCHOAPanning::State() const {
    HoaState state = HoaEncoding::State();
    state.nearfieldCompensation =
        std::ranges::any_of(sources_, &NFCHOAPanningOneSource::Compensation);
    state.highPass = newest_.highPass == 1.f;
    state.speakersRadius = newest_.radius;
    return state;
}

void NFCHOAPanning::ApplySampleRate() {
    for (const auto& mixer : mixers_) mixer->SetSampleRate(SampleRate());
}

void NFCHOAPanning::ApplyReset() {
    ++newest_.numResets;
    PublishControls();
}

void NFCHOAPanning::ApplyInterpolationTime(float ms) {
    newest_.glideMs = ms;
    for (const auto& mixer : mixers_) mixer->SetInterpolationTime(ms);
    PublishControls();
}

void NFCHOAPanning::OrderChanged(unsigned order) {
    newest_.order = order;
    PublishControls();
}

void NFCHOAPanning::PublishControls() { shared_.Store(newest_); }

void NFCHOAPanning::Perform(float* const* outputs,
                            const float* const* inputs,
                            unsigned frames) noexcept TAV_NONBLOCKING {
    const bool isNewRate = SampleRate() != rateHz_;
    rateHz_ = SampleRate();
    TakeControls();
    for (NFCHOAPanningOneSource& source : sources_) source.TakeTarget();
    if (isNewRate) StartAtRate();
    for (unsigned offset = 0; offset < frames; offset += kNFCHOAFrames) {
        PerformPiece(outputs, inputs, offset, std::min(frames - offset, kNFCHOAFrames));
    }
}

/// Begins anew at another rate: the filters are empty and every glide ends at once, so that what
/// was set before the audio started holds from its first sample on.
void NFCHOAPanning::StartAtRate() noexcept TAV_NONBLOCKING {
    piece_.keep = std::exp(-1.f / (kLeakSeconds * rateHz_));
    piece_.leastG = std::numbers::pi_v<float> * kLeastLimitHz / rateHz_;
    piece_.release = std::exp(-static_cast<float>(kNFCHOAGrid) / (kReleaseSeconds * rateHz_));
    for (tav::Ramp* ramp : {&radius_, &highPass_}) {
        ramp->SetSampleRate(rateHz_);
        ramp->Set(ramp->Target(), 0.f);
    }
    for (NFCHOASourceGroup& group : groups_) {
        group.SetSampleRate(rateHz_);
        group.Clear();
    }
}

void NFCHOAPanning::TakeControls() noexcept TAV_NONBLOCKING {
    const Controls before = taken_;
    if (!shared_.Take(taken_)) return;
    if (taken_.radius != radius_.Target()) radius_.Set(taken_.radius, taken_.glideMs);
    if (taken_.highPass != highPass_.Target()) {
        // In the first half of this glide the largest ratio moves through its whole range.
        const float slowest = kSwitchMsPerMetre * taken_.radius;
        highPass_.Set(taken_.highPass, std::max({taken_.glideMs, slowest, kShortestSwitchMs}));
    }
    if (taken_.order != before.order) {
        ordersRun_ = std::max(ordersRun_, taken_.order);
        fadeSamples_ = static_cast<std::int64_t>(kFadeSeconds * rateHz_);
    }
    if (taken_.numResets == before.numResets) return;
    for (NFCHOASourceGroup& group : groups_) group.Clear();
}

/// Fills piece_: cuts it at the points of the grid into steps with their settings.
void NFCHOAPanning::MakePiece(unsigned frames) noexcept TAV_NONBLOCKING {
    std::array<float, kNFCHOAFrames> radius{};
    radius_.Fill(std::span(radius).first(frames));
    piece_.highPassMoves = !highPass_.IsConstant();
    highPass_.Fill(std::span(piece_.highPass).first(frames));
    piece_.frames = static_cast<int>(frames);
    piece_.numSteps = 0;
    for (unsigned k = 0; k < frames;) {
        const bool isOnGrid = toGrid_ == 0;
        if (isOnGrid) {
            settings_ = {static_cast<float>(kSpeedOfSound) / (2.f * radius[k] * rateHz_),
                         piece_.highPass[k], rateHz_};
            toGrid_ = kNFCHOAGrid;
        }
        const unsigned count = std::min(toGrid_, frames - k);
        piece_.steps[piece_.numSteps++] = {static_cast<int>(k), static_cast<int>(count), isOnGrid,
                                           settings_};
        k += count;
        toGrid_ -= count;
    }
}

void NFCHOAPanning::PerformPiece(float* const* outputs,
                                 const float* const* inputs,
                                 unsigned offset,
                                 unsigned frames) noexcept TAV_NONBLOCKING {
    MakePiece(frames);
    if (fadeSamples_ > 0) {
        fadeSamples_ -= frames;
        if (fadeSamples_ <= 0) ordersRun_ = taken_.order;
    }
    for (unsigned i = 0; i < NumInputs(); ++i) {
        const bool isActive = InputConnectedAndActive(i);
        inputs_[i] = inputs[i] + offset;
        feeds_[i] = isActive ? inputs_[i] : nullptr;
    }
    for (std::size_t o = 0; o < outputs_.size(); ++o) outputs_[o] = outputs[o] + offset;
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        const std::size_t count = std::min(kLanes, feeds_.size() - g * kLanes);
        const auto own = std::span(feeds_).subspan(g * kLanes, count);
        awake_[g] = groups_[g].Prepare(piece_, own) ? 1 : 0;
    }
    // Order by order, so that only the signals of one order have to be kept at a time.
    mixers_[0]->Perform(outputs_.data(), inputs_.data(), frames);
    for (unsigned n = 1; n < mixers_.size(); ++n) {
        const bool runs = RunsOrder(n);
        for (std::size_t g = 0; g < groups_.size(); ++g) {
            if (awake_[g] == 0) continue;
            if (runs) {
                groups_[g].Run(n, piece_, signalPointers_.data() + g * kLanes);
            } else {
                groups_[g].Skip(n);
            }
        }
        mixers_[n]->Perform(outputs_.data() + firstChannels_[n], signalPointers_.data(), frames);
    }
    for (std::size_t g = 0; g < groups_.size(); ++g) {
        if (awake_[g] != 0) groups_[g].Finish();
    }
}

bool NFCHOAPanning::RunsOrder(unsigned order) const noexcept TAV_NONBLOCKING {
    return order <= ordersRun_ && mixers_[order]->AnyOutputConnected();
}

}  // namespace Quilo
