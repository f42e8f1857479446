// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfCellBank.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

namespace {

constexpr auto kCoefficients = static_cast<std::size_t>(tav::kCellCoefficients);
constexpr auto kStates = static_cast<std::size_t>(tav::kCellStates);
constexpr auto kCells = static_cast<std::size_t>(tav::kCellsInPair);
constexpr float kLargestSignal = 1e12f;

/// Samples that cells have to run over until they sound as if they had always run.
std::size_t PastLength(float rateHz) {
    return 128 * static_cast<std::size_t>(std::ceil(rateHz / 48000.f));
}

std::size_t NumPairs(const HrtfResponses& responses) {
    return std::max<std::size_t>((responses.MaxCells() + 1) / 2, 1);
}

bool IsSane(std::span<const float> signal) noexcept TAV_NONBLOCKING {
    float sum = 0.f;
    for (const float x : signal) sum += std::abs(x);
    return sum <= kLargestSignal;
}

/// Column `lane` of the weights of a fade.
void SetFadeLane(tav::FadeLanes& lanes,
                 std::size_t lane,
                 const tav::Crossfade<HrtfResponses::Cells>::Progress& fade) noexcept
    TAV_NONBLOCKING {
    const double length = static_cast<double>(fade.length);
    const double part = static_cast<double>(fade.position + 1) / length;
    const bool cosine = fade.shape == tav::FadeShape::Cosine;
    const double turn = (cosine ? 0.5 : 1.0) * std::numbers::pi;
    const auto set = [lane](tav::FadeLanes::Row& row, double v) {
        row[lane] = static_cast<float>(v);
    };
    set(lanes.cosine, std::cos(turn * part));
    set(lanes.sine, std::sin(turn * part));
    set(lanes.turnCos, std::cos(turn / length));
    set(lanes.turnSin, std::sin(turn / length));
    set(lanes.part, part);
    set(lanes.step, 1.0 / length);
    struct Weights {
        double out0, outCos, outPart, in0, inCos, inSin, inPart;
    };
    constexpr Weights kLinear{1, 0, -1, 0, 0, 0, 1};
    constexpr Weights kCosine{0, 1, 0, 0, 0, 1, 0};
    constexpr Weights kSquareCosine{0.5, 0.5, 0, 0.5, -0.5, 0, 0};
    const Weights& w = fade.shape == tav::FadeShape::Linear ? kLinear
                       : cosine                             ? kCosine
                                                            : kSquareCosine;
    set(lanes.out0, w.out0);
    set(lanes.outCos, w.outCos);
    set(lanes.outPart, w.outPart);
    set(lanes.in0, w.in0);
    set(lanes.inCos, w.inCos);
    set(lanes.inSin, w.inSin);
    set(lanes.inPart, w.inPart);
}

}  // namespace

LaneFilters::LaneFilters(std::size_t numPairs)
    : numPairs_(numPairs),
      coefficients_(numPairs * kCells * kCoefficients),
      states_(numPairs * kCells * kStates) {}

void LaneFilters::Set(std::size_t lane,
                      const HrtfResponses::Cells* response) noexcept TAV_NONBLOCKING {
    for (std::size_t cell = 0; cell < 2 * numPairs_; ++cell) {
        for (std::size_t ear = 0; ear < 2; ++ear) {
            // Beyond the cells the signal passes; where there are none it ends.
            tav::BiquadCell values;
            if (response == nullptr || response->ears[ear].empty()) {
                values.b0 = 0.f;
            } else if (cell < response->ears[ear].size()) {
                values = response->ears[ear][cell];
            }
            LaneRow* const rows = coefficients_.data() + (2 * cell + ear) * kCoefficients;
            rows[0].values[lane] = values.b0;
            rows[1].values[lane] = values.b1;
            rows[2].values[lane] = values.b2;
            rows[3].values[lane] = values.a1;
            rows[4].values[lane] = values.a2;
        }
    }
    ClearStates(lane);
}

void LaneFilters::Copy(std::size_t lane,
                       const LaneFilters& from,
                       std::size_t fromLane) noexcept TAV_NONBLOCKING {
    for (std::size_t i = 0; i < coefficients_.size(); ++i) {
        coefficients_[i].values[lane] = from.coefficients_[i].values[fromLane];
    }
    for (std::size_t i = 0; i < states_.size(); ++i) {
        states_[i].values[lane] = from.states_[i].values[fromLane];
    }
}

void LaneFilters::ClearStates(std::size_t lane) noexcept TAV_NONBLOCKING {
    for (LaneRow& row : states_) row.values[lane] = 0.f;
}

void LaneFilters::Recover() noexcept TAV_NONBLOCKING {
    LaneRow sums;
    for (const LaneRow& row : states_) {
        for (std::size_t i = 0; i < sums.values.size(); ++i) {
            sums.values[i] += std::abs(row.values[i]);
        }
    }
    for (std::size_t lane = 0; lane < sums.values.size(); ++lane) {
        if (!(sums.values[lane] <= kLargestSignal)) ClearStates(lane);
    }
}

tav::CellLanes LaneFilters::Lanes(std::size_t count) noexcept TAV_NONBLOCKING {
    return {coefficients_.front().values.data(), states_.front().values.data(),
            static_cast<int>(numPairs_), static_cast<int>(count)};
}

HrtfCellBank::HrtfCellBank(const HrtfResponses& responses, unsigned numVoices)
    : responses_(responses),
      past_(PastLength(responses.Format().rateHz)),
      voices_(numVoices, {tav::Crossfade<HrtfResponses::Cells>(responses.Format().rateHz)}),
      unheard_(NumPairs(responses)) {
    const LaneFilters filters(NumPairs(responses));
    const std::size_t numGroups = (numVoices + kLanes - 1) / kLanes;
    steady_.assign(numGroups, filters);
    fading_.assign(numGroups, {filters, filters});
    for (auto* list : {&steadySeats_, &fadingSeats_, &queue_}) list->reserve(numVoices);
}

void HrtfCellBank::SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING {
    for (Voice& voice : voices_) voice.fade.Set(ms, shape);
}

void HrtfCellBank::Wake(unsigned index, std::size_t point) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    voice.fade.Reset(responses_.CellsOf(point));
    Sit(index, Place::Steady, steadySeats_);
    steady_[GroupOf(voice.seat)].Set(LaneOf(voice.seat), voice.fade.Current());
}

void HrtfCellBank::Sleep(unsigned index) noexcept TAV_NONBLOCKING {
    voices_[index].place == Place::Steady ? LeaveSteady(index) : LeaveFading(index);
    voices_[index].place = Place::Asleep;
}

void HrtfCellBank::Load(unsigned index, std::size_t point) noexcept TAV_NONBLOCKING {
    voices_[index].fade.Load(responses_.CellsOf(point));
    Queue(index);
}

void HrtfCellBank::Queue(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    if (voice.queued || !voice.fade.Waiting()) return;
    voice.queued = true;
    queue_.push_back(index);  // within what was reserved: a voice is there once
}

void HrtfCellBank::Sit(unsigned index,
                       Place place,
                       std::vector<unsigned>& seats) noexcept TAV_NONBLOCKING {
    voices_[index].place = place;
    voices_[index].seat = static_cast<std::uint32_t>(seats.size());
    seats.push_back(index);  // likewise
}

// The last one of a list takes the seat that becomes free. The seat that it leaves has to stay
// still: what is behind the last voice of a group is filtered with it.

void HrtfCellBank::LeaveSteady(unsigned index) noexcept TAV_NONBLOCKING {
    const std::size_t seat = voices_[index].seat, last = steadySeats_.size() - 1;
    LaneFilters& end = steady_[GroupOf(last)];
    if (seat != last) {
        steady_[GroupOf(seat)].Copy(LaneOf(seat), end, LaneOf(last));
        steadySeats_[seat] = steadySeats_[last];
        voices_[steadySeats_[seat]].seat = static_cast<std::uint32_t>(seat);
    }
    end.ClearStates(LaneOf(last));
    steadySeats_.pop_back();
}

void HrtfCellBank::LeaveFading(unsigned index) noexcept TAV_NONBLOCKING {
    const std::size_t seat = voices_[index].seat, last = fadingSeats_.size() - 1;
    FadingGroup& end = fading_[GroupOf(last)];
    if (seat != last) {
        FadingGroup& group = fading_[GroupOf(seat)];
        group.going.Copy(LaneOf(seat), end.going, LaneOf(last));
        group.coming.Copy(LaneOf(seat), end.coming, LaneOf(last));
        fadingSeats_[seat] = fadingSeats_[last];
        voices_[fadingSeats_[seat]].seat = static_cast<std::uint32_t>(seat);
    }
    end.going.ClearStates(LaneOf(last));
    end.coming.ClearStates(LaneOf(last));
    fadingSeats_.pop_back();
}

/// Rows of both ears from signals: `source(voice, ear, signal)` fills one.
template <class Source>
void HrtfCellBank::FillRows(std::span<const unsigned> members,
                            std::size_t frames,
                            Source source) noexcept TAV_NONBLOCKING {
    std::array<const float*, kLanes> pointers{};
    pointers.fill(silence_.data());
    for (std::size_t ear = 0; ear < 2; ++ear) {
        for (std::size_t lane = 0; lane < members.size(); ++lane) {
            source(members[lane], ear, std::span(signals_[lane]).first(frames));
            pointers[lane] = signals_[lane].data();
        }
        const tav::EarRows rows = input_.Pointers();
        rowKernels_.toRows(pointers.data(), ear == 0 ? rows.left : rows.right,
                           static_cast<int>(frames));
    }
}

void HrtfCellBank::Perform(HrtfVoices& voices,
                           std::span<float> left,
                           std::span<float> right,
                           unsigned& starts) noexcept TAV_NONBLOCKING {
    const std::size_t frames = left.size();
    BeginFades(voices, starts);
    std::fill_n(sum_.left.begin(), frames, LaneRow{});
    std::fill_n(sum_.right.begin(), frames, LaneRow{});
    RunSteady(voices, frames);
    RunFading(voices, frames);
    std::array<float, kPiece> heard[2] = {};
    const tav::EarRows sum = sum_.Pointers();
    const auto n = static_cast<int>(frames);
    kernels_.sumLanes(sum.left, heard[0].data(), n);
    kernels_.sumLanes(sum.right, heard[1].data(), n);
    if (!IsSane(heard[0]) || !IsSane(heard[1])) return Recover();
    for (std::size_t k = 0; k < frames; ++k) left[k] += heard[0][k];
    for (std::size_t k = 0; k < frames; ++k) right[k] += heard[1][k];
}

void HrtfCellBank::RunSteady(HrtfVoices& voices, std::size_t frames) noexcept TAV_NONBLOCKING {
    const auto delayed = [&](unsigned voice, std::size_t ear, std::span<float> signal) {
        voices.Delayed(voice, ear, signal);
    };
    for (std::size_t first = 0; first < steadySeats_.size(); first += kLanes) {
        const auto members =
            std::span(steadySeats_).subspan(first, std::min(kLanes, steadySeats_.size() - first));
        FillRows(members, frames, delayed);
        kernels_.cascade(steady_[GroupOf(first)].Lanes(members.size()), input_.Pointers(),
                         input_.Pointers(), sum_.Pointers(), nullptr, static_cast<int>(frames));
    }
}

void HrtfCellBank::RunFading(HrtfVoices& voices, std::size_t frames) noexcept TAV_NONBLOCKING {
    const auto delayed = [&](unsigned voice, std::size_t ear, std::span<float> signal) {
        voices.Delayed(voice, ear, signal);
    };
    const auto n = static_cast<int>(frames);
    for (std::size_t first = 0; first < fadingSeats_.size(); first += kLanes) {
        const auto members =
            std::span(fadingSeats_).subspan(first, std::min(kLanes, fadingSeats_.size() - first));
        FillRows(members, frames, delayed);
        FillWeights(members, frames);
        FadingGroup& group = fading_[GroupOf(first)];
        kernels_.cascade(group.going.Lanes(members.size()), input_.Pointers(), work_.Pointers(),
                         sum_.Pointers(), weightsOut_.front().values.data(), n);
        kernels_.cascade(group.coming.Lanes(members.size()), input_.Pointers(), work_.Pointers(),
                         sum_.Pointers(), weightsIn_.front().values.data(), n);
    }
    // From behind: whoever takes a free seat has been asked already.
    for (std::size_t seat = fadingSeats_.size(); seat-- > 0;) {
        const unsigned voice = fadingSeats_[seat];
        if (voices_[voice].fade.Advance(static_cast<std::uint32_t>(frames))) EndFade(voice);
    }
}

void HrtfCellBank::FillWeights(std::span<const unsigned> members,
                               std::size_t frames) noexcept TAV_NONBLOCKING {
    for (std::size_t lane = 0; lane < members.size(); ++lane) {
        SetFadeLane(fadeLanes_, lane, voices_[members[lane]].fade.Under());
    }
    kernels_.fadeWeights(fadeLanes_, weightsOut_.front().values.data(),
                         weightsIn_.front().values.data(), static_cast<int>(frames));
    for (std::size_t lane = 0; lane < members.size(); ++lane) {
        const auto fade = voices_[members[lane]].fade.Under();
        for (std::size_t k = fade.length - fade.position - 1; k < frames; ++k) {
            weightsOut_[k].values[lane] = 0.f;
            weightsIn_[k].values[lane] = 1.f;
        }
    }
}

void HrtfCellBank::BeginFades(HrtfVoices& voices, unsigned& starts) noexcept TAV_NONBLOCKING {
    std::size_t looked = 0;
    while (starts > 0 && looked < queue_.size()) {
        std::array<unsigned, kLanes> batch{};
        std::size_t count = 0;
        for (; starts > 0 && looked < queue_.size() && count < kLanes; ++looked) {
            Voice& voice = voices_[queue_[looked]];
            voice.queued = false;
            if (voice.place != Place::Steady || !voice.fade.Waiting()) continue;
            batch[count++] = queue_[looked];
            --starts;
        }
        RunOverPast(voices, std::span(batch).first(count));
        for (std::size_t lane = 0; lane < count; ++lane) BeginFade(batch[lane], lane);
    }
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(looked));
}

void HrtfCellBank::RunOverPast(HrtfVoices& voices,
                               std::span<const unsigned> batch) noexcept TAV_NONBLOCKING {
    for (std::size_t lane = 0; lane < batch.size(); ++lane) {
        unheard_.Set(lane, voices_[batch[lane]].fade.Incoming());
    }
    for (std::size_t before = past_; before > 0 && !batch.empty(); before -= kPiece) {
        FillRows(batch, kPiece, [&](unsigned voice, std::size_t ear, std::span<float> signal) {
            voices.PastOf(voice, ear, before, signal);
        });
        kernels_.cascade(unheard_.Lanes(batch.size()), input_.Pointers(), input_.Pointers(),
                         {nullptr, nullptr}, nullptr, static_cast<int>(kPiece));
    }
}

void HrtfCellBank::BeginFade(unsigned index, std::size_t lane) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    const std::size_t seat = voice.seat;
    LaneFilters& sounding = steady_[GroupOf(seat)];
    if (!voice.fade.Begin()) return sounding.Copy(LaneOf(seat), unheard_, lane);
    const std::size_t end = fadingSeats_.size();
    FadingGroup& group = fading_[GroupOf(end)];
    group.going.Copy(LaneOf(end), sounding, LaneOf(seat));
    group.coming.Copy(LaneOf(end), unheard_, lane);
    LeaveSteady(index);
    Sit(index, Place::Fading, fadingSeats_);
}

void HrtfCellBank::EndFade(unsigned index) noexcept TAV_NONBLOCKING {
    const std::size_t seat = voices_[index].seat, end = steadySeats_.size();
    steady_[GroupOf(end)].Copy(LaneOf(end), fading_[GroupOf(seat)].coming, LaneOf(seat));
    LeaveFading(index);
    Sit(index, Place::Steady, steadySeats_);
    Queue(index);
}

void HrtfCellBank::Recover() noexcept TAV_NONBLOCKING {
    for (LaneFilters& filters : steady_) filters.Recover();
    for (FadingGroup& group : fading_) {
        group.going.Recover();
        group.coming.Recover();
    }
}

}  // namespace Quilo
