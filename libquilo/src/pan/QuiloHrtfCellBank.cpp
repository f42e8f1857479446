// SPDX-License-Identifier: MIT
#include "pan/QuiloHrtfCellBank.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quilo {

namespace {

constexpr auto kCoefficients = static_cast<std::size_t>(tav::kCellCoefficients);
constexpr auto kStates = static_cast<std::size_t>(tav::kCellStates);
constexpr float kLargestSignal = 1e12f;
constexpr float kLeastFirst = 1e-6f;  // of the largest b; nobody hears 120 dB below

/// Samples that cells have to run over until they sound as if they had always run.
std::size_t PastLength(float rateHz) {
    return 128 * static_cast<std::size_t>(std::ceil(rateHz / 48000.f));
}

std::size_t NumCells(const HrtfResponses& responses) {
    return std::max<std::size_t>(responses.MaxCells(), 1);
}

/// The b0 that the other b are divided by: never so small that they grow without bound.
float FirstOf(const tav::BiquadCell& cell) noexcept TAV_NONBLOCKING {
    const float largest = std::max(std::abs(cell.b1), std::abs(cell.b2));
    const float first = std::max(std::abs(cell.b0), kLeastFirst * largest);
    return std::copysign(first, cell.b0);
}

bool IsSane(std::span<const float> signal) noexcept TAV_NONBLOCKING {
    float sum = 0.f;
    for (const float x : signal) sum += std::abs(x);
    return sum <= kLargestSignal;
}

/// What a weight takes of a constant, of the cosine and sine of a turn, and of the part of the
/// fade.
struct WeightTerms {
    float constant, ofCos, ofSin, ofPart;
};

/// @param going  of the response that fades out, else of the one that fades in
const WeightTerms& TermsOf(tav::FadeShape shape, bool going) noexcept TAV_NONBLOCKING {
    static constexpr WeightTerms kLinear[] = {{0, 0, 0, 1}, {1, 0, 0, -1}};
    static constexpr WeightTerms kCosine[] = {{0, 0, 1, 0}, {0, 1, 0, 0}};
    static constexpr WeightTerms kSquareCosine[] = {{0.5f, -0.5f, 0, 0}, {0.5f, 0.5f, 0, 0}};
    switch (shape) {
        case tav::FadeShape::Linear: return kLinear[going];
        case tav::FadeShape::Cosine: return kCosine[going];
        default: return kSquareCosine[going];
    }
}

/// By what a fade turns in a number of samples.
std::complex<double> TurnOf(const tav::Crossfade<EarCells>::Progress& fade,
                            std::size_t samples) noexcept TAV_NONBLOCKING {
    const double whole = fade.shape == tav::FadeShape::Cosine ? 0.5 : 1.0;
    const double part = static_cast<double>(samples) / static_cast<double>(fade.length);
    const double angle = whole * std::numbers::pi * part;
    return {std::cos(angle), std::sin(angle)};
}

/// The product of two numbers that are finite.
std::complex<double> Turned(const std::complex<double>& a,
                            const std::complex<double>& by) noexcept TAV_NONBLOCKING {
    return {a.real() * by.real() - a.imag() * by.imag(),
            a.real() * by.imag() + a.imag() * by.real()};
}

}  // namespace

LaneFilters::LaneFilters(std::size_t numCells)
    : numCells_(numCells),
      coefficients_(2 * numCells * kCoefficients),
      states_(2 * (numCells + 1) * kStates) {}

void LaneFilters::Set(Chain chain, const tav::BiquadCells* cells) noexcept TAV_NONBLOCKING {
    const auto [lane, ear] = chain;
    const std::size_t count = cells != nullptr ? cells->size() : 0;
    float gain = count > 0 ? 1.f : 0.f;
    LaneRow* rows = coefficients_.data() + ear * NumCoefficients();
    for (std::size_t cell = 0; cell < numCells_; ++cell, rows += kCoefficients) {
        const tav::BiquadCell values = cell < count ? (*cells)[cell] : tav::BiquadCell();
        const float first = FirstOf(values);
        const float scale = first != 0.f ? 1.f / first : 0.f;
        gain *= first;
        rows[0].values[lane] = values.b1 * scale;
        rows[1].values[lane] = values.b2 * scale;
        rows[2].values[lane] = values.a1;
        rows[3].values[lane] = values.a2;
    }
    gains_[ear].values[lane] = gain;
    LaneRow* const states = states_.data() + ear * NumStates();
    for (std::size_t i = 0; i < NumStates(); ++i) states[i].values[lane] = 0.f;
}

void LaneFilters::Copy(Chain chain,
                       const LaneFilters& from,
                       Chain fromChain) noexcept TAV_NONBLOCKING {
    const auto copy = [&](LaneRow* rows, const LaneRow* others, std::size_t count) {
        rows += chain.ear * count;
        others += fromChain.ear * count;
        for (std::size_t i = 0; i < count; ++i) {
            rows[i].values[chain.lane] = others[i].values[fromChain.lane];
        }
    };
    copy(coefficients_.data(), from.coefficients_.data(), NumCoefficients());
    copy(gains_.data(), from.gains_.data(), 1);
    copy(states_.data(), from.states_.data(), NumStates());
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
    return {coefficients_.front().values.data(), gains_.front().values.data(),
            states_.front().values.data(), static_cast<int>(numCells_), static_cast<int>(count)};
}

LaneList::LaneList(const LaneFilters& filters, unsigned numVoices)
    : groups_((numVoices + kLanes - 1) / kLanes, filters) {
    voices_.reserve(numVoices);
}

std::uint32_t LaneList::Sit(unsigned voice) noexcept TAV_NONBLOCKING {
    voices_.push_back(voice);  // within what was reserved: a voice is there once
    return static_cast<std::uint32_t>(voices_.size() - 1);
}

// The last one takes the seat that becomes free. The seat that it leaves has to stay still: what is
// behind the last voice of a group is filtered with it.
unsigned LaneList::Leave(std::uint32_t seat) noexcept TAV_NONBLOCKING {
    const std::size_t last = voices_.size() - 1;
    const Seat from = At(last);
    const unsigned mover = voices_[last];
    if (seat != last) {
        const Seat to = At(seat);
        to.filters.Copy(to.lane, from.filters, from.lane);
        voices_[seat] = mover;
    }
    from.filters.ClearStates(from.lane);
    voices_.pop_back();
    return mover;
}

void LaneList::Recover() noexcept TAV_NONBLOCKING {
    for (LaneFilters& group : groups_) group.Recover();
}

HrtfCellBank::HrtfCellBank(const HrtfResponses& responses, unsigned numVoices)
    : responses_(responses),
      past_(PastLength(responses.Format().rateHz)),
      voices_(numVoices, {tav::Crossfade<EarCells>(responses.Format().rateHz)}),
      unheard_(NumCells(responses)),
      sounding_(unheard_, numVoices),
      coming_(unheard_, numVoices) {
    queue_.reserve(numVoices);
}

void HrtfCellBank::SetFade(float ms, tav::FadeShape shape) noexcept TAV_NONBLOCKING {
    for (Voice& voice : voices_) voice.fade.Set(ms, shape);
}

const EarCells* HrtfCellBank::CellsFor(Voice& voice,
                                       EarPoints points) const noexcept TAV_NONBLOCKING {
    // At most two are in use, and one that waits may go.
    auto* free = voice.cells.data();
    while (free == voice.fade.Current() || free == voice.fade.Incoming()) ++free;
    *free = {{EarOf(responses_.CellsOf(points.ears[0]), 0),
              EarOf(responses_.CellsOf(points.ears[1]), 1)}};
    return free;
}

void HrtfCellBank::Wake(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    voice.fade.Reset(CellsFor(voice, points));
    voice.awake = true;
    voice.seat = sounding_.Sit(index);
    const LaneList::Seat seat = sounding_.At(voice.seat);
    seat.filters.Set(seat.lane, *voice.fade.Current());
}

void HrtfCellBank::Sleep(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    if (voice.fade.Fading()) LeaveComing(index);
    voices_[sounding_.Leave(voice.seat)].seat = voice.seat;
    voice.fade.Reset(nullptr);
    voice.awake = false;
}

void HrtfCellBank::Load(unsigned index, EarPoints points) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    voice.fade.Load(CellsFor(voice, points));
    Queue(index);
}

void HrtfCellBank::Queue(unsigned index) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    if (voice.queued || !voice.fade.Waiting()) return;
    voice.queued = true;
    queue_.push_back(index);  // within what was reserved: a voice is there once
}

void HrtfCellBank::LeaveComing(unsigned index) noexcept TAV_NONBLOCKING {
    const std::uint32_t seat = voices_[index].comingSeat;
    voices_[coming_.Leave(seat)].comingSeat = seat;
}

void HrtfCellBank::FillRows(std::span<const unsigned> members,
                            HrtfVoices& voices,
                            std::size_t frames) noexcept TAV_NONBLOCKING {
    const tav::EarRows rows = rows_.Pointers();
    for (std::size_t ear = 0; ear < 2; ++ear) {
        for (std::size_t lane = 0; lane < members.size(); ++lane) {
            reader_.Set(lane, voices.ReadingOf(members[lane], ear));
        }
        reader_.Read(members.size(), ear == 0 ? rows.left : rows.right, frames);
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
    Run(sounding_, Side::Going, voices, frames);
    Run(coming_, Side::Coming, voices, frames);
    AdvanceFades(frames);
    std::array<float, kPiece> heard[2] = {};
    const tav::EarRows sum = sum_.Pointers();
    const auto n = static_cast<int>(frames);
    kernels_.sumLanes(sum.left, heard[0].data(), n);
    kernels_.sumLanes(sum.right, heard[1].data(), n);
    if (!IsSane(heard[0]) || !IsSane(heard[1])) {
        sounding_.Recover();
        coming_.Recover();
        return;
    }
    for (std::size_t k = 0; k < frames; ++k) left[k] += heard[0][k];
    for (std::size_t k = 0; k < frames; ++k) right[k] += heard[1][k];
}

void HrtfCellBank::Run(LaneList& list,
                       Side side,
                       HrtfVoices& voices,
                       std::size_t frames) noexcept TAV_NONBLOCKING {
    for (std::size_t first = 0; first < list.Voices().size(); first += kLanes) {
        const auto rest = list.Voices().subspan(first);
        const auto members = rest.first(std::min(kLanes, rest.size()));
        FillRows(members, voices, frames);
        kernels_.cascade(list.At(first).filters.Lanes(members.size()), rows_.Pointers(),
                         sum_.Pointers(), FillWeights(members, side, frames),
                         static_cast<int>(frames));
    }
}

/// @return null: the weights of all members are 1
const float* HrtfCellBank::FillWeights(std::span<const unsigned> members,
                                       Side side,
                                       std::size_t frames) noexcept TAV_NONBLOCKING {
    const auto fades = [this](unsigned voice) { return voices_[voice].fade.Fading(); };
    if (std::ranges::none_of(members, fades)) return nullptr;
    tav::FadeLanes& lanes = fadeLanes_;
    for (std::size_t lane = 0; lane < members.size(); ++lane) {
        const Voice& voice = voices_[members[lane]];
        WeightTerms terms{1.f, 0.f, 0.f, 0.f};
        if (voice.fade.Fading()) {
            const auto fade = voice.fade.Under();
            terms = TermsOf(fade.shape, side == Side::Going);
            lanes.cosine[lane] = static_cast<float>(voice.next.real());
            lanes.sine[lane] = static_cast<float>(voice.next.imag());
            lanes.turnCos[lane] = static_cast<float>(voice.perSample.real());
            lanes.turnSin[lane] = static_cast<float>(voice.perSample.imag());
            lanes.step[lane] = 1.f / static_cast<float>(fade.length);
            lanes.part[lane] =
                static_cast<float>(fade.position + 1) / static_cast<float>(fade.length);
        }
        lanes.constant[lane] = terms.constant;
        lanes.ofCos[lane] = terms.ofCos;
        lanes.ofSin[lane] = terms.ofSin;
        lanes.ofPart[lane] = terms.ofPart;
    }
    kernels_.fadeWeights(lanes, weights_.front().values.data(), static_cast<int>(frames));
    for (std::size_t lane = 0; lane < members.size(); ++lane) {
        if (!fades(members[lane])) continue;
        const auto fade = voices_[members[lane]].fade.Under();
        for (std::size_t k = fade.length - fade.position - 1; k < frames; ++k) {
            weights_[k].values[lane] = side == Side::Going ? 0.f : 1.f;
        }
    }
    return weights_.front().values.data();
}

void HrtfCellBank::BeginFades(HrtfVoices& voices, unsigned& starts) noexcept TAV_NONBLOCKING {
    std::size_t looked = 0;
    while (starts > 0 && looked < queue_.size()) {
        std::array<unsigned, kLanes / 2> batch{};
        std::size_t count = 0;
        for (; starts > 0 && looked < queue_.size() && count < batch.size(); ++looked) {
            Voice& voice = voices_[queue_[looked]];
            voice.queued = false;
            if (!voice.awake || !voice.fade.Waiting()) continue;
            batch[count++] = queue_[looked];
            --starts;
        }
        RunOverPast(voices, std::span(batch).first(count));
        for (std::size_t i = 0; i < count; ++i) BeginFade(batch[i], i);
    }
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(looked));
}

// Few filters begin to fade at a time, so the two ears of a voice are two lanes of one chain here.
void HrtfCellBank::RunOverPast(HrtfVoices& voices,
                               std::span<const unsigned> batch) noexcept TAV_NONBLOCKING {
    const auto forEach = [&](auto action) {
        for (std::size_t i = 0; i < batch.size(); ++i) {
            for (std::size_t ear = 0; ear < 2; ++ear) action(2 * i + ear, batch[i], ear);
        }
    };
    forEach([&](std::size_t lane, unsigned voice, std::size_t ear) {
        unheard_.Set({lane, 0}, voices_[voice].fade.Incoming()->ears[ear]);
    });
    float* const rows = rows_.Pointers().left;
    const std::size_t count = 2 * batch.size();
    for (std::size_t before = past_; before > 0 && count > 0; before -= kPiece) {
        forEach([&](std::size_t lane, unsigned voice, std::size_t ear) {
            reader_.Set(lane, voices.PastOf(voice, ear, before));
        });
        reader_.Read(count, rows, kPiece);
        kernels_.cascade(unheard_.Lanes(count), {rows, nullptr}, {nullptr, nullptr}, nullptr,
                         static_cast<int>(kPiece));
    }
}

void HrtfCellBank::BeginFade(unsigned index, std::size_t place) noexcept TAV_NONBLOCKING {
    Voice& voice = voices_[index];
    const bool fades = voice.fade.Begin();
    if (fades) voice.comingSeat = coming_.Sit(index);
    const LaneList::Seat seat = fades ? coming_.At(voice.comingSeat) : sounding_.At(voice.seat);
    for (std::size_t ear = 0; ear < 2; ++ear) {
        seat.filters.Copy({seat.lane, ear}, unheard_, {2 * place + ear, 0});
    }
    if (!fades) return;
    voice.next = voice.perSample = TurnOf(voice.fade.Under(), 1);
    voice.perPiece = TurnOf(voice.fade.Under(), kPiece);
}

void HrtfCellBank::AdvanceFades(std::size_t frames) noexcept TAV_NONBLOCKING {
    // From behind: whoever takes a free seat has been asked already.
    for (std::size_t at = coming_.Voices().size(); at-- > 0;) {
        const unsigned index = coming_.Voices()[at];
        Voice& voice = voices_[index];
        if (!voice.fade.Advance(static_cast<std::uint32_t>(frames))) {
            voice.next = Turned(
                voice.next, frames == kPiece ? voice.perPiece : TurnOf(voice.fade.Under(), frames));
            continue;
        }
        const LaneList::Seat to = sounding_.At(voice.seat), from = coming_.At(voice.comingSeat);
        to.filters.Copy(to.lane, from.filters, from.lane);
        LeaveComing(index);
        Queue(index);
    }
}

}  // namespace Quilo
