// SPDX-License-Identifier: MIT
#include "math/VelkDspAmbix.h"

#include <cstdlib>

namespace tav {

namespace {

/// The harmonic, and its sign, that equals (n, m) of the frame whose phi' counts from the front:
/// phi = phi' + pi/2, so cos(m phi') and sin(|m| phi') become a cosine or sine of m phi.
struct Turned {
    int m;
    double sign;
};

Turned TurnedToTheFront(int m) {
    const bool isSine = m < 0;
    switch (std::abs(m) % 4) {
        case 1: return {-m, isSine ? -1.0 : 1.0};
        case 2: return {m, -1.0};
        case 3: return {-m, isSine ? 1.0 : -1.0};
        default: return {m, 1.0};
    }
}

unsigned DegreeMagnitude(int m) { return static_cast<unsigned>(std::abs(m)); }

unsigned ChannelIndex(unsigned n, int m, unsigned dimension) {
    if (dimension == 2) return 2 * n - (m < 0 ? 1u : 0u);
    return static_cast<unsigned>(static_cast<int>(n * (n + 1)) + m);
}

}  // namespace

std::vector<AmbixChannel> AmbixFromHoa(unsigned order,
                                       unsigned dimension,
                                       SphericalHarmonic::Normalization normalization) {
    using Harmonic = SphericalHarmonic;
    std::vector<AmbixChannel> channels(Harmonic::NumChannels(order, 3));
    for (unsigned k = 0; k < channels.size(); ++k) {
        const auto [n, m] = Harmonic::FromChannelIndex(k, 3, Harmonic::Sorting::ACN);
        if (dimension == 2 && n != DegreeMagnitude(m)) continue;
        const Turned turned = TurnedToTheFront(m);
        const double factor = Harmonic::ExactConversionFactor(n, turned.m, normalization,
                                                              Harmonic::Normalization::SN3D);
        if (factor == 0.0) return {};
        channels[k] = {ChannelIndex(n, turned.m, dimension), turned.sign * factor};
    }
    return channels;
}

}  // namespace tav
