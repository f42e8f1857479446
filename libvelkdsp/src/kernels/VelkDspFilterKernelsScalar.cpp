// SPDX-License-Identifier: MIT
#include "kernels/VelkDspFilterKernels.h"

#include <algorithm>

namespace tav {
namespace {

/// Second-order section in integrator form: the bilinear transform of the analog one.
struct Pair {
    float a1 = 0.f;
    float a2 = 0.f;
    float a3 = 0.f;
    float s1, s2;
    float band = 0.f;
    float low = 0.f;

    Pair(float g, float damping, float state1, float state2) noexcept : s1(state1), s2(state2) {
        Tune(g, damping);
    }

    void Tune(float g, float damping) noexcept {
        a1 = 1.f / (1.f + g * (g + damping));
        a2 = g * a1;
        a3 = g * a2;
    }
    void Take(float x) noexcept {
        const float v = x - s2;
        band = a1 * s1 + a2 * v;
        low = s2 + a2 * s1 + a3 * v;
        s1 = 2.f * band - s1;
        s2 = 2.f * low - s2;
    }
};

/// First-order section in integrator form.
struct Pole {
    float share = 0.f;
    float s;
    float low = 0.f;

    Pole(float g, float state) noexcept : s(state) { Tune(g); }

    void Tune(float g) noexcept { share = g / (1.f + g); }
    void Take(float x) noexcept {
        const float v = (x - s) * share;
        low = v + s;
        s = low + v;
    }
};

/// The parameters of one source; pointers are to its lane.
struct Lane {
    float highPassG;
    float highPassStep;
    float keep;
    const float* ratios;
    std::ptrdiff_t ratioStride;
    float* states;
    const float* in;
    float* out;
};

void RunPairs(const NearFieldSection& section, const Lane& lane, int n) noexcept TAV_NONBLOCKING {
    float* const s = lane.states;
    Pair high(lane.highPassG, section.highPassDamping, s[0], s[kSourceLanes]);
    Pair radial(section.g, section.damping, s[2 * kSourceLanes], s[3 * kSourceLanes]);
    float g = lane.highPassG;
    for (int k = 0; k < n; ++k) {
        if (lane.highPassStep != 0.f) high.Tune(g, section.highPassDamping);
        g += lane.highPassStep;
        float x = lane.in[k * kSourceLanes];
        high.Take(x);
        high.s1 *= lane.keep;
        high.s2 *= lane.keep;
        x = x - section.highPassDamping * high.band - high.low;
        radial.Take(x);
        const float u = lane.ratios[k * lane.ratioStride];
        lane.out[k * kSourceLanes] =
            x + (u - 1.f) * (section.damping * radial.band + (u + 1.f) * radial.low);
    }
    s[0] = high.s1;
    s[kSourceLanes] = high.s2;
    s[2 * kSourceLanes] = radial.s1;
    s[3 * kSourceLanes] = radial.s2;
}

void RunPoles(const NearFieldSection& section, const Lane& lane, int n) noexcept TAV_NONBLOCKING {
    float* const s = lane.states;
    Pole high(lane.highPassG, s[0]);
    Pole radial(section.g, s[2 * kSourceLanes]);
    float g = lane.highPassG;
    for (int k = 0; k < n; ++k) {
        if (lane.highPassStep != 0.f) high.Tune(g);
        g += lane.highPassStep;
        float x = lane.in[k * kSourceLanes];
        high.Take(x);
        high.s *= lane.keep;
        x = x - high.low;
        radial.Take(x);
        const float u = lane.ratios[k * lane.ratioStride];
        lane.out[k * kSourceLanes] = x + (u - 1.f) * radial.low;
    }
    s[0] = high.s;
    s[2 * kSourceLanes] = radial.s;
}

void RunSection(const NearFieldSection& section,
                const NearFieldLanes& lanes,
                float* states,
                const float* in,
                float* out,
                int n) noexcept TAV_NONBLOCKING {
    const auto at = [](const float* row, std::ptrdiff_t i, float otherwise) {
        return row == nullptr ? otherwise : row[i];
    };
    for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) {
        // Without a high-pass: g = 0, and the states stay 0.
        const Lane lane{at(lanes.highPassG, i, 0.f),
                        at(lanes.highPassStep, i, 0.f),
                        at(lanes.highPassKeep, i, 1.f),
                        lanes.ratios + i,
                        lanes.ratioStride,
                        states + i,
                        in + i,
                        out + i};
        section.isReal ? RunPoles(section, lane, n) : RunPairs(section, lane, n);
    }
}

void NearField(const NearFieldSection* sections,
               int numSections,
               const NearFieldLanes& lanes,
               float* states,
               const float* in,
               float* out,
               int n) noexcept TAV_NONBLOCKING {
    for (int s = 0; s < numSections; ++s) {
        RunSection(sections[s], lanes, states, in, out, n);
        states += kNearFieldStates * kSourceLanes;
        in = out;
    }
}

void AllPass(float* signal, float* ring, float gain, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        const float old = ring[k];
        const float w = signal[k] - gain * old;
        ring[k] = w;
        signal[k] = gain * w + old;
    }
}

void LimitGrowth(float* rows, float* reached, float growth, int n) noexcept TAV_NONBLOCKING {
    for (int k = 0; k < n; ++k) {
        for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) {
            float& value = rows[k * kSourceLanes + i];
            reached[i] = value = std::min(value, std::max(reached[i], 1.f) * growth);
        }
    }
}

void ToRows(const float* const* signals, float* rows, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) {
        for (int k = 0; k < n; ++k) rows[k * kSourceLanes + i] = signals[i][k];
    }
}

void FromRows(const float* rows, float* const* signals, int n) noexcept TAV_NONBLOCKING {
    for (std::ptrdiff_t i = 0; i < kSourceLanes; ++i) {
        for (int k = 0; k < n; ++k) signals[i][k] = rows[k * kSourceLanes + i];
    }
}

}  // namespace

const FilterKernels& FilterKernels::Scalar() noexcept {
    static constexpr FilterKernels kKernels{AllPass, NearField, LimitGrowth, ToRows, FromRows};
    return kKernels;
}

}  // namespace tav
